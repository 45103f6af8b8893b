#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: coverage.sh. Line and branch coverage of the library by its unit tests; fails below 100% of
# lines. Branches that only an exception takes are not counted.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

build=build/coverage
rooms=(vocabulary ipc profile client)

say_step "building"
cmake --preset coverage >"/tmp/voxtrel-coverage-$$.log" 2>&1 ||
    { cat "/tmp/voxtrel-coverage-$$.log"; rm -f "/tmp/voxtrel-coverage-$$.log"; exit 1; }
rm -f "/tmp/voxtrel-coverage-$$.log"
cmake --build "$build" -j "$(jobs_here)" --target "${rooms[@]/%/_test}" | tail -n 1

say_step "tests"
find "$build" -name '*.gcda' -delete
pattern=$(IFS='|'; echo "${rooms[*]}")
run_ctest coverage -R "^($pattern)_test:"
closing_line

# Rooms reach each other's headers through links in the build folder: give those their own names.
trace=$build/coverage.json
gcovr --root . --json --filter "(build/.*/)?($pattern)/" --exclude-throw-branches --exclude-unreachable-branches \
    "${rooms[@]/#/$build/}" | sed -E "s|$build/doors/[a-z]+/||g" >"$trace"

say_step "branches"
gcovr --root . --add-tracefile "$trace" --branches
say_step "lines"
gcovr --root . --add-tracefile "$trace" --print-summary --fail-under-line 100
