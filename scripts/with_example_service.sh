#!/bin/sh
# usage: scripts/with_example_service.sh PROGRAMS SERVICE
# Runs the program SERVICE, which is examples/service, beside a service manager of the folder PROGRAMS,
# and fails unless voxtrelctl is content with it and it prints what voxtrelctl says.
set -eu
programs=$1

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
    echo "with_example_service: $1" >&2
    cat "$private"/*.log >&2
    exit 1
}

export VOXTREL_BINDER_SOCKET="$private/binder"
"$programs/voxtrel-servicemanager" >"$private/manager.log" 2>&1 &
manager=$!
while [ ! -S "$VOXTREL_BINDER_SOCKET" ]; do
    kill -0 "$manager" 2>/dev/null || give_up "the service manager did not start"
    sleep 0.02
done
"$2" >"$private/service.log" 2>&1 &
service=$!
"$programs/voxtrelctl" say --wait "Hello from the tools." || give_up "say left with $?"
grep -qx "Hello from the tools." "$private/service.log" || give_up "it was not printed"
