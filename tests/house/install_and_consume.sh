#!/usr/bin/env bash
# usage: install_and_consume.sh BUILD_DIR SOURCE_DIR COMPILER
# Installs into a folder of its own, then builds the example against that, with CMake's package and
# with pkg-config, and sees that it starts.
set -euo pipefail
build=$1
source=$2
compiler=$3
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
cmake --install "$build" --prefix "$stage/usr" >"$stage/install.log"
cmake -S "$source/examples/hello" -B "$stage/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_PREFIX_PATH="$stage/usr" >"$stage/configure.log"
cmake --build "$stage/build"
export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$(find "$stage/usr" -name voxtrel-client.pc)")
# pkg-config's answer is a list of flags, meant to be split.
# shellcheck disable=SC2046
"$compiler" -std=c++17 "$source"/examples/hello/*.cpp \
    $(pkg-config --define-variable=prefix="$stage/usr" --cflags --libs voxtrel-client) \
    -o "$stage/hello-pkgconfig"
libraries=$(dirname "$(find "$stage/usr" -name 'libvoxtrel-client.so.1')")
LD_LIBRARY_PATH=$libraries ldd "$stage/hello-pkgconfig" | tee "$stage/ldd.log"
grep -q "libvoxtrel-client.so.1 => $libraries" "$stage/ldd.log"
! grep -q 'not found' "$stage/ldd.log"
