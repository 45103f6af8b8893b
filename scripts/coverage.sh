#!/usr/bin/env bash
# usage: coverage.sh. Line and branch coverage of the library by its unit tests; fails below 100% of
# lines. Branches that only an exception takes are not counted: the library throws none.
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

report() {
    gcovr --root . "${rooms[@]/#/--filter=}" --exclude-throw-branches \
        --exclude-unreachable-branches "$@" "$build"
}
say_step "branches"
report --branches
say_step "lines"
report --print-summary --fail-under-line 100
