#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What an emulated board's console tells of the tests that ran there (see parts.sh).

usage: results.py CONSOLE FOLDER PART...
           Writes the files that came over the console to FOLDER, and a journal for each PART to
           FOLDER/journals. Prints what failing tests have printed. A PART is a program of GoogleTest,
           if the console has a "list of PART", or else a script of checks (see checks.sh).
"""
import base64
import binascii
import contextlib
import io
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
from grouped_tests import Journal, Outcome, follow, listed_tests  # noqa: E402

COMPLAINT = re.compile(r"\b(WARNING: CPU|BUG: (?!soft lockup)|kernel BUG|Oops|KASAN|general protection)")


class Console:
    """`parts`: each one's lines; `ends`: how long each took and its exit status, of those that
    ended; `files`."""

    def __init__(self, text):
        self.parts, self.ends, self.files = {}, {}, {}
        self.is_off = False
        part, file = "", None
        for line in text.splitlines():
            mark, _, rest = line.partition(" ") if line.startswith("#board") else ("", "", "")
            word, _, value = rest.partition(" ")
            if mark and word == "begin":
                part = value
                self.parts[part] = []
            elif mark and word == "end":
                ended = re.search(r" after (\d+) s with (\d+)$", value)
                if ended:
                    self.ends[part] = ended.groups()
                part = ""
            elif mark and word == "file":
                file = None if value == "end" else value
                if file:
                    self.files[file] = []
            elif mark and word == "off":
                self.is_off = True
            elif file:
                self.files[file].append(line)
            elif part:
                self.parts[part].append(line + "\n")


def journal_checks(lines, journal):
    """A script of checks says itself what it planned and how it went."""
    words = {"plan": "planned", "run": "started", "ok": "passed", "not ok": "failed"}
    held = []
    for line in lines:
        said = re.match(r"(plan|run|ok|not ok) (.*)$", line)
        if said:
            journal.note(words[said[1]], said[2])
            if said[1] == "not ok":
                sys.stdout.writelines(held)
            held = []
        else:
            held.append(line)
    sys.stdout.writelines(held)


def journal_part(console, part, path):
    journal, said = Journal(path), io.StringIO()
    seconds, status = console.ends.get(part, ("?", "missing"))
    with contextlib.redirect_stdout(said):
        write_journal(console, part, journal)
    journal.note("ended", status)
    outcome = Outcome(path)
    if outcome.failures:
        sys.stdout.write(said.getvalue())
    print(f"{part}: {outcome.passed} passed, {len(outcome.failures)} failed ({seconds} s)")


def write_journal(console, part, journal):
    listing = console.parts.get("list of " + part)
    if listing is None:
        journal_checks(console.parts.get(part, []), journal)
    else:
        for test in listed_tests(line.rstrip("\n") for line in listing):
            journal.note("planned", test)
        follow(console.parts.get(part, []), journal)


def journal_machine(console, path):
    """That it came to its end, and that the kernel saw nothing wrong with what was done to it."""
    journal = Journal(path)
    complaints = [line for line in console.parts.get("dmesg", []) if COMPLAINT.search(line)]
    _, status = console.ends.get("dmesg", ("?", "missing"))
    is_content = status == "0" and not complaints
    for what, is_well in (("TurnsItselfOff", console.is_off),
                          ("HasAKernelThatDoesNotComplain", is_content)):
        journal.note("planned", what)
        journal.note("passed" if is_well else "failed", what)
    sys.stdout.writelines(complaints)
    journal.note("ended", 0)


def write_files(console, folder):
    for name, lines in console.files.items():
        try:
            (folder / pathlib.Path(name).name).write_bytes(base64.b64decode("".join(lines), validate=True))
        except binascii.Error as error:
            print(f"{name}: {error}")


def main(arguments):
    if len(arguments) < 3:
        sys.exit(__doc__)
    console = Console(pathlib.Path(arguments[0]).read_text(errors="replace"))
    folder = pathlib.Path(arguments[1])
    folder.mkdir(parents=True, exist_ok=True)
    write_files(console, folder)
    for part in arguments[2:]:
        journal_part(console, part, folder / "journals" / (part + ".journal"))
    journal_machine(console, folder / "journals" / "board.journal")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
