#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: man_pages.sh SOURCE_DIR
# Each program, and the policy, has a man page, in which neither formatter finds anything amiss.
set -euo pipefail
cd "$1"
for page in tools/voxtrelctl.1 service/voxtreld.1 \
    platform/host/servicemanager/voxtrel-servicemanager.1 service/voxtreld-policy.5 \
    platform/check/voxtrel-platform-check.1; do
    mandoc -T lint "$page"
    complaints=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
    [ -z "$complaints" ] || { echo "$page: $complaints"; exit 1; }
done
