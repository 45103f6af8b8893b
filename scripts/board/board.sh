#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: board.sh [--over sockets|driver]... [--cpus N] [x86|arm]... Tests on emulated boards, all of them
# beside each other, over the transport over sockets, the one over the kernel's binder driver, or both. A
# board has one processor and a clock of its own (machine.sh), or with --cpus N as many and the time of this
# machine. Ends with 'N passed, N failed'.
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/lib.sh
# shellcheck source=scripts/board/machine.sh
for subject in boards packages image programs machine; do source "scripts/board/$subject.sh"; done

MACHINE_SECONDS=3600 # a busy machine may take ten times as long; what hangs is ended on the board
MACHINE_ICOUNT=shift=1,sleep=off
SLOWER=1 # parts may take so many times as long: more where their time is that of a busy machine
PROGRAMS=(voxtrel-servicemanager voxtreld voxtrelctl voxtrel-platform-check foreign_peer foreign_peer_test)
# Over the driver; every build runs them over sockets. Those of the second list in a process each.
TESTS=(ipc_test client_test)
TESTS_APART=(client_process_test platform_test)
FILTER='*-TheVoiceFilter.SurvivesATextOfMegabytes' # it computes for half a minute, and calls nobody

usage() {
    echo "usage: ./dev board [--over sockets|driver]... [--cpus N] [x86|arm]..." >&2
    exit 2
}

# on_board PART COMMAND...: adds it to the board's list
on_board() { printf '%q ' "$@" >>"$IMAGE/board/list"; echo >>"$IMAGE/board/list"; }

# list_parts TRANSPORT: what is done over it: the story and the check, and over the driver our tests;
# their names go to PARTS
list_parts() {
    local test chosen=()
    if [ "$1" = driver ]; then chosen=(VOXTREL_BINDER_DRIVER=/dev/binder); fi
    on_board part "story@$1" $((150 * SLOWER)) env "${chosen[@]}" /board/story.sh "/tmp/story@$1.wav"
    on_board send_file "/tmp/story@$1.wav"
    on_board part "platform_check@$1" $((150 * SLOWER)) env "${chosen[@]}" /board/platform_check.sh
    PARTS+=("story@$1" "platform_check@$1")
    [ "$1" = driver ] || return 0
    for test in "${TESTS[@]}"; do
        on_board tests "$test@$1" $((100 * SLOWER)) "$FILTER" env "${chosen[@]}" "$test"
        PARTS+=("$test@$1")
    done
    on_board tests "foreign_peer_test@$1" $((300 * SLOWER)) '*' env "${chosen[@]}" foreign_peer_test
    PARTS+=("foreign_peer_test@$1")
    for test in "${TESTS_APART[@]}"; do
        on_board tests_apart "$test@$1" $((300 * SLOWER)) '*' env "${chosen[@]}" "$test"
        PARTS+=("$test@$1")
    done
}

# plays_sound: without a clock of the board's own a busy machine would make gaps
plays_sound() { [ -n "$SOUND_CARD_TEST" ] && [ -n "$MACHINE_ICOUNT" ]; }

# list_sound_card BUILD: the service plays on a card
list_sound_card() {
    add_program "$1" "$SOUND_CARD_TEST" && install scripts/board/sound_card.sh "$IMAGE/board" || return 1
    on_board tests sound_card $((120 * SLOWER)) '*' env VOXTREL_SOUND_CARD_SCRIPT=/board/sound_card.sh "$SOUND_CARD_TEST"
    PARTS+=(sound_card)
}

# make_image BUILD
make_image() {
    local program transport
    start_image || return 1
    for program in "${PROGRAMS[@]}" "${TESTS[@]}" "${TESTS_APART[@]}"; do
        add_program "$1" "$program" || return 1
    done
    add_folder "$PWD/tests/ipc/golden" && add_speech_data || return 1
    install scripts/board/{apart,checks,platform_check,story}.sh "$IMAGE/board" || return 1
    echo "export TEST_SECONDS=$((60 * SLOWER))" >>"$IMAGE/board/list"
    PARTS=()
    if plays_sound; then list_sound_card "$1" || return 1; fi
    for transport in "${TRANSPORTS[@]}"; do list_parts "$transport"; done
    pack_image
}

