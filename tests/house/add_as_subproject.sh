#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: add_as_subproject.sh SOURCE_DIR COMPILER
# Another project adds this one as a subdirectory and links the client library: it gets the libraries
# and neither programs nor tests, and what it installs is its own, also when it asks for the programs.
set -euo pipefail
source=$1
compiler=$2
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

quietly() { "$@" >"$stage/log" 2>&1 || { cat "$stage/log"; exit 1; }; }

mkdir "$stage/project"
cat >"$stage/project/CMakeLists.txt" <<EOF
cmake_minimum_required(VERSION 3.22)
project(application LANGUAGES CXX)
enable_testing()
add_subdirectory("$source" voxtrel)
add_executable(application main.cpp)
target_link_libraries(application PRIVATE voxtrel::client)
install(TARGETS application)
EOF
cat >"$stage/project/main.cpp" <<EOF
#include "client/TTSClientPrivate.h"
#include "vocabulary/Language.h"

int main() {
    const TTS::TTSClientPrivate client("application", nullptr);
    return TTS::langStr2Id("fr_FR") == LANG_FR_FR ? 0 : 1;
}
EOF
build=$stage/build
quietly cmake -S "$stage/project" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler"
quietly cmake --build "$build" --target application
"$build/application"

targets=$(ninja -C "$build" -t targets all)
grep -q '^voxtrel-client:' <<<"$targets" || { echo "the library is not among the targets"; exit 1; }
for name in voxtreld voxtrelctl sd_voxtrel; do
    if grep -q "^$name:" <<<"$targets"; then
        echo "$name is among the targets"
        exit 1
    fi
done
tests=$(cd "$build" && ctest -N)
grep -q 'Total Tests: 0' <<<"$tests" || { echo "$tests"; exit 1; }
for programs in OFF ON; do
    quietly cmake -DVOXTREL_BUILD_PROGRAMS=$programs "$build"
    quietly cmake --install "$build" --prefix "$stage/$programs"
    installed=$(cd "$stage/$programs" && find . -type f)
    [ "$installed" = ./bin/application ] || { echo "installed, programs $programs: $installed"; exit 1; }
done
