#!/usr/bin/env bash
# Compiles for 32-bit ARM, without linking, what neither the preset arm nor the ARM board's programs
# have, so that every source of ours has been seen by that compiler with warnings as errors. The board's
# packages must be there: './dev board arm' fetches them.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

# They are built by those who copy them, so they are only looked at.
check_examples() {
    local example compiler
    for example in examples/*/*.c examples/*/*.cpp; do
        case $example in
            *.c) compiler="arm-linux-gnueabihf-gcc -std=c11" ;;
            *) compiler="arm-linux-gnueabihf-g++ -std=c++17" ;;
        esac
        $compiler -fsyntax-only -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \
            -I. -Iplatform/host "$example" || return 1
    done
}

for preset in arm board_arm; do cmake --preset "$preset" >/dev/null; done
mapfile -t objects < <(scripts/arm_objects.py)
[ ${#objects[@]} -gt 0 ] || exit 1 # arm_objects.py has said why
build_preset board_arm --target "${objects[@]}"
check_examples
