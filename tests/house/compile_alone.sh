#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: compile_alone.sh COMPILER ROOT "FOLDER..." PLATFORM_DIR...
# The folders compile with nothing but the root and a platform on the include path: no define, no
# generated header, whatever build system a device uses.
set -euo pipefail
compiler=$1
root=$2
read -ra folders <<<"$3"
shift 3
includes=(-I "$root")
for platform in "$@"; do
    includes+=(-I "$platform")
done
cd "$root"
count=0
for folder in "${folders[@]}"; do
    while IFS= read -r source; do
        "$compiler" -std=c++17 -Wall -Wextra -Werror -fsyntax-only "${includes[@]}" "$source"
        count=$((count + 1))
    done < <(find "$folder" -name '*.cpp')
done
echo "$count sources compiled"
[ "$count" -ge 5 ]
