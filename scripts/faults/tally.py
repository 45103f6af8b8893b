# SPDX-License-Identifier: Apache-2.0
"""What was tried, and what became of it."""
import threading

# Libraries that end a process where they get no memory or thread: the library that makes the call, for
# which function of ours, and what is seen of it.
LIMITS = [("libespeak-ng", "", " -11:"), ("", "", "libespeak-ng/fifo.c"), ("libpulse", "", "Not enough memory"),
          ("libc.so", "ownerName", "has ended with -")]


class Tally:
    def __init__(self):
        self.lock = threading.Lock()
        self.tried = {}
        self.passed = 0
        self.unmet = {}  # scenario: how many points
        self.failures = []

    def note(self, scenario, point, why, stack, met):
        foreign = why is not None and is_known(why, stack)
        with self.lock:
            key = (scenario.name, point.call)
            tried, failed, known = self.tried.get(key, (0, 0, 0))
            self.tried[key] = (tried + 1, failed + (why is not None and not foreign), known + foreign)
            self.passed += met and why is None
            self.unmet[scenario.name] = self.unmet.get(scenario.name, 0) + (not met)
            if why is not None and not foreign:
                self.failures.append((scenario.name, point, why))
            if why is not None:
                known = "a known limit: " if foreign else ""
                print(f"{scenario.name}: {point}: {known}{why}", *("    " + line for line in stack),
                      sep="\n", flush=True)

    def print(self, total):
        width = max((len(name) for name, _ in self.tried), default=0)
        for (name, call), (tried, failed, known) in sorted(self.tried.items()):
            limit = f"{known:6} known limits" if known else ""
            print(f"{name:{width}}  {call:15}{tried:6} points{failed:6} failures{limit}")
        tried = sum(counts[0] for counts in self.tried.values())
        known = sum(counts[2] for counts in self.tried.values())
        for name, count in sorted(self.unmet.items()):
            if count:
                print(f"{name}: in {count} of {self.tried_of(name)} points the call was not made")
        print(f"{tried} of {total} points; in {sum(self.unmet.values())} the call was not made this time; in {known} a "
              "library that is not ours ended the process")
        print(f"{self.passed} passed, {len(self.failures)} failed")
        return tried

    def tried_of(self, name):
        return sum(counts[0] for (other, _), counts in self.tried.items() if other == name)

    def has_missed_many(self):
        """Threads differ from run to run, but not so much. One program's misses are not to hide
        among the points of all others."""
        tried = sum(counts[0] for counts in self.tried.values())
        return 10 * sum(self.unmet.values()) > tried or \
            any(count > 2 and 2 * count > self.tried_of(name) for name, count in self.unmet.items())


def is_known(why, stack):
    """Whether the process was ended by a library that is not ours."""
    callers = [line for line in stack if not line.startswith(("libstdc++.so", "ld-linux"))]
    nearest = callers[:1] + [line for line in callers if not line.startswith("libc.so")][:1] + [""]
    return any(seen in why and any(line.startswith(library) for line in nearest)
               and any(function in line for line in [*stack, ""])
               for library, function, seen in LIMITS)
