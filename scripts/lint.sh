#!/usr/bin/env bash
# The form of the sources, then clang-tidy over what ships (library, stand-in, programs).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
scripts/format_check.sh
cmake --preset lint >/dev/null
git ls-files 'vocabulary/*.cpp' 'ipc/*.cpp' 'profile/*.cpp' 'client/*.cpp' 'platform/*.cpp' \
    'service/*.cpp' 'tools/*.cpp' 'voxtrel/*.cpp' 'bridges/*.cpp' |
    xargs -r -P "$(jobs_here)" -n 4 clang-tidy-14 --quiet -p build/lint
say "clang-tidy: clean"
