#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Seeds small faults into library and stand-in, one at a time; sees whether the unit tests notice.

The faults stand in tests/mutants/<room>.py as tables of (file, text, replacement, what it breaks).
Everything happens in private copies of the tree under build/mutants; a fault whose text is no
longer in its file, or which does not compile, is an error of the table and fails the run. A fault
that no test can notice, because behaviour stays the same, carries the reason as a fifth entry.
"""
import argparse
import ast
import os
import pathlib
import queue
import re
import subprocess
import sys
import threading
import time
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
# The test programs that a room's faults may show in, nearest first.
PROGRAMS = {
    "vocabulary": ["vocabulary_test", "profile_test"],
    "ipc": ["ipc_test"],
    "profile": ["profile_test"],
    "client": ["client_test"],
    "kernel": ["kernel_test"],
    "binder": ["platform_test", "kernel_test"],
}
# Where running all of a program takes minutes: what is quick, and in one process.
FILTERS = {
    "platform_test": "AParcel.*:ABinderInAParcel.*:BytesThatLookLikeABinder.*:ReadingPastTheEnd.*:ALink.*"
                     ":AProxyOfANode.*:TheRegistry.*:ALocalBinder.*:AProxy.*:AnImplementation.*"
                     ":AnInterface.*:AsInterface.*:ARequestToAForeignManager.*:ARequestOfAForeignClient.*",
}


class Trouble(Exception):
    """The copies cannot be built, or the tests fail without any fault."""


@dataclass
class Fault:
    number: int
    file: str
    before: str
    after: str
    what: str
    equivalent: str = ""

    @property
    def room(self):
        folders = self.file.split("/")
        return folders[2] if folders[0] == "platform" else folders[0]


def load_faults():
    faults = []
    for table in sorted((ROOT / "tests" / "mutants").glob("*.py")):
        for row in ast.literal_eval(table.read_text()):
            faults.append(Fault(len(faults) + 1, *row))
    return faults


def table_errors(faults):
    for fault in faults:
        path = ROOT / fault.file
        found = path.read_text().count(fault.before) if path.is_file() else 0
        if found != 1:
            yield f"{fault.file}: {fault.what}: the text to replace is there {found} times"
        if fault.before == fault.after or fault.room not in PROGRAMS:
            yield f"{fault.file}: {fault.what}: changes nothing in the library"


def tree_files():
    listed = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT, check=True, capture_output=True).stdout.decode()
    return [name for name in listed.split("\0") if name and (ROOT / name).is_file()]


def copy_tree(tree):
    """Makes `tree` a copy of this one; what is the same there keeps its time. What git ignores, such
    as builds, is left alone."""
    wanted = set(tree_files())
    for old in tree.rglob("*"):
        name = str(old.relative_to(tree))
        if old.is_file() and name not in wanted and not name.startswith("build/"):
            old.unlink()
    for name in wanted:
        source, copy = ROOT / name, tree / name
        if not copy.is_file() or copy.read_bytes() != source.read_bytes():
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes(source.read_bytes())
            copy.chmod(source.stat().st_mode)


class Workshop:
    """A private copy of the tree, its build, and what its tests need when nothing is wrong."""

    def __init__(self, number):
        self.tree = WORK / str(number) / "tree"
        self.build = WORK / str(number) / "build"
        self.seconds = {}
        # What one copy has compiled, the next finds in the cache in spite of its other folder.
        self.environment = {**os.environ, "CCACHE_BASEDIR": str(WORK / str(number))}

    def prepare(self, programs):
        copy_tree(self.tree)
        cache = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
                 "-DVOXTREL_BUILD_PROGRAMS=OFF"]
        self._run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", *cache])
        self._run(["cmake", "--build", self.build, "--target", *programs])
        for program in programs:
            started = time.monotonic()
            failed = self._test(program, timeout=600)
            self.seconds[program] = time.monotonic() - started
            if failed:
                raise Trouble(f"{program} fails without any fault: {failed}")

    def try_fault(self, fault):
        """Returns the test that notices the fault, "" if none does, or None if it does not build."""
        path = self.tree / fault.file
        original = path.read_text()
        path.write_text(original.replace(fault.before, fault.after))
        try:
            for program in PROGRAMS[fault.room]:
                built = self._build(program)
                failed = built and self._test(program, 30 + 10 * self.seconds[program])
                if failed or not built:
                    return failed or None
            return ""
        finally:
            path.write_text(original)

    def _build(self, program):
        return subprocess.run(["cmake", "--build", self.build, "-j1", "--target", program],
                              capture_output=True, env=self.environment).returncode == 0

    def _test(self, program, timeout):
        """Runs one test program; returns the first test that fails in it, or ""."""
        (executable,) = self.build.glob(f"tests/*/{program}")
        try:
            command = [executable, "--gtest_fail_fast", "--gtest_filter=" + FILTERS.get(program, "*")]
            run = subprocess.run(command, cwd=self.build, timeout=timeout,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        except subprocess.TimeoutExpired as late:
            return last_test(late.stdout or b"") + " (hangs)"
        if run.returncode == 0:
            return ""
        return last_test(run.stdout) + ("" if run.returncode == 1 else " (crashes)")

    def _run(self, command):
        done = subprocess.run(command, capture_output=True, text=True, env=self.environment)
        if done.returncode != 0:
            raise Trouble(f"{command[0]} failed\n{done.stdout[-4000:]}{done.stderr[-4000:]}")


def last_test(output):
    names = re.findall(rb"^\[ (?:RUN     |  FAILED ) \] ([\w/.]+)", output, re.MULTILINE)
    failed = re.findall(rb"^\[  FAILED  \] ([\w/.]+)", output, re.MULTILINE)
    name = failed[0] if failed else names[-1] if names else b"before any test"
    return name.decode()


class Tally:
    def __init__(self, total):
        self.total = total
        self.lock = threading.Lock()
        self.counts = {"killed": 0, "survived": 0, "equivalent": 0, "broken": 0, "stale reason": 0}

    def add(self, fault, noticed_by, seconds):
        if noticed_by is None:
            verdict, detail = "broken", "does not build"
        elif noticed_by:
            verdict = "stale reason" if fault.equivalent else "killed"
            detail = noticed_by
        else:
            verdict = "equivalent" if fault.equivalent else "survived"
            detail = fault.equivalent or "no test notices"
        with self.lock:
            self.counts[verdict] += 1
            done = sum(self.counts.values())
            print(f"[{done:3}/{self.total}] {verdict:10} #{fault.number} {fault.file}: {fault.what} "
                  f"-- {detail} ({seconds:.1f} s)", flush=True)

    def close(self):
        if sum(self.counts.values()) != self.total:
            print("stopped early: not every fault was tried")
            return 2
        killed, survived = self.counts["killed"], self.counts["survived"]
        print(f"\n{self.total} faults: {killed} killed, {survived} survived, "
              f"{self.counts['equivalent']} equivalent (explained above)")
        table = self.counts["broken"] + self.counts["stale reason"]
        if table:
            print(f"{table} faults of the table are no good: see above")
        return 0 if survived == 0 and table == 0 and killed > 0 else 1


def work_through(workshop, faults, tally):
    while True:
        try:
            fault = faults.get_nowait()
        except queue.Empty:
            return
        started = time.monotonic()
        tally.add(fault, workshop.try_fault(fault), time.monotonic() - started)


def try_all(faults, jobs):
    programs = sorted({program for f in faults for program in PROGRAMS[f.room]})
    jobs = min(jobs, len(faults))
    print(f"{len(faults)} faults; building {jobs} copies of {', '.join(programs)}", flush=True)
    workshops = [Workshop(number) for number in range(jobs)]
    for workshop in workshops:
        workshop.prepare(programs)
    waiting = queue.Queue()
    for fault in faults:
        waiting.put(fault)
    tally = Tally(len(faults))
    threads = [threading.Thread(target=work_through, args=(workshop, waiting, tally))
               for workshop in workshops]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return tally.close()


def part_of(text):
    match = re.fullmatch(r"(\d+)/(\d+)", text)
    part, parts = (int(number) for number in match.groups()) if match else (0, 0)
    if not 1 <= part <= parts:
        raise argparse.ArgumentTypeError(f"'{text}' is no I/N with I from 1 to N")
    return part, parts


def arguments():
    parser = argparse.ArgumentParser(prog="./dev mutants", description=__doc__.split("\n\n")[0])
    parser.add_argument("-l", "--list", action="store_true", help="print the faults and stop")
    parser.add_argument("-r", "--room", choices=PROGRAMS, action="append", help="faults of this room")
    parser.add_argument("-o", "--only", metavar="TEXT", help="faults whose file or effect has TEXT")
    parser.add_argument("-s", "--slice", metavar="I/N", default="1/1", type=part_of,
                        help="the I-th of N parts of the list, for several short runs")
    parser.add_argument("-j", "--jobs", type=int, default=min(2, os.cpu_count() or 1),
                        help="copies of the tree that work side by side (default: %(default)s)")
    return parser.parse_args()


def chosen(faults, options):
    part, parts = options.slice
    picked = [f for f in faults
              if (not options.room or f.room in options.room)
              and (not options.only or options.only in f.file + ": " + f.what)]
    return [f for i, f in enumerate(picked) if i * parts // len(picked) == part - 1]


def main():
    options = arguments()
    faults = load_faults()
    errors = list(table_errors(faults))
    if errors:
        print("\n".join(errors), file=sys.stderr)
        return 2
    faults = chosen(faults, options)
    if options.list or not faults:
        print("\n".join(f"#{f.number} {f.file}: {f.what}" for f in faults) or "no such fault")
        return 0 if faults else 2
    try:
        return try_all(faults, options.jobs)
    except Trouble as trouble:
        print(f"mutants: {trouble}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
