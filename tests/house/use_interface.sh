#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: use_interface.sh PREFIX LIBRARIES PROGRAMS SOURCE_DIR COMPILER C_COMPILER
# An application's use of what is installed in PREFIX, its libraries in LIBRARIES: each public header
# compiles alone without a header of the platform, in C++17 or C89; the examples build with CMake's
# package and with pkg-config, speak, and do what they say when the service dies in the middle. The
# service and its manager are those of the folder PROGRAMS.
set -euo pipefail
prefix=$1
libraries=$2
programs=$3
source=$4
compiler=$5
c_compiler=$6
examples=$source/examples/application
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
warnings=(-pedantic -Wall -Wextra -Werror)

quietly() { "$@" >"$stage/log" 2>&1 || { cat "$stage/log"; exit 1; }; }

# expect TEXT STATUS COMMAND...: COMMAND prints that and leaves with it.
expect() {
    local text=$1 status=$2 left=0
    shift 2
    "$@" >"$stage/printed" 2>"$stage/log" || left=$?
    if [ "$(cat "$stage/printed")" != "$text" ] || [ "$left" -ne "$status" ]; then
        echo "'$*' left with $left and printed:"
        cat "$stage/printed" "$stage/log"
        exit 1
    fi
}

compile_headers() {
    local header count=0
    cd "$prefix/include"
    for header in voxtrel/*.h voxtrel/testing/*.h; do
        echo "#include <$header>" >"$stage/alone.cpp"
        "$compiler" -std=c++17 "${warnings[@]}" -I . -fsyntax-only "$stage/alone.cpp"
        if grep -q '^extern "C"' "$header"; then
            cp "$stage/alone.cpp" "$stage/alone.c"
            "$c_compiler" -std=c89 "${warnings[@]}" -I . -fsyntax-only "$stage/alone.c"
            count=$((count + 1))
        fi
    done
    [ "$count" -eq 2 ] || { echo "$count headers are for C"; exit 1; }
    [ ! -e voxtrel/session ] && [ ! -e voxtrel/c ] && [ ! -e voxtrel/ClientState.h ]
}

build_with_cmake() {
    quietly cmake -S "$examples" -B "$stage/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_C_COMPILER="$c_compiler"
    quietly cmake --build "$stage/cmake"
}

build_with_pkg_config() {
    local flags
    flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs voxtrel)
    # A list of flags, meant to be split.
    # shellcheck disable=SC2086
    "$compiler" -std=c++17 "${warnings[@]}" "$examples/speak.cpp" -o "$stage/speak" $flags
    # shellcheck disable=SC2086
    "$c_compiler" "${warnings[@]}" "$examples/speak.c" -o "$stage/speak-c" $flags
}

# The guide's test of an application, which needs neither service nor service manager.
build_with_the_double() {
    local flags
    mkdir "$stage/double"
    sed -n '/^## Tests of an application/,$p' "$source/docs/interface.md" |
        sed -n '/^```cpp/,/^```/{/^```/!p}' >"$stage/double/main.cpp"
    grep -q FakeService "$stage/double/main.cpp"
    printf '%s\n' 'cmake_minimum_required(VERSION 3.18)' 'project(double LANGUAGES CXX)' \
        'find_package(voxtrel 1.0 REQUIRED)' 'add_executable(double main.cpp)' \
        'target_link_libraries(double voxtrel::testing)' >"$stage/double/CMakeLists.txt"
    quietly cmake -S "$stage/double" -B "$stage/double/build" -G Ninja \
        -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler"
    quietly cmake --build "$stage/double/build"
    flags=$(PKG_CONFIG_PATH=$libraries/pkgconfig pkg-config --cflags --libs voxtrel-testing)
    # shellcheck disable=SC2086
    "$compiler" -std=c++17 "${warnings[@]}" "$stage/double/main.cpp" -o "$stage/double/program" $flags
    for program in "$stage/double/build/double" "$stage/double/program"; do
        VOXTREL_BINDER_SOCKET=/nowhere \
            LD_LIBRARY_PATH=$libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} expect "" 0 "$program"
    done
}

# Only the application gets the path: the programs find their libraries themselves.
run_with() {
    local script=$1 program=$2
    shift 2
    printf '#!/bin/sh\nLD_LIBRARY_PATH=%s exec %s "$@"\n' \
        "$libraries${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" "$program" >"$stage/run"
    chmod +x "$stage/run"
    "$source/scripts/$script.sh" "$programs" "$stage/run" "$@"
}
# The last line, on the loudness, is the script's.
speaks_with() { run_with with_service "$@" | sed '$d'; }
survives_with() { run_with with_restarted_service "$@"; }

run_in_peace() {
    local language
    for language in "" -c; do
        expect "spoken to its end" 0 speaks_with "$stage/speak$language" "Hello."
        expect "spoken to its end" 0 speaks_with "$stage/cmake/speak$language" "Hello."
        expect $'One.: spoken to its end\nTwo.: spoken to its end' 0 \
            speaks_with "$stage/cmake/loop$language" One. Two.
        expect "spoken to its end" 0 speaks_with "$stage/cmake/survive$language" "Hello."
    done
}

run_through_a_restart() {
    local language
    local long="This sentence is long enough to be cut off in its middle."
    local lost="there is no connection to the service, or it broke off: start it, or wait until it is back"
    for language in "" -c; do
        expect "$lost" 1 survives_with "$stage/cmake/speak$language" "$long"
        expect "$long: $lost"$'\n'"Two.: $lost" 0 \
            survives_with "$stage/cmake/loop$language" "$long" Two.
        expect $'the service is gone: it is said again\nspoken to its end' 0 \
            survives_with "$stage/cmake/survive$language" "$long"
    done
}

(compile_headers)
build_with_cmake
build_with_pkg_config
build_with_the_double
run_in_peace
run_through_a_restart
