#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: units.sh BUILD_DIR PREFIX SUBJECT
# Installs the programs into a folder of its own and looks at the units as if it were the root.
set -euo pipefail
build=$1
prefix=${2%/}
subject=$3
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
for component in runtime programs; do
    DESTDIR=$stage cmake --install "$build" --component "$component" >"$stage/install.log"
done
units=$stage$prefix/lib/systemd/user
services=(voxtrel-servicemanager.service voxtreld.service)
# systemd's tools want to know where a user's manager would keep its sockets.
export XDG_RUNTIME_DIR=$stage

# Warnings count, too: there is to be no output at all.
are_sound() {
    local report
    sed -i "s#^ExecStart=#ExecStart=$stage#" "$units"/*.service
    report=$(cd "$units" && systemd-analyze verify --user --man=no "${services[@]/#/./}" \
        ./voxtrel-servicemanager.socket 2>&1) || { echo "$report"; return 1; }
    [ -z "$report" ] || { echo "$report"; return 1; }
}

# The exposure is at most 3.0 of 10.
are_shut_in() {
    local service
    for service in "${services[@]}"; do
        systemd-analyze security --user --offline=yes --no-pager --threshold=30 "$units/$service"
    done
}

# usage: value_in UNIT KEY
value_in() {
    sed -n "s/^$2=\([^ ]*\).*/\1/p" "$units/$1"
}

# As many starts as are allowed take less time than the one in which they are counted.
end_trying_in_the_end() {
    local burst wait interval
    burst=$(value_in voxtreld.service StartLimitBurst)
    wait=$(value_in voxtreld.service RestartSec)
    interval=$(value_in voxtreld.service StartLimitIntervalSec)
    echo "$burst starts, $wait s apart, within $interval s"
    [ $((2 * burst * wait)) -le "$interval" ]
}

# Installed once more, by a relative path.
name_the_programs_of_another_prefix() {
    local service
    cd "$stage"
    cmake --install "$build" --component programs --prefix else/where >"$stage/install.log"
    units=$stage/else/where/lib/systemd/user
    for service in "${services[@]}"; do
        echo "$service starts $(value_in "$service" ExecStart)"
        [[ $(value_in "$service" ExecStart) == /* ]]
        [ "$(value_in "$service" ExecStart)" -ef "$stage/else/where/bin/${service%.service}" ]
    done
}

name_the_installed_programs() {
    local service program
    for service in "${services[@]}"; do
        program=$(value_in "$service" ExecStart)
        echo "$service starts $program"
        [ "$program" = "$prefix/bin/${service%.service}" ]
        "$stage$program" --version
    done
}

"$subject"
