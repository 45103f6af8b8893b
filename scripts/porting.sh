#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/porting.sh BUILD_DIR COMPILER C_COMPILER
# Runs the commands of docs/porting.md, as they stand there, against the platform of BUILD_DIR, a build
# with VOXTREL_PLATFORM=host, installed as if it were a device's. Builds and runs applications of the
# interface against what that has installed as well.
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD
build=$(realpath "$1")
export CXX=$2
c_compiler=$3
programs=$build/platform/host
source scripts/service_manager.sh

export CCACHE_BASEDIR=$private # what an earlier run has compiled, in a folder of another name

# The public headers, and the libraries under a device's names; nothing that a device has not.
export SYSROOT=$private/sysroot TOOLCHAIN=$private/toolchain.cmake
mkdir -p "$SYSROOT/usr/include" "$SYSROOT/usr/lib"
for part in utils binder ttscommon; do
    mkdir "$SYSROOT/usr/include/$part"
    cp platform/host/"$part"/*.h "$SYSROOT/usr/include/$part"
done
rm "$SYSROOT"/usr/include/binder/Service*.h
cp "$programs/libvoxtrel-platform.so.1" "$SYSROOT/usr/lib"
for name in binder utils ttscommon; do
    ln -s libvoxtrel-platform.so.1 "$SYSROOT/usr/lib/lib$name.so"
done
echo "set(CMAKE_CXX_COMPILER $CXX)" >"$TOOLCHAIN"

# What gives a line to the device's shell. The page builds into a tree of its own, of links to the sources.
tree=$private/tree
mkdir -p "$private/bin" "$tree/build"
cat >"$private/bin/device" <<TXT
#!/bin/sh
installed=\$(find $tree/build -path '*/usr/*' -name libvoxtrel-client.so.1 -printf %h)
export LD_LIBRARY_PATH=$SYSROOT/usr/lib:\$installed PATH=$tree/build/image/usr/bin:\$PATH
[ \$# -eq 1 ] || { echo "device: one line, not \$#" >&2; exit 2; }
exec sh -c "\$1"
TXT
chmod +x "$private/bin/device"
export PATH=$private/bin:$PATH
find "$source" -mindepth 1 -maxdepth 1 ! -name build ! -name '.*' -exec ln -s {} "$tree" \;
cd "$tree"

sed -n '/^```sh$/,/^```$/ { /^```/d; p }' docs/porting.md >"$private/commands"
[ "$(grep -c . "$private/commands")" -ge 30 ] || give_up "docs/porting.md has no commands"
PS4='== '
set -x
source "$private/commands"
set +x
service=
cmake -S . -B "$private/untested" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" -DVOXTREL_PLATFORM=system \
    -DVOXTREL_PLATFORM_INCLUDE_DIRS="$SYSROOT/usr/include" \
    -DVOXTREL_PLATFORM_LIBRARY_DIRS="$SYSROOT/usr/lib" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON |
    grep -F 'VOXTREL_BUILD_TESTS: OFF, since these are not found: GoogleTest'
"$source/scripts/wav_level.sh" hello.wav
mkdir "$private/programs"
ln -s "$programs/voxtrel-servicemanager" "$tree"/build/image/usr/bin/voxtrel{d,ctl} "$private/programs"
# shellcheck disable=SC2154 # the page finds them
LD_LIBRARY_PATH=$SYSROOT/usr/lib "$source/tests/house/use_interface.sh" "$tree/build/image/usr" \
    "$libraries" "$private/programs" "$source" "$CXX" "$c_compiler"
