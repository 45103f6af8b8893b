#!/usr/bin/env bash
# usage: compile_alone.sh COMPILER ROOT PLATFORM_DIR...
# The four folders compile with nothing but the root and a platform on the include path: no define,
# no generated header, whatever build system a device uses.
set -euo pipefail
compiler=$1
root=$2
shift 2
includes=(-I "$root")
for platform in "$@"; do
    includes+=(-I "$platform")
done
cd "$root"
count=0
for source in vocabulary/*.cpp ipc/*.cpp profile/*.cpp client/*.cpp; do
    "$compiler" -std=c++17 -Wall -Wextra -Werror -fsyntax-only "${includes[@]}" "$source"
    count=$((count + 1))
done
echo "$count sources compiled"
[ "$count" -ge 10 ]
