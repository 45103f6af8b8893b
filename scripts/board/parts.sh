# SPDX-License-Identifier: Apache-2.0
# What a board's list consists of; sourced there.

# add_module NAME [PARAMETER...]
add_module() {
    module=$1
    shift
    insmod "/lib/modules/$module.ko" "$@"
}

# part NAME SECONDS COMMAND...: runs it, between two lines that tell what it is and how it ended
part() {
    part_name=$1 part_seconds=$2
    shift 2
    part_start=$(date +%s)
    echo "#board begin $part_name"
    timeout -s KILL "$part_seconds" "$@" </dev/null 2>&1
    part_status=$?
    printf '\n#board end %s after %s s with %s\n' "$part_name" $(($(date +%s) - part_start)) $part_status
}

# tests NAME SECONDS FILTER PROGRAM...: a part of GoogleTest's, which names its tests beforehand
tests() {
    list_tests "$@"
    shift 3
    part "$tests_name" "$tests_seconds" "$@" "$tests_filter" --gtest_color=no
}

# tests_apart NAME SECONDS FILTER PROGRAM...: the same, with a process for each test
tests_apart() {
    list_tests "$@"
    shift 3
    part "$tests_name" "$tests_seconds" /board/apart.sh "$tests_filter" "$@"
}

list_tests() {
    tests_name=$1 tests_seconds=$2 tests_filter=--gtest_filter=$3
    shift 3
    part "list of $tests_name" 300 "$@" "$tests_filter" --gtest_list_tests
}

# send_file FILE: brings it to the machine that runs the board, under its own name
send_file() {
    echo "#board file $(basename "$1")"
    base64 "$1"
    echo "#board file end"
}
