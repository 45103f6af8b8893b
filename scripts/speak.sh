#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: scripts/speak.sh BUILD-FOLDER "TEXT" [-o FILE.wav] [--lang CODE]
# Starts a service of its own in a private folder, speaks TEXT through it into a WAV file, shows the
# events, and stops everything again. Behind `./dev speak`.
set -euo pipefail

usage() {
    echo 'usage: ./dev speak "TEXT" [-o FILE.wav] [--lang CODE]' >&2
    exit 2
}

build=${1:?build folder}
shift
text=
wav=
options=()
while [ $# -gt 0 ]; do
    case $1 in
        -o | --output) [ $# -ge 2 ] || usage; wav=$2; shift ;;
        --lang) [ $# -ge 2 ] || usage; options+=(--lang "$2"); shift ;;
        --) shift; text=${text:+$text }$*; break ;;
        -*) usage ;;
        *) text=${text:+$text }$1 ;;
    esac
    shift
done
[ -n "$text" ] || usage
wav=$(realpath -m "${wav:-$build/speak.wav}")
mkdir -p "$(dirname "$wav")"

program() {
    local found
    found=$(find "$build" -type f -perm -u+x -name "$1" -print -quit)
    [ -n "$found" ] || { echo "speak: $1 has not been built in $build" >&2; exit 1; }
    echo "$found"
}
manager=$(program voxtrel-servicemanager)
service=$(program voxtreld)
control=$(program voxtrelctl)

private=$(mktemp -d)
started=()
stop_started() {
    local at
    for ((at = ${#started[@]} - 1; at >= 0; at--)); do
        kill "${started[at]}" 2>/dev/null || true
        wait "${started[at]}" 2>/dev/null || true
    done
    started=()
}
cleanup() {
    stop_started
    rm -rf "$private"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

give_up() {
    echo "speak: $1" >&2
    cat "$private"/*.log >&2
    exit 1
}

export VOXTREL_BINDER_SOCKET="$private/binder"
export VOXTREL_LOG_LEVEL=${VOXTREL_LOG_LEVEL:-0}
"$manager" >"$private/manager.log" 2>&1 &
started+=($!)
while [ ! -S "$VOXTREL_BINDER_SOCKET" ]; do
    kill -0 "${started[0]}" 2>/dev/null || give_up "the service manager did not start"
    sleep 0.02
done
"$service" --profile "$private/voxtrel.ini" --sink "wav:$wav" >"$private/service.log" 2>&1 &
started+=($!)

printf '\n== speaking\n'
env -u VOXTREL_LOG_LEVEL "$control" say --wait "${options[@]}" -- "$text" ||
    give_up "it was not spoken"
stop_started

printf '\n== %s\n' "$wav"
"$(dirname "$0")/wav_level.sh" "$wav"

if grep -qs ']:' /proc/asound/cards; then
    if command -v aplay >/dev/null; then
        aplay -q "$wav" || echo "speak: the sound card did not take it" >&2
    else
        echo "this machine has a sound card; install alsa-utils to hear the file here"
    fi
else
    echo "no sound card here: copy the file to where there is one"
fi
