#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# usage: gate.sh [--accept]. Builds what bench/gate.txt has figures of, counts what each operation needs
# outside of the kernel, and compares: see compare.py. What was measured stays in build/gate.txt.
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/lib.sh

if [ $# -gt 0 ] && [ "$*" != --accept ]; then
    echo "usage: ./dev bench --gate [--accept]" >&2
    exit 2
fi
need_packages speak build bench arm
build_preset bench --target gate_peer gate_counter
build_preset arm --target gate_peer
counter=build/bench/bench/gate/libgate_counter.so
{
    scripts/gate/measure.py x86-64 build/bench "$counter"
    scripts/gate/measure.py arm build/arm "$counter"
} >build/gate.txt
scripts/gate/compare.py "$@" bench/gate.txt build/gate.txt
