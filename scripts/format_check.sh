#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Says which of our sources are not in the project's form; changes nothing.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
if ! own_sources | xargs -r clang-format-14 --dry-run --Werror; then
    echo "run ./dev format" >&2
    exit 1
fi
