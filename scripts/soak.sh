#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: soak.sh BUILD_DIR [MINUTES] [SEED]. Runs the soak in both manners of the stand-in, one after
# the other, each for so long.
set -euo pipefail
build=$1
seconds=$((${2:-2} * 60))
export VOXTREL_BINDER_SEED=${3:-$RANDOM}
status=0
for manners in "" driver; do
    VOXTREL_BINDER_MANNERS=$manners "$build/tests/soak/voxtrel_soak" "$seconds" "$VOXTREL_BINDER_SEED" || status=1
done
exit "$status"
