#!/usr/bin/env bash
# Says which files have no licence or copyright that can be found. Sources and scripts name their licence;
# .reuse/dep5 has the copyright, and the licence of what cannot name it, for each kind of file that is ours, so
# that one of another kind is seen.
set -euo pipefail
cd "$(dirname "$0")/.."
# The copy at the place where people and forges look for it.
cmp LICENSE LICENSES/Apache-2.0.txt
unnamed=$(git ls-files -- '*.c' '*.cpp' '*.h' '*.py' '*.sh' '*.bash' '*.cmake' '*CMakeLists.txt' dev .ci/run | xargs -r grep -L 'SPDX-License-Identifier' || true)
if [ -n "$unnamed" ]; then
    printf 'no licence is named in %s\n' $unnamed >&2
    exit 1
fi
if ! said=$(reuse lint 2>&1); then
    printf '%s\n' "$said" >&2
    exit 1
fi
