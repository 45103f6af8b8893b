#!/usr/bin/env bash
# usage: fuzz.sh BUILD_DIR SECONDS. Runs every fuzz target for that long; finds are kept beside it.
set -euo pipefail
build=$1
seconds=$2
targets=$(find "$build/fuzz" -maxdepth 2 -type f -name '*_fuzz' -perm -u+x | sort)
[ -n "$targets" ] || { echo "no fuzz target in $build" >&2; exit 1; }
for target in $targets; do
    printf '%s: ' "$(basename "$target")"
    corpus="$target.corpus"
    mkdir -p "$corpus"
    log="$target.log"
    if ! "$target" -max_total_time="$seconds" -rss_limit_mb=1024 -artifact_prefix="$target." \
        "$corpus" >"$log" 2>&1; then
        tail -n 40 "$log"
        exit 1
    fi
    grep -E '^(Done|stat::number_of_executed_units)' "$log" | tail -n 1
done
