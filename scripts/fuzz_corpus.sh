#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: fuzz_corpus.sh BUILD_DIR [TARGET...]. Takes what the fuzz targets, or these, have found
# interesting into the tree: of all inputs the few that together reach as much, as
# fuzz/corpus/TARGET.tar.gz, which has the same bytes for the same inputs. Closes with a table.
set -euo pipefail
build=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p fuzz/corpus
printf '%-16s %8s %8s\n' target inputs bytes
while read -r program; do
    target=$(basename "$program")
    [ $# -eq 0 ] || [[ " $* " == *" $target "* ]] || continue
    kept=$work/$target
    mkdir "$kept"
    # Long inputs cost the most room and find the least.
    "$program" -set_cover_merge=1 -max_len=4096 -timeout=30 -rss_limit_mb=1024 "$kept" "$program.corpus" \
        >"$work/log" 2>&1 || { tail -n 20 "$work/log"; exit 1; }
    [ -n "$(ls -A "$kept")" ] || { echo "$target has nothing to keep" >&2; exit 1; }
    (cd "$kept" && find . -type f -printf '%P\0' | LC_ALL=C sort -z) |
        tar --create --format=ustar --mtime=@0 --owner=0 --group=0 --numeric-owner --mode=644 \
            --directory="$kept" --null --files-from=- | gzip -n -9 >"fuzz/corpus/$target.tar.gz"
    printf '%-16s %8s %8s\n' "$target" "$(find "$kept" -type f | wc -l)" \
        "$(stat -c %s "fuzz/corpus/$target.tar.gz")"
done <"$build/fuzz/targets"
