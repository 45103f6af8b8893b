#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""usage: compare.py [--accept] ACCEPTED MEASURED: fails when an operation needs 3 % more instructions
than the table ACCEPTED (bench/gate.txt) has for it, or one more system call, or when the two do not have
the same figures. Closes with 'N passed, N failed', one for each figure. --accept writes what was
measured into ACCEPTED."""

import pathlib
import re
import sys

TOLERANCE_PERCENT = 3
FORM = "{:<24}{:<12}{:>14}{:>14}"

ADVICE = """
Mend what makes an operation cost more. If it has to, run ./dev bench --gate --accept, and say in the
commit why it has to."""
GAIN = """
Some operations cost less than was accepted. ./dev bench --gate --accept keeps the gain."""


def read(path):
    """(instructions, system calls) by (figure, architecture)."""
    figures = {}
    for line in pathlib.Path(path).read_text().splitlines():
        if line and not line.startswith("#"):
            name, architecture, instructions, calls = re.split(r"\s{2,}", line.strip())
            if (name, architecture) in figures:
                raise ValueError(f"{path} has '{name}' of {architecture} twice")
            figures[name, architecture] = (int(instructions), int(calls))
    return figures


def judge(measured, accepted):
    """What is wrong with a figure, and what is better than accepted; either may be empty."""
    if accepted is None:
        return "not in the accepted table", ""
    if measured is None:
        return "not measured", ""
    worse, better = [], []
    instructions, calls = measured
    percent = 100 * (instructions - accepted[0]) / accepted[0]
    if 100 * (instructions - accepted[0]) >= TOLERANCE_PERCENT * accepted[0]:
        worse.append(f"{percent:+.1f} % of {accepted[0]} instructions")
    elif 100 * (accepted[0] - instructions) >= TOLERANCE_PERCENT * accepted[0]:
        better.append(f"{percent:+.1f} % of {accepted[0]} instructions")
    if calls != accepted[1]:
        where = worse if calls > accepted[1] else better
        where.append(f"{calls - accepted[1]:+d} to {accepted[1]} system calls")
    return ", ".join(worse), ", ".join(better)


def compare(accepted, measured):
    """Prints the table, and returns how many of its figures are wrong."""
    failed = 0
    gained = False
    print(FORM.format("# figure", "architecture", "instructions", "system calls"))
    for key in dict.fromkeys([*accepted, *measured]):
        worse, better = judge(measured.get(key), accepted.get(key))
        line = FORM.format(*key, *measured.get(key, ("-", "-")))
        verdict = f"  FAILED: {worse}" if worse else ""
        print(line + verdict + (f"  less: {better}" if better else ""))
        failed += bool(worse)
        gained |= bool(better)
    if failed:
        print(ADVICE)
    if gained:
        print(GAIN)
    print(f"{len(accepted.keys() | measured.keys()) - failed} passed, {failed} failed")
    return failed


def accept(path, measured):
    """Writes what was measured below the comment at the table's head."""
    head = [line for line in pathlib.Path(path).read_text().splitlines() if line.startswith("#")]
    lines = [FORM.format(*key, *counts) for key, counts in measured.items()]
    pathlib.Path(path).write_text("\n".join(head + lines) + "\n")


def main(arguments):
    accepting = arguments[:1] == ["--accept"]
    paths = arguments[accepting:]
    if len(paths) != 2:
        sys.exit(__doc__)
    measured = read(paths[1])
    if not measured:
        sys.exit("gate: nothing was measured")
    if accepting:
        accept(paths[0], measured)
    sys.exit(1 if compare(read(paths[0]), measured) else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
