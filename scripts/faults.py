#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the n-th call of a kind fail, in one program at a time, and sees what becomes of everything.

A library of our own (tests/faults/injection.cpp) is preloaded into the program under test. A first
run counts its calls and where they come from; then the same is done once for each n that is to be
tried, with real processes around the program. What must hold each time:

  no crash, no uncaught exception, no hang; a program ends with status 0 or 1, with 1 after one
  line on standard error; what was acknowledged is there after a restart; a file is whole; each
  utterance has one end; the processes around the program live, and are served again.

The n are those whose call comes from a place (a stack) of its own; --all takes every n. With a
limit of time, or a number of points, each program's points are taken in steps of one size.
"""
import argparse
import concurrent.futures
import dataclasses
import errno
import os
import pathlib
import queue
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time

# Libraries that end a process where they get no memory or thread: the library that makes the call, for
# which function of ours, and what is seen of it.
LIMITS = [("libespeak-ng", "", " -11:"), ("", "", "libespeak-ng/fifo.c"), ("libpulse", "", "Not enough memory"),
          ("libc.so", "ownerName", "has ended with -")]
HANG = 120  # seconds; a machine may be busy
MOST_LINES = 12  # of a service or a manager in one life
PLACES_AT = 16 + 24 * 8 + 65536
RECORD_SIZE = PLACES_AT + 16 * (1 << 20)

# call: errors it may fail with
CALLS = {
    "malloc": ["ENOMEM"],
    "write": ["ENOSPC", "EINTR"],
    "read": ["EIO", "EINTR"],
    "open": ["EMFILE", "EACCES"],
    "send": ["ENOBUFS", "EINTR"],
    "sendmsg": ["ENOBUFS", "EINTR"],
    "recv": ["ENOMEM", "EINTR"],
    "recvmsg": ["ENOMEM", "EINTR"],
    "mmap": ["ENOMEM"],
    "fsync": ["EIO"],
    "fdatasync": ["EIO"],
    "ftruncate": ["ENOSPC"],
    "rename": ["ENOSPC"],
    "unlink": ["EIO"],
    "mkdir": ["ENOSPC"],
    "flock": ["ENOLCK", "EINTR"],
    "socket": ["EMFILE"],
    "socketpair": ["EMFILE"],
    "bind": ["ENOMEM"],
    "listen": ["ENOBUFS"],
    "connect": ["ECONNREFUSED", "EINTR"],
    "accept4": ["EMFILE", "ECONNABORTED"],
    "epoll_create1": ["EMFILE"],
    "epoll_ctl": ["ENOMEM"],
    "epoll_wait": ["EINTR"],
    "poll": ["EINTR", "ENOMEM"],
    "eventfd": ["EMFILE"],
    "signalfd": ["EMFILE"],
    "timerfd_create": ["EMFILE"],
    "memfd_create": ["EMFILE"],
    "pipe2": ["EMFILE"],
    "dup2": ["EBUSY"],
    "fork": ["EAGAIN"],
    "pthread_create": ["EAGAIN"],
    "sigtimedwait": ["EINTR"],
}
# The clock of the day, which jumps an hour each time that it is read: nothing may notice.
JUMPS = "clock"
# These are tried once more with every call from the n-th on failing: a disk that stays full, ...
LASTING = {"write": "ENOSPC", "open": "EMFILE", "socketpair": "EMFILE", "pthread_create": "EAGAIN",
           "memfd_create": "EMFILE"}

# Lines that say how a search goes, on a machine that is slow.
PROGRESS = re.compile(r"looking for the service|waiting for up to|loads its voices")


@dataclasses.dataclass(frozen=True)
class Point:
    call: str
    error: str
    at: int = 0
    times: int = 1

    @property
    def must_succeed(self):
        return self.at == 0 or self.call == JUMPS

    def __str__(self):
        how = "" if self.times == 1 else ", and all after it"
        return f"{self.call} {self.at} {self.error}{how}"


class Broken(Exception):
    """An invariant does not hold."""


class Record:
    def __init__(self, path):
        self.path = path

    def clear(self):
        with open(self.path, "wb") as file:
            file.truncate(RECORD_SIZE)

    def _head(self):
        with open(self.path, "rb") as file:
            return file.read(PLACES_AT)

    def calls(self):
        return struct.unpack_from("<I", self._head())[0]

    def failed(self):
        return struct.unpack_from("<I", self._head(), 4)[0]

    def places(self, call):
        """How often the call was made, and the n of each place that it came from."""
        count = min(self.calls(), 1 << 20)
        with open(self.path, "rb") as file:
            file.seek(PLACES_AT)
            made = struct.iter_unpack("<8sQ", file.read(16 * count))
        name = call.encode()[:8].ljust(8, b"\0")
        places = [place for other, place in made if other == name]
        first = {}
        for number, place in enumerate(places, 1):
            first.setdefault(place, number)
        return len(places), list(first.values())

    def stack(self):
        """Where the call was made, as lines of text."""
        head = self._head()
        count = struct.unpack_from("<I", head, 8)[0]
        frames = struct.unpack_from(f"<{count}Q", head, 16)
        text = head[16 + 24 * 8:].split(b"\0")[0].decode(errors="replace")
        bases, ranges = {}, []
        for line in text.splitlines():
            found = re.match(r"([0-9a-f]+)-([0-9a-f]+) \S+ ([0-9a-f]+) \S+ \d+\s+(/\S+)", line)
            if found:
                low, high, offset = (int(found[i], 16) for i in (1, 2, 3))
                bases.setdefault(found[4], low - offset)
                ranges.append((low, high, found[4]))
        lines = []
        for frame in frames:
            for low, high, name in ranges:
                if low <= frame < high and "fault_injection" not in name:
                    lines.append(place_of(name, frame - bases[name] - 1))
        return [line for line in lines if line]


def place_of(module, offset):
    if module.startswith(("/lib", "/usr/lib")):
        return f"{os.path.basename(module)}+{offset:x}"
    said = subprocess.run(["addr2line", "-Cfpe", module, hex(offset)], capture_output=True, text=True)
    return re.sub(r" at \S*/(\w[\w./-]*:\d+).*", r" (\1)", said.stdout.strip())[:160]


class World:
    """A folder, a service manager and a service of a worker's own, and what runs in it."""

    def __init__(self, build):
        self.build = build
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="faults."))
        self.record = Record(self.folder / "record")
        self.env = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(self.folder),
                    "XDG_RUNTIME_DIR": str(self.folder), "TMPDIR": str(self.folder),
                    "VOXTREL_BINDER_SOCKET": str(self.folder / "binder")}
        self.manager = None
        self.service = None
        self.speed = 300  # of a new profile

    def close(self):
        for process in (self.service, self.manager):
            if process is not None and process.poll() is None:
                process.kill()
                process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def program(self, name):
        return str(self.build / {
            "voxtreld": "service", "voxtrel-servicemanager": "platform/host", "voxtrelctl": "tools",
        }.get(name, "tests/faults") / name)

    def injected(self, name, point):
        self.record.clear()
        return {**self.env, "LD_PRELOAD": str(self.build / "tests/faults/libfault_injection.so"),
                "VOXTREL_FAULT_PROGRAM": name, "VOXTREL_FAULT_RECORD": str(self.record.path),
                "VOXTREL_FAULT_CALL": point.call, "VOXTREL_FAULT_AT": str(point.at),
                "VOXTREL_FAULT_TIMES": str(point.times),
                "VOXTREL_FAULT_ERRNO": str(getattr(errno, point.error))}

    def start(self, name, arguments, log, env):
        with open(self.folder / log, "wb") as file:
            return subprocess.Popen([self.program(name), *arguments], env=env, stdin=subprocess.DEVNULL,
                                    stdout=file, stderr=file, cwd=self.folder)

    def start_manager(self, env=None):
        self.manager = self.start("voxtrel-servicemanager", [], "manager.log", env or self.env)
        self.await_line(self.manager, "manager.log", "ready")

    def start_service(self, env=None):
        self.service = self.start(
            "voxtreld", ["--profile", str(self.folder / "voxtrel.ini"), "--sink", "none"],
            "service.log", env or self.env)

    def await_line(self, process, log, word):
        end = time.monotonic() + HANG
        while process.poll() is None and word not in self.text(log):
            if time.monotonic() > end:
                raise Broken(f"{log}: no line '{word}'")
            time.sleep(0.005)

    def text(self, log):
        return (self.folder / log).read_text(errors="replace")

    def ensure_peers(self):
        if self.manager is None or self.manager.poll() is not None:
            self.start_manager()
        if self.service is None or self.service.poll() is not None:
            self.start_service()
            self.check_served()

    def expect_peers(self, *processes):
        for process in processes:
            if process.poll() is not None:
                raise Broken(f"{os.path.basename(process.args[0])} beside it has ended with "
                             f"{process.returncode}")

    def run(self, name, arguments, env=None, given=None):
        """Runs a program to its end."""
        try:
            return subprocess.run([self.program(name), *arguments], env=env or self.env,
                                  input=given, capture_output=True, text=True, errors="replace",
                                  cwd=self.folder, timeout=HANG, stdin=None if given else subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            raise Broken(f"{name} hangs") from None

    def next_speed(self):
        self.speed = 200 + (self.speed - 199) % 500
        return self.speed

    def check_served(self):
        """Whoever comes now is served."""
        said = self.run("faults_cpp_client", ["1"])
        if "done" not in said.stdout or said.returncode != 0:
            raise Broken(f"nobody is served afterwards: {said.stdout.strip()}")
        return int(re.search(r"done (\d+)", said.stdout)[1])


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


class Tool:
    """One command of voxtrelctl, beside a service in good health."""

    program = "voxtrelctl"

    def __init__(self, *arguments, given=None):
        self.arguments = arguments
        self.given = given
        self.words = 2 if arguments[0] == "profile" else 1
        self.name = "voxtrelctl " + " ".join(arguments[:self.words])

    def prepare(self, world):
        world.ensure_peers()
        profile = world.folder / "kept.ini"
        if not hasattr(world, "profile"):
            saved = world.run("voxtrelctl", ["profile", "save", str(profile)])
            if saved.returncode != 0:
                raise Broken(saved.stderr)
            world.profile = profile.read_text()
        profile.write_text(world.profile)
        (world.folder / "copy.ini").write_text("# the one before\n")

    def run(self, world, point):
        self.prepare(world)
        speed = world.next_speed()
        arguments = [{"SPEED": str(speed)}.get(word, word) for word in self.arguments]
        limit = [] if "copy" in arguments or "remove" in arguments or "show" in arguments \
            else ["--timeout", "5"]
        arguments[self.words:self.words] = limit
        got = world.run("voxtrelctl", arguments, world.injected(self.program, point), self.given)
        if point.must_succeed and got.returncode != 0:
            raise Broken(f"without a fault: {got.stderr}")
        check_end(self.name, got.returncode, got.stderr)
        lines = lines_of(got.stderr)
        if got.returncode == 1 and (len(lines) != 1 or not lines[0].startswith("voxtrelctl: ")):
            raise Broken(f"status 1 with these lines: {got.stderr!r}")
        if got.returncode == 0 and len(lines) > 1:
            raise Broken(f"status 0 with these lines: {got.stderr!r}")
        world.expect_peers(world.manager, world.service)
        self.check_files(world, got)
        if "disable" in self.arguments:
            world.run("voxtrelctl", ["enable", "speech"])
        found = world.check_served()
        if "SPEED" in self.arguments and got.returncode == 0 and found != speed:
            raise Broken(f"speed {speed} was acknowledged and is {found}")

    def check_files(self, world, got):
        for name in ("kept.ini", "copy.ini"):
            path = world.folder / name
            text = path.read_text() if path.exists() else None
            whole = {world.profile, "# the one before\n" if name == "copy.ini" else world.profile}
            removed = name in self.arguments and "remove" in self.arguments
            if text is None and not removed:
                raise Broken(f"{name} is gone")
            # What differs is the values that were saved: their number of lines does not.
            if text is not None and text not in whole and \
                    text.count("\n") != world.profile.count("\n"):
                raise Broken(f"{name} is not whole: {text!r}")
        left = [path.name for path in world.folder.glob("*.ini.*")
                if not path.name.startswith("voxtrel.ini")]
        if left:
            for name in left:
                (world.folder / name).unlink()
            raise Broken(f"left behind: {left}")


class Client:
    """A program on one of the libraries. Only what the fault meets may fail."""

    def __init__(self, program):
        self.program = self.name = program

    def run(self, world, point):
        world.ensure_peers()
        times = 3
        got = world.run(self.program, [str(times)], world.injected(self.program, point))
        # The runtime says what it could not do.
        told = [line for line in got.stderr.splitlines() if not line.startswith("binder[")]
        check_lines(0, got.stderr, point)
        if got.returncode != 0 or told:
            raise Broken(f"{self.name} has ended with {got.returncode}: "
                         f"{got.stdout.strip()[-200:]} {got.stderr.strip()[-300:]}")
        done = got.stdout.count("done")
        if done < (times if point.must_succeed else times - 1) and \
                (point.times == 1 or point.must_succeed):
            raise Broken(f"only {done} of {times} times done: {got.stdout.strip()}")
        world.expect_peers(world.manager, world.service)
        world.check_served()


class Service:
    """voxtreld: from its start, through a client's life, to its end."""

    program = name = "voxtreld"

    def run(self, world, point):
        if world.manager is None or world.manager.poll() is not None:
            world.start_manager()
        if world.service is not None and world.service.poll() is None:
            end_in_time(world.service, "the service before")
        before = world.speed
        speed = world.next_speed()
        world.start_service(world.injected(self.program, point))
        under_test = world.service
        client = subprocess.Popen([world.program("faults_cpp_client"), "1", str(speed)], env=world.env,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                  stdin=subprocess.DEVNULL, cwd=world.folder)
        try:
            text = self.watch(world, under_test, client)
        finally:
            if client.poll() is None:
                client.kill()
            said, _ = client.communicate()
        status = end_in_time(under_test, self.name)
        if world.service is under_test:
            text = world.text("service.log")
        check_end(self.name, status, text)
        if client.returncode != 0 or (point.must_succeed and "done" not in said):
            raise Broken(f"the client beside it has ended with {client.returncode}: {said}")
        check_lines(status, text, point)
        if world.service.poll() is not None:
            world.start_service()
        found = world.check_served()
        world.speed = found
        # A disk that takes nothing keeps nothing: then the service has said so.
        if f"changed {speed}" in said and found != speed and "may not survive" not in text:
            raise Broken(f"speed {speed} was acknowledged and is {found}")
        if found not in (speed, before):
            raise Broken(f"speed is {found}, which nobody has set")
        world.expect_peers(world.manager)

    def watch(self, world, service, client):
        """Starts another service for the client if this one ends. @return what this one has said."""
        end = time.monotonic() + HANG
        text = ""
        while client.poll() is None and time.monotonic() < end:
            if world.service is service and service.poll() is not None:
                text = world.text("service.log")
                world.start_service()
            time.sleep(0.005)
        if client.poll() is None:
            raise Broken("the client beside it hangs")
        return text


def check_lines(status, text, point):
    """Who leaves with 1 says why, and nobody says the same again and again, unless it lasts: then
    the log limits itself to so many lines a second."""
    lines = [line for line in text.splitlines() if line]
    if status == 1 and not lines:
        raise Broken("status 1 without a line")
    if len(lines) > MOST_LINES and point.times == 1:
        raise Broken(f"{len(lines)} lines: {text[:600]!r}")


class Manager:
    """voxtrel-servicemanager: a service registers, clients come and go."""

    program = name = "voxtrel-servicemanager"

    def run(self, world, point):
        if world.manager is not None and world.manager.poll() is None:
            end_in_time(world.manager, "the manager before")
        world.start_manager(world.injected(self.program, point))
        under_test = world.manager
        if under_test.poll() is not None:
            text = world.text("manager.log")
            world.start_manager()
        else:
            text = ""
        world.ensure_peers()
        client = subprocess.Popen([world.program("faults_cpp_client"), "2"], env=world.env,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                  stdin=subprocess.DEVNULL, cwd=world.folder)
        end = time.monotonic() + HANG
        while client.poll() is None and time.monotonic() < end:
            if world.manager is under_test and under_test.poll() is not None:
                text = world.text("manager.log")
                world.start_manager()
            time.sleep(0.005)
        hangs = client.poll() is None
        if hangs:
            client.kill()
        said, _ = client.communicate()
        status = end_in_time(under_test, self.name) if world.manager is not under_test or hangs else None
        if status is None:
            if point.times == 1:
                world.check_served()
            status = end_in_time(under_test, self.name)
            text = world.text("manager.log")
        check_end(self.name, status, text)
        check_lines(status, text, point)
        if hangs or client.returncode != 0:
            raise Broken(f"the client beside it has ended with {client.returncode}: {said}")
        if world.manager.poll() is not None:
            world.start_manager()
        world.check_served()
        world.expect_peers(world.service)


SCENARIOS = [
    Service(), Manager(), Client("faults_cpp_client"), Client("faults_c_client"),
    Client("faults_runtime_client"),
    Tool("say", "--wait", "One, two, three."), Tool("say", "--json", "-f", "-", given="One, two, three.\n"),
    Tool("silence", "--wait", "1"), Tool("stop"), Tool("lock", "--", "true"), Tool("break-lock"),
    Tool("status"), Tool("languages"), Tool("voices", "--json"), Tool("doctor"), Tool("get"),
    Tool("set", "speed", "SPEED"), Tool("enable", "speech"), Tool("disable", "speech"),
    Tool("profile", "show", "kept.ini"), Tool("profile", "save", "kept.ini"),
    Tool("profile", "load", "kept.ini"), Tool("profile", "copy", "kept.ini", "copy.ini"),
    Tool("profile", "remove", "copy.ini"),
]


def points_of(scenario, world, every, calls):
    """Counts the calls of a run in which none fails. @return the points, call by call."""
    scenario.run(world, Point("", "ENOMEM"))
    points = [Point(JUMPS, "EAGAIN", 1, 0)] if not calls or JUMPS in calls else []
    for call, errors in CALLS.items():
        if calls and call not in calls:
            continue
        count, places = world.record.places(call)
        numbers = list(range(1, count + 1)) if every else places
        points += [Point(call, error, n) for error in errors for n in numbers]
        if call in LASTING:
            points += [Point(call, LASTING[call], n, 0) for n in numbers]
    return points


class Tally:
    def __init__(self):
        self.lock = threading.Lock()
        self.tried = {}
        self.unmet = 0
        self.failures = []

    def note(self, scenario, point, why, stack, met):
        foreign = why is not None and is_known(why, stack)
        with self.lock:
            key = (scenario.name, point.call)
            tried, failed, known = self.tried.get(key, (0, 0, 0))
            self.tried[key] = (tried + 1, failed + (why is not None and not foreign), known + foreign)
            self.unmet += not met
            if why is not None and not foreign:
                self.failures.append((scenario.name, point, why))
            if why is not None:
                known = "a known limit: " if foreign else ""
                print(f"{scenario.name}: {point}: {known}{why}", *("    " + line for line in stack),
                      sep="\n", flush=True)

    def print(self, total):
        width = max(len(name) for name, _ in self.tried)
        for (name, call), (tried, failed, known) in sorted(self.tried.items()):
            limit = f"{known:6} known limits" if known else ""
            print(f"{name:{width}}  {call:15}{tried:6} points{failed:6} failures{limit}")
        tried = sum(counts[0] for counts in self.tried.values())
        known = sum(counts[2] for counts in self.tried.values())
        print(f"{tried} of {total} points; in {self.unmet} the call was not made this time; in {known} a "
              "library that is not ours ended the process")
        print(f"{tried - known - len(self.failures)} passed, {len(self.failures)} failed")
        return tried


def is_known(why, stack):
    """Whether the process was ended by a library that is not ours."""
    callers = [line for line in stack if not line.startswith(("libstdc++.so", "ld-linux"))]
    nearest = callers[:1] + [line for line in callers if not line.startswith("libc.so")][:1] + [""]
    return any(seen in why and any(line.startswith(library) for line in nearest)
               and any(function in line for line in [*stack, ""])
               for library, function, seen in LIMITS)


def work(build, jobs, tally, end):
    world = World(build)
    try:
        while time.monotonic() < end:
            try:
                scenario, point = jobs.get_nowait()
            except queue.Empty:
                return
            why = None
            try:
                scenario.run(world, point)
            except Broken as broken:
                why = str(broken)
            met = world.record.failed() > 0
            tally.note(scenario, point, why, world.record.stack() if why else [], met)
            if why is not None:
                world.close()
                world = World(build)
    finally:
        world.close()


def spread(points, count):
    """`count` of them, in steps of one size."""
    if count >= len(points):
        return points
    return [points[i * len(points) // count] for i in range(count)]


def short(plan):
    """A point of each kind of call of each program, the middle one of its places."""
    kinds = {}
    for scenario, point in plan:
        kinds.setdefault((scenario.program, point.call), []).append((scenario, point))
    return [points[len(points) // 2] for points in kinds.values()]


def count_all(build, scenarios, options):
    """The points of each scenario."""
    def one(scenario):
        world = World(build)
        try:
            return points_of(scenario, world, options.all, options.call)
        finally:
            world.close()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        return dict(zip(scenarios, pool.map(one, scenarios)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, help="build folder, without sanitizers")
    parser.add_argument("--seconds", type=float, default=0, help="stop after so long (default: never)")
    parser.add_argument("--points", type=int, default=0, help="try so many of all (default: all)")
    parser.add_argument("--short", action="store_true", help="one of each kind of call and program")
    parser.add_argument("--all", action="store_true", help="every n, not one for each place")
    parser.add_argument("--program", action="append", help="only scenarios whose name begins so")
    parser.add_argument("--call", action="append", choices=[*CALLS, JUMPS], help="only this call")
    parser.add_argument("--at", type=int, help="only this n")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1))
    options = parser.parse_args()
    options.build = options.build.resolve()
    end = time.monotonic() + (options.seconds or float("inf"))
    scenarios = [s for s in SCENARIOS
                 if not options.program or any(s.name.startswith(p) for p in options.program)]
    found = count_all(options.build, scenarios, options)
    plan = [(scenario, point) for scenario, points in found.items() for point in points
            if options.at is None or point.at == options.at]
    total = len(plan)
    print("; ".join(f"{s.name}: {len(points)}" for s, points in found.items()), flush=True)
    plan = short(plan) if options.short else spread(plan, options.points or total)
    if options.seconds:  # whatever there is time for is spread over all of them
        steps = 61
        plan = [job for begin in range(steps) for job in plan[begin::steps]]
    jobs = queue.Queue()
    for job in plan:
        jobs.put(job)
    tally = Tally()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(work, options.build, jobs, tally, end) for _ in range(options.jobs)]:
            done.result()
    tried = tally.print(total)
    return 1 if tally.failures or tried == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
