#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: missing_board.sh SOURCE_DIR
# `./dev build board_arm` where no board has been fetched says how to get one.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp -r "$1"/{CMakeLists.txt,CMakePresets.json,cmake,scripts} "$folder"
cd "$folder"
source scripts/lib.sh

if build_preset board_arm >output 2>&1; then
    echo "it has been built"
    exit 1
fi
# CMake breaks the lines of its messages where it likes.
if ! tr -s '\n ' '  ' <output | grep -qF "'./dev board arm' fetches them and builds this preset"; then
    cat output
    exit 1
fi
