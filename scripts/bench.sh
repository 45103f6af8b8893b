#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: bench.sh BUILD_DIR [PROGRAM]. Runs one benchmark program or all, each pinned to processor 0:
# a wake across processors costs several times one on the same, and would hide all else.
set -euo pipefail
build=$1
wanted=${2:-}
programs=$(find "$build/bench" -maxdepth 2 -type f -name "${wanted:-*}" -name '*_bench' -perm -u+x | sort)
if [ -z "$programs" ]; then
    echo "no benchmark program '$wanted'; the programs are:" >&2
    find "$build/bench" -maxdepth 2 -type f -name '*_bench' -perm -u+x -printf '  %f\n' | sort >&2
    exit 1
fi
for program in $programs; do
    printf '\n== %s\n' "$(basename "$program")"
    taskset -c 0 "$program"
done
