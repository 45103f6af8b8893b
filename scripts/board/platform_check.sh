#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# usage: platform_check.sh. Whether the library can rely on the runtime that the board has, row for row.
. "$(dirname "$0")/checks.sh"
export VOXTREL_BINDER_SOCKET="$work/binder"

can_rely() {
    voxtrel-platform-check --restart-manager "
        kill -9 $manager; rm -f $VOXTREL_BINDER_SOCKET
        voxtrel-servicemanager >$work/restarted.log 2>&1 & echo \$! >$work/restarted
        until grep -q ready $work/restarted.log; do sleep 0.1; done"
}
# Not a child of this shell, and perhaps nobody waits for it.
has_ended() { ! readlink "/proc/$1/exe"; }
restarted_ends() {
    restarted=$(cat "$work/restarted")
    kill "$restarted" && await has_ended "$restarted"
}

check 'the service manager starts' start_manager
check 'the library can rely on the runtime' can_rely
check 'the restarted service manager ends' restarted_ends
