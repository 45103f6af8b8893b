# SPDX-License-Identifier: Apache-2.0
"""What must hold of a process that has ended, and of what it has said."""
import re
import signal
import subprocess

from world import HANG, Broken

MOST_LINES = 12  # of a service or a manager in one life
# Lines that say how a search goes, on a machine that is slow.
PROGRESS = re.compile(r"looking for the service|waiting for up to|loads its voices")


def end_in_time(process, name, signals=True):
    """Ends a process in order. @return its status."""
    if process.poll() is None and signals:
        process.send_signal(signal.SIGTERM)
    try:
        return process.wait(HANG)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        raise Broken(f"{name} hangs at its end") from None


def check_end(name, status, text):
    if status not in (0, 1):
        raise Broken(f"{name} has ended with {status}: {text.strip()[-300:]}")
    if "terminate called" in text or "Assertion" in text:
        raise Broken(f"{name}: {text.strip()[-300:]}")


def lines_of(text):
    """Without progress. What begins with a status is how it has ended, whatever it says."""
    return [line for line in text.splitlines()
            if line and (re.match(r"voxtrelctl: -?\d", line) or not PROGRESS.search(line))]


def check_lines(status, text, point):
    """Who leaves with 1 says why, and nobody says the same again and again, unless it lasts: then
    the log limits itself to so many lines a second."""
    lines = [line for line in text.splitlines() if line]
    if status == 1 and not lines:
        raise Broken("status 1 without a line")
    if len(lines) > MOST_LINES and point.times == 1:
        raise Broken(f"{len(lines)} lines: {text[:600]!r}")
