#!/usr/bin/env bash
# Everything that must hold before a change lands. Ends with 'N passed, N failed'.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

need_packages build arm fuzz lint bench terminal

fail_step() {
    FAILED=$((FAILED + 1))
    say "$1: failed"
}

timed() {
    local start=$SECONDS
    "$@"
    say "($((SECONDS - start)) s)"
}

preset_step() {
    local preset=$1
    say_step "$preset: build"
    local log
    log=$(mktemp)
    if ! build_preset "$preset" >"$log" 2>&1; then
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Creating)' "$log" || true
        rm -f "$log"
        fail_step "$preset build"
        return 0
    fi
    rm -f "$log"
    say_step "$preset: tests"
    run_ctest "$preset"
}

for preset in debug clang asan tsan arm; do
    timed preset_step "$preset"
done

say_step "form of the sources"
if scripts/format_check.sh; then PASSED=$((PASSED + 1)); else fail_step "form of the sources"; fi

say_step "fuzz targets, a few seconds each"
if build_preset fuzz >/dev/null 2>&1 && timed scripts/fuzz.sh build/fuzz 5; then
    PASSED=$((PASSED + 1))
else
    fail_step "fuzz targets"
fi

say ""
closing_line
