#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: grouped_tests.sh SOURCE_DIR SAMPLE
# Tests that share a process are counted one by one, however that process ends.
set -euo pipefail
script=$1/scripts/grouped_tests.py
sample=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
seconds=60

# expect FILTER STATUS COUNTS [FAILURE...]: runs these tests of the sample and compares what is counted.
expect() {
    local filter=$1 wanted=$2 status=0
    shift 2
    rm -rf "$folder/journals"
    "$script" run "$folder/journals/sample.journal" "$seconds" "$filter" "$sample" >"$folder/output" 2>&1 || status=$?
    "$script" count "$folder/journals" >"$folder/counted"
    printf '%s\n' "$@" >"$folder/expected"
    if [ "$status" != "$wanted" ] || ! diff "$folder/expected" "$folder/counted"; then
        echo "with the tests $filter: exit status $status, not $wanted, or other counts; the output was:"
        cat "$folder/output"
        exit 1
    fi
}
prints() { grep -qF "$1" "$folder/output" || { echo "not printed: $1"; cat "$folder/output"; exit 1; }; }
hides() { ! grep -qF "$1" "$folder/output" || { echo "printed: $1"; exit 1; }; }

expect 'A.*:B.*:H.*' 0 '1 0 3 0'
hides 'said by a test that passes'
expect 'A.*:C.*:H.*' 1 '1 1 2 1' 'sample:C.Fails: failed'
prints 'said by a test that fails'
hides 'said by a test that passes'
expect 'A.*:D.*' 1 '1 1 1 1' 'sample:D.IsSkipped: failed'
expect 'A.*:E.*:H.*' 1 '1 1 1 2' 'sample:E.Ends: did not end' 'sample:H.Passes: was not run'
prints 'said by a test that ends the process'
seconds=5 expect 'A.*:F.*:H.*' 1 '1 1 1 2' 'sample:F.Hangs: did not end (stopped after 5 s)' \
    'sample:H.Passes: was not run (stopped after 5 s)'
expect 'G.*:H.*' 1 '1 1 2 1' 'sample: exit status 7 after its last test'
expect 'Number/*' 1 '1 1 1 1' 'sample:Number/Each.IsBelowTwo/1: failed'
expect 'NoSuchTest.*' 1 '1 1 0 1' 'sample: has no test'

# A run that is killed from outside has written down how far it came.
"$script" run "$folder/killed/sample.journal" 60 'A.*:F.*:H.*' "$sample" >"$folder/output" 2>&1 &
until grep -q 'started F.Hangs' "$folder/killed/sample.journal" 2>/dev/null; do sleep 0.05; done
hanging=$(pgrep -P $!)
kill -KILL $! "$hanging"
wait $! 2>/dev/null || true
"$script" count "$folder/killed" >"$folder/counted"
printf '%s\n' '1 1 1 2' 'sample:F.Hangs: did not end' 'sample:H.Passes: was not run' | diff - "$folder/counted"
