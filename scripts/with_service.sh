#!/bin/sh
# usage: scripts/with_service.sh PROGRAMS COMMAND [ARGUMENT...]
# Runs COMMAND beside a service manager and a speech service of the folder PROGRAMS, which speak into
# a private folder, and fails unless COMMAND succeeds, the service ends in order and sound was made.
set -eu
programs=$1
shift

private=$(mktemp -d)
manager=
service=
cleanup() {
    [ -z "$service" ] || kill "$service" 2>/dev/null || true
    [ -z "$manager" ] || kill "$manager" 2>/dev/null || true
    rm -rf "$private"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
give_up() {
    echo "with_service: $1" >&2
    cat "$private"/*.log >&2
    exit 1
}

# What libraries write down for themselves goes there, too.
export HOME="$private" XDG_RUNTIME_DIR="$private" TMPDIR="$private"
export VOXTREL_BINDER_SOCKET="$private/binder"
"$programs/voxtrel-servicemanager" >"$private/manager.log" 2>&1 &
manager=$!
while [ ! -S "$VOXTREL_BINDER_SOCKET" ]; do
    kill -0 "$manager" 2>/dev/null || give_up "the service manager did not start"
    sleep 0.02
done
"$programs/voxtreld" --profile "$private/voxtrel.ini" --sink "wav:$private/spoken.wav" \
    >"$private/service.log" 2>&1 &
service=$!
"$@" || give_up "'$*' left with $?"
kill "$service"
wait "$service" || give_up "the service left with $?"
service=

"$(dirname "$0")/wav_level.sh" "$private/spoken.wav" || give_up "no sound was made"
