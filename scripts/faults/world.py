# SPDX-License-Identifier: Apache-2.0
"""The processes around a program that is under test."""
import errno
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import time

from record import Record

HANG = 120  # seconds; a machine may be busy


class Broken(Exception):
    """An invariant does not hold."""


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
            "sd_voxtrel": "bridges/speech-dispatcher",
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

    def start_client(self, *arguments):
        """Beside a program that is under test."""
        return subprocess.Popen([self.program("faults_cpp_client"), *arguments], env=self.env,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True, cwd=self.folder)

    def start_manager(self, env=None):
        self.manager = self.start("voxtrel-servicemanager", [], "manager.log", env or self.env)
        self.await_line(self.manager, "manager.log", "ready")

    def start_service(self, env=None, sink="none"):
        self.service = self.start(
            "voxtreld", ["--profile", str(self.folder / "voxtrel.ini"), "--sink", sink],
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
