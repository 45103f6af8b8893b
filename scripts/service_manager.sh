# SPDX-License-Identifier: Apache-2.0
# Sourced by what runs programs beside a service manager of its own: a private folder, the service
# manager of the folder $programs in it, and the end of both with the script. $service is the process
# that the script starts there itself, if any.
private=$(mktemp -d)
manager=
service=
# end_process PROCESS: and waits for it, which may still write into the folder.
end_process() {
    kill "$1" 2>/dev/null || true
    { wait "$1" || true; } 2>/dev/null
}
cleanup() {
    [ -z "$service" ] || end_process "$service"
    [ -z "$manager" ] || end_process "$manager"
    rm -rf "$private"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
give_up() {
    echo "$(basename "$0" .sh): $1" >&2
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
