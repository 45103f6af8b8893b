#!/usr/bin/env bash
# usage: lint.sh [FOLDER...]. The form of the sources, then clang-tidy over what ships (library, stand-in,
# programs), or over the sources in these folders, tests included.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh

export FINDINGS=build/lint/findings

# tidy FILE: what clang-tidy finds goes to FINDINGS; its count of what it does not show is left out
tidy() {
    local said
    said=$(clang-tidy-14 --quiet -p build/lint "$1" 2>/dev/null) || printf '%s\n' "$1:" "$said" >>"$FINDINGS"
    echo "$1"
}
export -f tidy

folders=("$@")
if [ ${#folders[@]} -eq 0 ]; then folders=("${SHIPPED[@]}"); fi
mapfile -t files < <(git ls-files "${folders[@]/%//*.cpp}")
if [ ${#files[@]} -eq 0 ]; then
    echo "lint: there are no sources in ${folders[*]}" >&2
    exit 2
fi
scripts/format_check.sh
cmake --preset lint >/dev/null
: >"$FINDINGS"
printf '%s\0' "${files[@]}" | xargs -0 -P "$(jobs_here)" -n 1 bash -c 'tidy "$1"' tidy |
    awk -v total="${#files[@]}" '{ print NR, total; fflush() }' | show_progress "clang-tidy"
if [ -s "$FINDINGS" ]; then
    cat "$FINDINGS"
    exit 1
fi
say "clang-tidy: clean (${#files[@]} sources)"
