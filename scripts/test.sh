#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: test.sh [--only STEP[,STEP...]] [--without STEP[,STEP...]]. Everything that must hold before a
# change lands, or some steps of it. Ends with 'N passed, N failed'.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

STEPS=(debug asan tsan libcxx arm gate size form porting board fuzz)
LIBCXX_TESTS=(vocabulary_test ipc_test profile_test client_test voxtrel_test platform_test)
declare -A STEP_PACKAGES=([debug]="python desktop abi" [asan]="clang bench desktop" [tsan]="clang desktop" [arm]="arm abi" [gate]="bench arm" [size]="arm" [form]="lint clang" [porting]="python desktop" [board]="python desktop arm board" [fuzz]="clang" [libcxx]="clang libcxx")

usage() {
    echo "usage: ./dev test [--only STEP[,STEP...]] [--without STEP[,STEP...]]; the steps: ${STEPS[*]}" >&2
    exit 2
}

# step_names STEP[,STEP...]: sets NAMES
step_names() {
    local name
    IFS=, read -r -a NAMES <<<"$1"
    [ ${#NAMES[@]} -gt 0 ] || usage
    for name in "${NAMES[@]}"; do
        [[ " ${STEPS[*]} " == *" $name "* ]] || { echo "test: no step '$name'" >&2; usage; }
    done
}

# choose_steps [--only STEP[,STEP...] | --without STEP[,STEP...]]...: sets CHOSEN
choose_steps() {
    local only=() without=() step
    while [ $# -gt 0 ]; do
        [ $# -ge 2 ] || usage
        case $1 in
            --only) step_names "$2" && only+=("${NAMES[@]}") ;;
            --without) step_names "$2" && without+=("${NAMES[@]}") ;;
            *) usage ;;
        esac
        shift 2
    done
    CHOSEN=()
    if [ ${#only[@]} -eq 0 ]; then only=("${STEPS[@]}"); fi
    for step in "${STEPS[@]}"; do
        if [[ " ${only[*]} " == *" $step "* ]] && [[ " ${without[*]} " != *" $step "* ]]; then
            CHOSEN+=("$step")
        fi
    done
    [ ${#CHOSEN[@]} -gt 0 ] || usage
}

fail_step() {
    FAILED=$((FAILED + 1))
    say "$1: failed"
}

# pass_if NAME COMMAND...: a step that counts as one test
pass_if() {
    local name=$1
    shift
    if "$@"; then PASSED=$((PASSED + 1)); else fail_step "$name"; fi
}

preset_step() {
    if ! build_preset "$1"; then
        fail_step "$1 build"
        return 0
    fi
    say "(built after $((SECONDS - STEP_START)) s)"
    run_ctest "$1"
}

porting_step() {
    build_preset debug || return 1
    scripts/porting.sh build/debug g++ gcc >build/porting.log 2>&1 || { cat build/porting.log; return 1; }
}

board_step() {
    local status=0
    mkdir -p build
    scripts/board/board.sh | tee build/board.log || status=$?
    count_closing_line build/board.log "$status"
}

form_step() {
    pass_if "form of the sources" scripts/format_check.sh
    pass_if "shell scripts" scripts/shell_check.sh
    pass_if "cppcheck" scripts/cppcheck.sh
    pass_if "clang-tidy over what changed last" scripts/lint.sh --within 30
    pass_if "licences" scripts/licence_check.sh
}

# The library, the interface over it and the runtime beneath them with the other standard library. How often
# a test repeats itself finds races, which are not the standard library's: as under the sanitizers.
libcxx_step() {
    local tests
    if ! build_preset libcxx --target "${LIBCXX_TESTS[@]}"; then
        fail_step "libcxx build"
        return 0
    fi
    tests=$(IFS='|' && echo "${LIBCXX_TESTS[*]}")
    VOXTREL_TESTS_RUN_SLOWLY=1 run_ctest libcxx -R "^($tests):"
}

gate_step() {
    local status=0
    mkdir -p build
    scripts/gate/gate.sh | tee build/gate.log || status=$?
    count_closing_line build/gate.log "$status"
}

size_step() {
    mkdir -p build
    scripts/size.sh >build/size.log 2>&1 || { cat build/size.log; return 1; }
    grep '^figure ' build/size.log
}

fuzz_step() { build_preset fuzz --target fuzzers && scripts/fuzz.sh build/fuzz 2; }

run_step() {
    say_step "$1"
    STEP_START=$SECONDS
    case $1 in
        form) form_step ;;
        libcxx) libcxx_step ;;
        porting) pass_if "the commands of docs/porting.md" porting_step ;;
        gate) gate_step ;;
        size) pass_if "size of the client library" size_step ;;
        board) board_step ;;
        fuzz) pass_if "fuzz targets, a few seconds each" fuzz_step ;;
        *) preset_step "$1" ;;
    esac
    say "($1: $((SECONDS - STEP_START)) s)"
}

choose_steps "$@"
groups=(speak build terminal)
for step in "${CHOSEN[@]}"; do
    read -r -a needed <<<"${STEP_PACKAGES[$step]:-}"
    groups+=("${needed[@]}")
done
need_packages "${groups[@]}"
for step in "${CHOSEN[@]}"; do
    run_step "$step"
done

say ""
closing_line
