#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Prints the objects of the preset board_arm whose sources the preset arm does not compile.

With these and the preset arm, every source of ours has been compiled for 32-bit ARM; one that is in
neither, and not among what no ARM device runs, is an error. Both presets must have been configured.
"""
import json
import pathlib
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ELSEWHERE = {
    "bench/": "measures on the developer's machine and the x86 board",
    "examples/": "stands outside of this build; scripts/arm_sources.sh compiles it",
    "fuzz/": "needs clang's libFuzzer, which Debian's cross compiler has not",
    "tests/house/": "looks at the sources, and builds packages of this machine",
}
# Code behind VOXTREL_SYSTEMD, which the cross builds are without.
ELSEWHERE_FILES = {"tests/servicemanager/activation_test.cpp"}


def compiled(preset):
    """The objects of each source that the preset compiles."""
    listed = json.loads((ROOT / "build" / preset / "compile_commands.json").read_text())
    objects = {}
    for entry in listed:
        words = shlex.split(entry["command"])
        source = pathlib.Path(entry["file"]).resolve()
        objects.setdefault(source, []).append(words[words.index("-o") + 1])
    return objects


def own_sources():
    listed = subprocess.run(["git", "ls-files", "*.cpp", "*.c"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    return [name for name in listed
            if not name.startswith(tuple(ELSEWHERE)) and name not in ELSEWHERE_FILES]


def main():
    arm, board = compiled("arm"), compiled("board_arm")
    missing = [name for name in own_sources() if ROOT / name not in arm | board]
    if missing:
        print("these are not compiled for 32-bit ARM: " + ", ".join(missing), file=sys.stderr)
        return 1
    print("\n".join(name for source in board.keys() - arm.keys() for name in board[source]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
