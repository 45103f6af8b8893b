#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs many GoogleTest tests in one process and still accounts for each of them.

usage: grouped_tests.py run JOURNAL SECONDS FILTER PROGRAM...
           Runs the tests of PROGRAM that FILTER selects. Prints what failing tests print. The exit
           status is 0 when each of them has passed and the program has ended well.
       grouped_tests.py count FOLDER
           Prints the sums over all journals of FOLDER, "groups failed-groups passed failed", and
           below it a line for each failure.

A journal has a line for each event, written when it happens, so that it tells the truth about a run
that is killed in the middle too.
"""
import pathlib
import re
import subprocess
import sys
import threading

# Anywhere in a line: what was printed before it may have had no line end.
START = re.compile(r"\[ RUN      \] (\S+)$")
END = re.compile(r"\[ +(OK|FAILED|SKIPPED) +\] ([^\s,]+)(?:, where .*)? \(\d+ ms\)$")

# Whatever the environment asks of GoogleTest, the lines above are printed.
FORM = ["--gtest_color=no", "--gtest_brief=0", "--gtest_print_time=1"]


class Journal:
    """planned, started, passed, failed with a test's name; stopped, ended with what happened."""

    def __init__(self, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self.file = path.open("w", buffering=1)

    def note(self, what, value):
        self.file.write(f"{what} {value}\n")


class Outcome:
    """What a journal says. `failures` names each test that has not passed."""

    def __init__(self, path):
        said = {"planned": [], "started": [], "passed": [], "failed": [], "stopped": [],
                "ended": []}
        for line in path.read_text(errors="replace").splitlines():
            what, _, value = line.partition(" ")
            said.setdefault(what, []).append(value)
        name = path.stem
        passed = set(said["passed"]) - set(said["failed"])
        reported = passed | set(said["failed"])
        self.passed = len(passed & set(said["planned"]))
        self.failures = [f"{name}:{test}: failed" for test in dict.fromkeys(said["failed"])]
        for test in said["planned"]:
            if test not in reported:
                why = "did not end" if test in said["started"] else "was not run"
                why += " ".join(["", *said["stopped"]])
                self.failures.append(f"{name}:{test}: {why}")
        if not said["planned"]:
            self.failures.append(f"{name}: has no test")
        elif not self.failures and said["ended"] != ["0"]:
            status = said["ended"][0] if said["ended"] else "none"
            self.failures.append(f"{name}: exit status {status} after its last test")


def tests_of(program, selection):
    listed = subprocess.run([*program, "--gtest_list_tests", selection], stdout=subprocess.PIPE,
                            text=True, check=True, timeout=60)
    return listed_tests(listed.stdout.splitlines())


def listed_tests(lines):
    """The names in what --gtest_list_tests prints."""
    tests, suite = [], ""
    for line in lines:
        name = line.split("#")[0].rstrip()
        if re.fullmatch(r"\S+\.", name):
            suite = name
        elif re.fullmatch(r"  \S+", name) and suite:
            tests.append(suite + name.strip())
    return tests


def follow(output, journal):
    """Journals the results in `output`; passes on what no passed test has printed."""
    held = []  # of the test that runs
    is_inside = False
    for line in output:
        start, end = START.search(line.rstrip()), END.search(line.rstrip())
        if is_inside or start:
            held.append(line)
        elif line.strip() and not line.startswith("[-"):  # what GoogleTest says about suites
            sys.stdout.write(line)
        if start:
            journal.note("started", start[1])
            is_inside = True
        elif end:
            journal.note("passed" if end[1] == "OK" else "failed", end[2])
            if end[1] != "OK":
                sys.stdout.writelines(held)
            held, is_inside = [], False
    sys.stdout.writelines(held)
    sys.stdout.flush()


def run(path, seconds, selection, program):
    journal = Journal(path)
    selection = "--gtest_filter=" + selection
    for test in tests_of(program, selection):
        journal.note("planned", test)
    child = subprocess.Popen([*program, selection, *FORM], stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, text=True, errors="replace")

    def stop():
        journal.note("stopped", f"(stopped after {seconds:g} s)")
        child.kill()

    limit = threading.Timer(seconds, stop)
    limit.start()
    follow(child.stdout, journal)
    journal.note("ended", child.wait())
    limit.cancel()
    outcome = Outcome(path)
    for failure in outcome.failures:
        print(failure)
    print(f"{path.stem}: {outcome.passed} passed, {len(outcome.failures)} failed")
    return 1 if outcome.failures else 0


def count(folder):
    outcomes = [Outcome(path) for path in sorted(folder.glob("*.journal"))]
    failures = [failure for outcome in outcomes for failure in outcome.failures]
    failed_groups = sum(1 for outcome in outcomes if outcome.failures)
    print(len(outcomes), failed_groups, sum(outcome.passed for outcome in outcomes), len(failures))
    for failure in failures:
        print(failure)
    return 0


def main(arguments):
    if len(arguments) >= 5 and arguments[0] == "run":
        return run(pathlib.Path(arguments[1]), float(arguments[2]), arguments[3], arguments[4:])
    if len(arguments) == 2 and arguments[0] == "count":
        return count(pathlib.Path(arguments[1]))
    sys.exit(__doc__)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
