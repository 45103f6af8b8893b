#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: lint.sh [--within SECONDS] [FOLDER...]. The form of the sources, then clang-tidy over what ships
# (library, stand-in, programs), or over the sources in these folders, tests included. --within SECONDS:
# clang-tidy alone, over those first that changed last, and after so long no other is begun.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

export FINDINGS=build/lint/findings

# tidy FILE: what clang-tidy finds goes to FINDINGS; its count of what it does not show is left out
tidy() {
    local said
    [ "$(date +%s)" -lt "$LAST_BEGIN" ] || return 0
    said=$(clang-tidy-14 --quiet -p build/lint "$1" 2>/dev/null) || printf '%s\n' "$1:" "$said" >>"$FINDINGS"
    echo "$1"
}
export -f tidy

seconds=
if [ "${1:-}" = --within ]; then
    seconds=${2:?SECONDS}
    shift 2
fi
folders=("$@")
if [ ${#folders[@]} -eq 0 ]; then folders=("${SHIPPED[@]}"); fi
mapfile -t files < <(scripts/lint_sources.py "${folders[@]}")
if [ ${#files[@]} -eq 0 ]; then
    echo "lint: there are no sources in ${folders[*]}" >&2
    exit 2
fi
[ -n "$seconds" ] || scripts/format_check.sh
cmake --preset lint >/dev/null
: >"$FINDINGS"
export LAST_BEGIN=$(($(date +%s) + ${seconds:-1000000}))
printf '%s\0' "${files[@]}" | xargs -0 -P "$(jobs_here)" -n 1 bash -c 'tidy "$1"' tidy | tee build/lint/read |
    awk -v total="${#files[@]}" '{ print NR, total; fflush() }' | show_progress "clang-tidy"
if [ -s "$FINDINGS" ]; then
    cat "$FINDINGS"
    exit 1
fi
if [ ! -s build/lint/read ]; then
    echo "lint: the time was over before any of ${#files[@]} sources was read" >&2
    exit 1
fi
say "clang-tidy: clean ($(wc -l <build/lint/read) of ${#files[@]} sources)"
