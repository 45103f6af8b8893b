# SPDX-License-Identifier: Apache-2.0
# Checks of a script that runs on a board; sourced there. Each is named beforehand, so that none is
# missing unnoticed.

work=$(mktemp -d)
sed -n "s/^check '\([^']*\)'.*/plan \1/p" "$0"

# check 'NAME' COMMAND...: and all that was written down when it fails
check() {
    check_name=$1
    shift
    echo "run $check_name"
    if "$@" >"$work/check.log" 2>&1; then
        echo "ok $check_name"
    else
        tail -n 40 "$work"/*.log
        echo "not ok $check_name"
    fi
}

# await COMMAND...: until it succeeds, for at most a minute
await() {
    awaited=0
    until "$@" >/dev/null 2>&1; do
        awaited=$((awaited + 1))
        [ "$awaited" -lt 600 ] || { echo "not within a minute: $*"; return 1; }
        sleep 0.1
    done
}

# logged TEXT LOG: how often
logged() { grep -cF "$1" "$work/$2.log"; }
await_logged() { await grep -qF "$1" "$work/$2.log"; }

# run_aside LOG COMMAND...: runs it beside the script, which finds its process in $aside
run_aside() {
    aside_log=$work/$1.log
    shift
    "$@" >>"$aside_log" 2>&1 &
    aside=$!
}

# left_with PROCESS STATUS: waits for it
left_with() {
    { wait "$1"; } 2>/dev/null
    left=$?
    [ "$left" -eq "$2" ] || { echo "it left with $left"; return 1; }
}

start_manager() {
    run_aside manager voxtrel-servicemanager
    manager=$aside
    await_logged ready manager
}
