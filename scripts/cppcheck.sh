#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Says what cppcheck finds in what ships; scripts/cppcheck.supp has what it takes for a fault and is none.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/lib.sh
# The macros as their users see them: cppcheck does not know where a device's are.
cppcheck -j "$(jobs_here)" --quiet --error-exitcode=1 --std=c++17 --language=c++ \
    --enable=warning,performance,portability --suppressions-list=scripts/cppcheck.supp \
    '-DDECLARE_META_INTERFACE(NAME)=' '-DIMPLEMENT_META_INTERFACE(NAME,TEXT)=' -I. -Iplatform/host \
    --template='{file}:{line}: {severity}: {id}: {message}' "${SHIPPED[@]}"
