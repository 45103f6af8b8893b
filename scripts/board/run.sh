#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: run.sh [OPTION...] x86|arm PROGRAM [ARGUMENT...]
# Boots an emulated board with PROGRAM of a build tree, and runs it there as root, with the kernel's binder
# driver at /dev/binder. Prints what it prints; the exit status is its own. The options:
#   --env NAME=VALUE     for its environment
#   --with FILE          another program or file that it needs, at the same path
#   --with-folder FOLDER
#   --seconds N          that it may take (default: 120)
#   --cpus N             the board's processors (default: 2)
#   --icount ARGUMENT    so that figures repeat, with one processor: shift=1,sleep=off
#   --dmesg              prints the kernel's messages, too
# For example:
#   scripts/board/run.sh --env VOXTREL_BINDER_DRIVER=/dev/binder \
#       --with build/debug/platform/host/voxtrel-servicemanager \
#       x86 build/debug/tests/platform/platform_test --gtest_filter='AParcel.*'
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/lib.sh
# shellcheck source=scripts/board/machine.sh
for subject in boards packages image machine; do source "scripts/board/$subject.sh"; done

usage() {
    sed -n '3,/^[^#]/s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

environment=() files=() folders=() seconds=120 shows_dmesg=0
while [ $# -gt 0 ]; do
    case $1 in
        --env) environment+=("$2"); shift ;;
        --with) files+=("$(realpath "$2")"); shift ;;
        --with-folder) folders+=("$(realpath "$2")"); shift ;;
        --seconds) seconds=$2; shift ;;
        --cpus) MACHINE_CPUS=$2; shift ;;
        --icount) MACHINE_ICOUNT=$2; shift ;;
        --dmesg) shows_dmesg=1 ;;
        -*) usage ;;
        *) break ;;
    esac
    shift
done
[ $# -ge 2 ] || usage
choose_board "$1"
program=$(realpath "$2")
shift 2

need_packages board
need_board_root
start_image
for file in "$program" "${files[@]}"; do add_file "$file"; done
for folder in "${folders[@]}"; do add_folder "$folder"; done
printf 'part program %s %s\n' "$seconds" "$(printf '%q ' env "${environment[@]}" "$program" "$@")" >"$IMAGE/board/list"
pack_image

console=$BOARD_FOLDER/run.console # another than that of a ./dev board beside it
# Its clock may be slower than ours. Whether it went well is seen by what is there.
{ run_machine $((seconds * 5 + 300)) || true; } | tee "$console" |
    sed -u -n '/^#board begin program$/,/^#board end program /{/^#board /!p}'
if [ "$shows_dmesg" -eq 1 ]; then sed -n '/^#board begin dmesg$/,/^#board end dmesg /p' "$console"; fi
status=$(sed -n 's/^#board end program .* with \([0-9]*\)$/\1/p' "$console")
if [ -z "$status" ]; then
    echo "board: it did not come to the program's end; its console said:" >&2
    tail -n 60 "$console" >&2
    exit 1
fi
exit "$status"
