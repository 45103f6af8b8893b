#!/usr/bin/env bash
# usage: fuzz.sh BUILD_DIR SECONDS. Runs all fuzz targets for that long, side by side; finds are kept
# beside them.
set -euo pipefail
build=$1
seconds=$2
targets=$(find "$build/fuzz" -maxdepth 2 -type f -name '*_fuzz' -perm -u+x | sort)
[ -n "$targets" ] || { echo "no fuzz target in $build" >&2; exit 1; }

declare -A runs
for target in $targets; do
    mkdir -p "$target.corpus"
    "$target" -max_total_time="$seconds" -rss_limit_mb=1024 -artifact_prefix="$target." \
        "$target.corpus" >"$target.log" 2>&1 &
    runs[$target]=$!
done

status=0
for target in $targets; do
    printf '%s: ' "$(basename "$target")"
    if wait "${runs[$target]}"; then
        grep -E '^(Done|stat::number_of_executed_units)' "$target.log" | tail -n 1
    else
        echo "failed"
        tail -n 40 "$target.log"
        status=1
    fi
done
exit "$status"