# count_sound TRANSPORT: whether the story's last sentence, of two seconds, can be heard
count_sound() {
    local file=$BOARD_FOLDER/results/story@$1.wav level
    if level=$(scripts/wav_level.sh "$file") && [[ $level =~ ^length\ [12]\. ]]; then
        PASSED=$((PASSED + 1))
        say "story@$1.wav: $level"
    else
        FAILED=$((FAILED + 1))
        say "the sentence is not in $file; ${level:-there is no sound}"
    fi
}

count_results() {
    local results=$BOARD_FOLDER/results passed failed transport
    rm -rf "$results"
    scripts/board/results.py "$1" "$results" "${PARTS[@]}"
    scripts/grouped_tests.py count "$results/journals" >"$results/counted"
    read -r _ _ passed failed <"$results/counted"
    sed -n '2,21p' "$results/counted" # the first failures
    PASSED=$((PASSED + passed))
    FAILED=$((FAILED + failed))
    for transport in "${TRANSPORTS[@]}"; do count_sound "$transport"; done
    if ! grep -q '^#board off' "$1"; then
        say "the board did not come to its end; its console said:"
        tail -n 30 "$1"
    fi
}

# build_board: what the chosen board runs
build_board() {
    local targets=("${PROGRAMS[@]}" "${TESTS[@]}" "${TESTS_APART[@]}")
    if plays_sound; then targets+=("$SOUND_CARD_TEST"); fi
    need_board_root && build_preset "$PRESET" --target "${targets[@]}"
}

# run_board BOARD: boots it, once for all transports. Its words go to its log and its sums to its counts,
# for boards run beside each other.
run_board() (
    choose_board "$1"
    start=$SECONDS console=$BOARD_FOLDER/console
    PASSED=0 FAILED=0
    if make_image "build/$PRESET"; then
        run_machine "$MACHINE_SECONDS" >"$console" || true # it is counted by what it has said
        count_results "$console"
    else
        FAILED=1
        say "board $1: has no image"
    fi >"$BOARD_FOLDER/log" 2>&1
    echo "(board $1: $((SECONDS - start)) s)" >>"$BOARD_FOLDER/log"
    echo "$PASSED $FAILED" >"$BOARD_FOLDER/counts"
)

# prepare_board BOARD: builds what it runs, before any board boots: with --cpus their time is this machine's
prepare_board() {
    choose_board "$1"
    mkdir -p "$BOARD_FOLDER"
    rm -f "$BOARD_FOLDER"/{log,counts}
    if build_board; then
        PREPARED+=("$1")
    else
        FAILED=$((FAILED + 1))
        say "board $1: could not be built"
    fi
}

start_board() {
    set -m # a process group of its own, to be ended by
    run_board "$1" </dev/null &
    set +m
    GROUPS_STARTED+=("$!")
}

end_boards() {
    local group
    for group in "${GROUPS_STARTED[@]}"; do kill -- "-$group" 2>/dev/null || true; done
}

# finish_board BOARD: says what became of it
finish_board() {
    local passed=0 failed=1
    choose_board "$1"
    say_step "board $1"
    cat "$BOARD_FOLDER/log"
    read -r passed failed <"$BOARD_FOLDER/counts" || say "board $1: was not counted"
    PASSED=$((PASSED + passed))
    FAILED=$((FAILED + failed))
}

TRANSPORTS=()
chosen=()
while [ $# -gt 0 ]; do
    case $1 in
        --over)
            [[ ${2:-} =~ ^(sockets|driver)$ ]] || usage
            TRANSPORTS+=("$2")
            shift
            ;;
        --cpus)
            [[ ${2:-} =~ ^[1-9]$ ]] || usage
            MACHINE_CPUS=$2 MACHINE_ICOUNT="" SLOWER=10
            shift
            ;;
        x86 | arm) chosen+=("$1") ;;
        *) usage ;;
    esac
    shift
done
[ ${#TRANSPORTS[@]} -gt 0 ] || TRANSPORTS=(sockets driver)
[ ${#chosen[@]} -gt 0 ] || chosen=("${BOARDS[@]}")

need_packages speak build python desktop arm board
PREPARED=() GROUPS_STARTED=()
trap end_boards EXIT
for board in "${chosen[@]}"; do prepare_board "$board"; done
for board in "${PREPARED[@]}"; do start_board "$board"; done
wait
for board in "${PREPARED[@]}"; do finish_board "$board"; done
say ""
closing_line
