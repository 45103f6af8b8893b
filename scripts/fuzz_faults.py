#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Plants faults, one at a time, and sees whether the fuzz targets find them.

They stand in fuzz/faults.py as (target, file, text, replacement, what it breaks). Everything happens
in a private copy of the tree under build/fuzz-faults. A target that finds nothing proves something
only if it is known to find what is there, so each target has a fault. A find counts if the input that
is kept of it fails with the fault, and does not without.
"""
import argparse
import ast
import os
import pathlib
import re
import subprocess
import sys
import time

from mutants import ROOT, Trouble, copy_tree

WORK = ROOT / "build" / "fuzz-faults"
TREE = WORK / "tree"
BUILD = TREE / "build" / "fuzz"
LIMITS = ["-timeout=10", "-rss_limit_mb=1024"]


def load_faults():
    faults = ast.literal_eval((ROOT / "fuzz" / "faults.py").read_text())
    for target, file, before, after, what in faults:
        found = (ROOT / file).read_text().count(before) if (ROOT / file).is_file() else 0
        if found != 1 or before == after:
            raise Trouble(f"{file}: {what}: the text to replace is there {found} times")
    return faults


def require_fault_each(faults, targets):
    planted = {fault[0] for fault in faults}
    if targets != planted:
        raise Trouble("without a planted fault: " + (", ".join(sorted(targets - planted)) or "none")
                      + "; not a target: " + (", ".join(sorted(planted - targets)) or "none"))


def declared_targets():
    """As the sources name them, for a tree that is configured without targets."""
    listings = "".join(path.read_text() for path in ROOT.glob("fuzz/*/CMakeLists.txt"))
    return set(re.findall(r"voxtrel_fuzz\(\s*(\w+)", listings))


def built_programs():
    """By target, as CMake makes them."""
    programs = (BUILD / "fuzz" / "targets").read_text().split()
    return {pathlib.Path(program).name: program for program in programs}


def run(command):
    # What the tree itself has compiled, the copy finds in the cache.
    environment = {**os.environ, "CCACHE_BASEDIR": str(TREE)}
    return subprocess.run(command, cwd=TREE, env=environment, capture_output=True, text=True,
                          errors="replace")


def build(target):
    done = run(["cmake", "--build", BUILD, "--target", target])
    if done.returncode != 0:
        raise Trouble(f"{target} does not build\n{done.stdout[-4000:]}")


def fuzz(target, program, seconds):
    """Returns the input that was found, or None, and what to say of the search."""
    for old in WORK.glob(f"{target}.*"):
        old.unlink()
    began = time.monotonic()
    done = run([program, "-seed=1", f"-max_total_time={seconds}", "-print_final_stats=1", *LIMITS,
                f"-artifact_prefix={WORK}/{target}.", f"{program}.corpus"])
    took = time.monotonic() - began
    (WORK / f"{target}.log").write_text(done.stderr)
    runs = re.findall(r"stat::number_of_executed_units: *(\d+)", done.stderr)
    inputs = [path for path in WORK.glob(f"{target}.*") if path.suffix != ".log"]
    return (inputs[0] if inputs else None), f"{runs[-1] if runs else '?'} runs, {took:.1f} s"


def try_fault(fault, program, seconds):
    target, file, before, after, what = fault
    path = TREE / file
    original = path.read_text()
    path.write_text(original.replace(before, after))
    try:
        build(target)
        found, search = fuzz(target, program, seconds)
    finally:
        path.write_text(original)
    if found is not None:
        build(target)
        if run([program, *LIMITS, found]).returncode != 0:
            found, search = None, f"{found} fails without the fault as well; {search}"
    print(f"{target:16} {what}: {'found' if found else 'NOT FOUND'} ({search})", flush=True)
    return found is not None


def prove(faults, seconds, wanted):
    copy_tree(TREE)
    configured = run(["cmake", "--preset", "fuzz"])
    if configured.returncode != 0:
        raise Trouble(configured.stdout[-2000:] + configured.stderr[-2000:])
    programs = built_programs()
    require_fault_each(faults, set(programs))
    unknown = set(wanted) - set(programs)
    if unknown:
        raise Trouble("no fuzz target " + ", ".join(sorted(unknown)))
    return [try_fault(fault, programs[fault[0]], seconds)
            for fault in faults if not wanted or fault[0] in wanted]


def main():
    parser = argparse.ArgumentParser(prog="./dev fuzz --prove", description=__doc__.split("\n\n")[0])
    parser.add_argument("--seconds", type=int, default=60, help="for each fault (default: 60)")
    parser.add_argument("--list", action="store_true", help="only check the table")
    parser.add_argument("target", nargs="*", help="only the faults of these targets")
    options = parser.parse_args()
    try:
        faults = load_faults()
        require_fault_each(faults, declared_targets())
        if options.list:
            for target, file, _, _, what in faults:
                print(f"{target:16} {file}: {what}")
            return 0
        found = prove(faults, options.seconds, options.target)
    except Trouble as trouble:
        print(f"fuzz: {trouble}", file=sys.stderr)
        return 2
    print(f"{sum(found)} of {len(found)} planted faults found")
    return 0 if found and all(found) else 1


if __name__ == "__main__":
    sys.exit(main())
