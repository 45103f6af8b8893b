#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: size.sh. Builds the client library as it ships, for a 64-bit PC and for 32-bit ARM; prints how
# large it is without its symbols for debuggers, how much it exports, and what takes the room. Fails
# where a figure is above what bench/size.txt accepts.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

library=libvoxtrel-client.so.1

# What stands for a device's: outside of the sources, where CMake wants it.
sysroot=$(mktemp -d)
trap 'rm -rf "$sysroot"' EXIT
for part in utils binder ttscommon; do
    mkdir -p "$sysroot/include/$part"
    cp platform/host/$part/*.h "$sysroot/include/$part"
done

# take_platform PRESET...: that of one of them, built if none is. Nothing of it gets into the library.
take_platform() {
    local preset built=
    for preset in "$@"; do
        [ ! -f "build/$preset/platform/host/libvoxtrel-platform.so" ] || built=$preset
    done
    [ -n "$built" ] || build_preset "$1" --target voxtrel_platform
    cp "build/${built:-$1}/platform/host/libvoxtrel-platform.so" "$sysroot"
}

# build NAME [cmake argument...]: without a path to this build in it
build() {
    local build=build/size/$1 log=$sysroot/log
    if ! { cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_SKIP_RPATH=ON \
        -DVOXTREL_HARDENED=ON -DVOXTREL_BUILD_TESTS=OFF -DVOXTREL_BUILD_PROGRAMS=OFF -DVOXTREL_PLATFORM=system \
        -DVOXTREL_PLATFORM_INCLUDE_DIRS="$sysroot/include" -DVOXTREL_PLATFORM_LIBRARY_DIRS="$sysroot" \
        -DVOXTREL_PLATFORM_LIBRARIES=voxtrel-platform "${@:2}" &&
        cmake --build "$build" -j "$(jobs_here)" --target voxtrel-client; } >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}

# stripped_bytes STRIP NAME
stripped_bytes() {
    "$1" --strip-unneeded -o "build/size/$2/stripped" "build/size/$2/$library"
    stat -c %s "build/size/$2/stripped"
}

# figure NAME VALUE: also compares it with what is accepted
figure() {
    local most
    printf 'figure %s %d\n' "$1" "$2"
    most=$(sed -nE "s/^$1 ([0-9]+)\$/\1/p" bench/size.txt)
    if [ -z "$most" ] || [ "$2" -gt "$most" ]; then
        echo "size: $1 is $2, and bench/size.txt accepts ${most:-no such figure}" >&2
        status=1
    fi
}

take_platform arm board_arm
build arm -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/arm-linux-gnueabihf.cmake"
take_platform debug release bench
build pc -DCMAKE_CXX_COMPILER=g++
for architecture in arm pc; do
    say_step "what takes the room, $architecture"
    scripts/symbol_sizes.py "build/size/$architecture/$library"
done
say ""
status=0
figure client_so_arm_bytes "$(stripped_bytes arm-linux-gnueabihf-strip arm)"
figure client_so_bytes "$(stripped_bytes strip pc)"
figure exported_symbols "$(nm --dynamic --defined-only build/size/pc/$library | grep -vc ' A ')"
exit $status
