#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: fuzz.sh BUILD_DIR SECONDS [TARGET...]. Runs fuzz targets, or all, for that long each, as many
# side by side as there are processors; finds are kept beside them. Closes with a table. A find fails,
# and so does a target that has not run at all.
set -euo pipefail
build=$1
seconds=$2
shift 2

# The programs of the targets that are asked for.
list_targets() {
    local pattern program found
    for pattern in "$@"; do
        found=
        while read -r program; do
            # shellcheck disable=SC2053 # a pattern
            if [[ $(basename "$program") == $pattern ]]; then
                found=yes
                printf '%s\n' "$program"
            fi
        done <"$build/fuzz/targets"
        [ -n "$found" ] || { echo "no fuzz target '$pattern' in $build" >&2; return 1; }
    done
}

# The same seed each time: two runs from the same corpus differ in what the machine had time for. An input
# that takes seconds is a find, too.
run_target() {
    local target=$1 status=0
    mkdir -p "$target.corpus"
    rm -f "$target.status"
    "$target" -seed=1 -max_total_time="$seconds" -timeout=30 -rss_limit_mb=1024 -print_final_stats=1 \
        -artifact_prefix="$target." "$target.corpus" >"$target.log" 2>&1 || status=$?
    echo "$status" >"$target.status"
}

# stat_of LOG NAME: one of libFuzzer's closing figures, or 0
stat_of() {
    local figure
    figure=$(sed -n "s/^stat::$2: *//p" "$1" | tail -n 1)
    echo "${figure:-0}"
}

# What is wrong with a run, if anything is.
trouble_of() {
    if [ "$(cat "$1.status")" -ne 0 ]; then
        echo "failed; its input is beside it: $1.*"
    elif [ "$(stat_of "$1.log" number_of_executed_units)" -eq 0 ]; then
        echo "has not run a single input"
    fi
}

# One row of the table.
report() {
    local target=$1 finds=0 coverage
    coverage=$(grep -aoE 'cov: [0-9]+' "$target.log" | tail -n 1 | cut -d ' ' -f 2) || true
    [ "$(cat "$target.status")" -eq 0 ] || finds=1
    printf '%-16s %10s %8s %9s %6s\n' "$(basename "$target")" \
        "$(stat_of "$target.log" number_of_executed_units)" \
        "$(stat_of "$target.log" average_exec_per_sec)" "${coverage:-0}" "$finds"
}

[ $# -gt 0 ] || set -- '*_fuzz'
listed=$(list_targets "$@")
mapfile -t targets <<<"$listed"
for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do
        wait -n || true
    done
    run_target "$target" &
done
wait

printf '%-16s %10s %8s %9s %6s\n' target runs runs/s coverage finds
for target in "${targets[@]}"; do
    report "$target"
done
status=0
for target in "${targets[@]}"; do
    trouble=$(trouble_of "$target")
    if [ -n "$trouble" ]; then
        printf '\n%s %s\n' "$(basename "$target")" "$trouble"
        tail -n 40 "$target.log"
        status=1
    fi
done
exit "$status"
