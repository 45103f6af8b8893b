#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: install_and_consume.sh BUILD_DIR SOURCE_DIR COMPILER C_COMPILER
# A stranger's use of what is installed: the example, built with CMake's package and with pkg-config
# against a tree that was moved after the installation. Each of them speaks, and each of the example
# services hears the command line. Applications of the interface are built and run against it as well.
# scripts/porting.sh does it where the platform is a device's own.
set -euo pipefail
build=$1
source=$2
compiler=$3
c_compiler=$4
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

quietly() { "$@" >"$stage/log" 2>&1 || { cat "$stage/log"; exit 1; }; }

# consume NAME PREFIX LIBRARIES: builds against the tree PREFIX, and speaks with what is in LIBRARIES.
consume() {
    local name=$1 prefix=$2 libraries=$3 flags program example
    echo "== $name"
    for example in hello service; do
        quietly cmake -S "$source/examples/$example" -B "$stage/$name/$example-cmake" -G Ninja \
            -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
        quietly cmake --build "$stage/$name/$example-cmake"
        mv "$stage/$name/$example-cmake/$example" "$stage/$name/$example"
    done
    flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs voxtrel-client)
    # A list of flags, meant to be split.
    # shellcheck disable=SC2086
    for example in hello service; do
        "$compiler" -std=c++17 "$source"/examples/$example/*.cpp \
            -o "$stage/$name/$example-pkgconfig" $flags
    done
    for program in hello hello-pkgconfig service service-pkgconfig; do
        LD_LIBRARY_PATH=$libraries:$platform ldd "$stage/$name/$program" >"$stage/log"
        grep -q "libvoxtrel-client.so.1 => $libraries/" "$stage/log" || { cat "$stage/log"; exit 1; }
        # Only the example gets the path: the programs find their libraries themselves.
        printf '#!/bin/sh\nLD_LIBRARY_PATH=%s exec %s\n' "$libraries:$platform" \
            "$stage/$name/$program" >"$stage/run"
        chmod +x "$stage/run"
        case $program in
            hello*) "$source/scripts/with_service.sh" "$moved/bin" "$stage/run" ;;
            *) "$source/scripts/with_example_service.sh" "$moved/bin" "$stage/run" ;;
        esac
    done
}

use_interface() {
    echo "== $1, applications"
    "$source/tests/house/use_interface.sh" "$2" "$3" "$moved/bin" "$source" "$compiler" "$c_compiler"
}

moved=$stage/moved
quietly cmake --install "$build" --prefix "$stage/usr"
mv "$stage/usr" "$moved"
platform=$(dirname "$(find "$moved" -name 'libvoxtrel-platform.so.1')")
consume host "$moved" "$platform"
use_interface host "$moved" "$platform"
