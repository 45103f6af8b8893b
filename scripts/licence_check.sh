#!/usr/bin/env bash
# Says which files have no licence or copyright that can be found; .reuse/dep5 names those of all that
# do not name their own.
set -euo pipefail
cd "$(dirname "$0")/.."
# The copy at the place where people and forges look for it.
cmp LICENSE LICENSES/Apache-2.0.txt
if ! said=$(reuse lint 2>&1); then
    printf '%s\n' "$said" >&2
    exit 1
fi
