#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: abi.sh [compare|accept]. Builds both libraries with all that is known of their types, for a 64-bit
# PC and for 32-bit ARM, and hands them to abi_compare.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
command=${1:-compare}
case $command in compare | accept) ;; *) echo "usage: ./dev abi [accept]" >&2; exit 2 ;; esac

status=0
for preset in debug arm; do
    build_preset "$preset" --target voxtrel-client voxtrel
    architecture=$([ $preset = arm ] && echo arm || echo x86_64)
    scripts/abi_compare.sh "$command" "$architecture" "build/$preset/libvoxtrel-client.so.1" \
        "build/$preset/voxtrel/libvoxtrel.so.1" || status=$?
done
[ $status -ne 0 ] || say "abi: both libraries are what abi/ says"
exit $status
