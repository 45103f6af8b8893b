#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: apart.sh FILTER PROGRAM... On a board: runs each test of GoogleTest that FILTER selects in a
# process of its own, which may take $TEST_SECONDS (default: 60).
filter=$1
shift
status=0
tests=$("$@" "$filter" --gtest_list_tests | awk '/^[^ ]/ { suite = $1 } /^  / { print suite $1 }')
[ -n "$tests" ] || exit 1
for test in $tests; do
    timeout -s KILL "${TEST_SECONDS:-60}" "$@" "--gtest_filter=$test" --gtest_color=no || status=1
done
exit "$status"
