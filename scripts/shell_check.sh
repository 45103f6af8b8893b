#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Says what shellcheck finds in our scripts; its remarks on style are left out.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t scripts < <(git grep -lE '^#!.*[/ ](ba)?sh$')
[ ${#scripts[@]} -gt 0 ] || { echo "shell_check: there are no scripts" >&2; exit 1; }
shellcheck --severity warning --format gcc "${scripts[@]}"
