#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: fuzz_runs.sh SOURCE_DIR
# The table of `./dev fuzz` passes targets that have run, and no others.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/fuzz/room"

# target NAME STATUS RUNS: plays a fuzz target
target() {
    printf '#!/bin/sh\n[ -z "%s" ] || echo "stat::number_of_executed_units: %s" >&2\nexit %s\n' \
        "$3" "$3" "$2" >"$folder/fuzz/room/$1"
    chmod +x "$folder/fuzz/room/$1"
    echo "$folder/fuzz/room/$1" >>"$folder/fuzz/targets"
}

# expect STATUS TEXT TARGET
expect() {
    local status=0 output
    output=$("$source/scripts/fuzz.sh" "$folder" 1 "$3" 2>&1) || status=$?
    if [ "$status" -ne "$1" ] || ! grep -qE "$2" <<<"$output"; then
        printf '%s\nstatus %s instead of %s, or no "%s" in it\n' "$output" "$status" "$1" "$2"
        exit 1
    fi
}

source=$1
target good_fuzz 0 7
target idle_fuzz 0 0
target silent_fuzz 0 ""
target failing_fuzz 77 7
expect 0 '^good_fuzz +7 ' good_fuzz
expect 1 'idle_fuzz has not run a single input' idle_fuzz
expect 1 'silent_fuzz has not run a single input' silent_fuzz
expect 1 'failing_fuzz failed; its input is beside it' failing_fuzz
expect 1 'idle_fuzz has not run a single input' '*_fuzz'
expect 1 "no fuzz target 'missing_fuzz'" missing_fuzz
rm "$folder/fuzz/room/good_fuzz"
expect 1 'good_fuzz failed' good_fuzz
