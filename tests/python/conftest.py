# SPDX-License-Identifier: Apache-2.0
"""A service manager and a service of our own, in a private folder."""

from __future__ import annotations

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path
from typing import Callable, Iterator, Optional

import pytest

# Long, because the machine may be busy; nothing waits so long where all is well.
LONG = 60.0

# Before the library is loaded: a process looks for its service manager once.
FOLDER = Path(tempfile.mkdtemp(prefix="voxtrel-python-"))
SOUND = FOLDER / "sound"
os.environ.update(
    HOME=str(FOLDER),
    XDG_RUNTIME_DIR=str(FOLDER),
    TMPDIR=str(FOLDER),
    VOXTREL_BINDER_SOCKET=str(FOLDER / "binder"),
)

import voxtrel  # noqa: E402
from voxtrel.testing import FakeService  # noqa: E402


def eventually(condition: Callable[[], object], what: str) -> None:
    end = time.monotonic() + LONG
    while not condition():
        assert time.monotonic() < end, f"not in time: {what}"
        time.sleep(0.005)


def run_python(script: str, *arguments: str) -> subprocess.Popen[str]:
    """Another interpreter with the module and the service of the tests."""
    return subprocess.Popen(
        [sys.executable, "-c", script, *arguments],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )


def output_of(process: subprocess.Popen[str], timeout: float = LONG) -> tuple[str, str]:
    """What it has printed when it ends; one that does not end is not left behind."""
    try:
        return process.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        process.kill()
        raise


class Service:
    """The process of the speech service. It speaks as slowly as a loudspeaker, into files."""

    def __init__(self) -> None:
        self.process: Optional[subprocess.Popen[bytes]] = None

    def start(self) -> None:
        if self.process is None:
            program = os.environ["VOXTREL_SERVICE"]
            profile, sink = str(FOLDER / "voxtrel.ini"), f"wavdir:{SOUND}"
            SOUND.mkdir(exist_ok=True)
            command = [program, "--profile", profile, "--sink", sink, "--real-time"]
            with open(FOLDER / "service.log", "ab") as log:
                self.process = subprocess.Popen(command, stdout=log, stderr=log)

    def is_heard(self, process: int) -> bool:
        """Whether something of a client has sounded: more than the header of a file."""
        return any(file.stat().st_size > 4096 for file in SOUND.glob(f"*-{process}-*.wav"))

    def kill(self) -> None:
        assert self.process is not None
        self.process.kill()
        self.process.wait(LONG)
        self.process = None

    def end(self) -> None:
        assert self.process is not None
        self.process.terminate()
        assert self.process.wait(LONG) == 0
        self.process = None

    @contextmanager
    def frozen(self) -> Iterator[None]:
        assert self.process is not None
        tasks = Path(f"/proc/{self.process.pid}/task")
        self.process.send_signal(signal.SIGSTOP)
        eventually(
            lambda: all(") T " in (task / "stat").read_text() for task in tasks.iterdir()),
            "the stop of every thread of the service",
        )
        try:
            yield
        finally:
            self.process.send_signal(signal.SIGCONT)


@pytest.fixture(scope="session")
def service_manager() -> Iterator[None]:
    with open(FOLDER / "manager.log", "ab") as log:
        manager = subprocess.Popen(
            [os.environ["VOXTREL_SERVICE_MANAGER"]], stdout=log, stderr=log
        )
    eventually((FOLDER / "binder").is_socket, "the socket of the service manager")
    yield
    manager.terminate()
    manager.wait(LONG)
    shutil.rmtree(FOLDER, ignore_errors=True)


@pytest.fixture(scope="session")
def only_service(service_manager: None) -> Iterator[Service]:
    service = Service()
    yield service
    if service.process is not None:
        service.end()


@pytest.fixture
def service(only_service: Service) -> Service:
    """The service, with the settings that it was delivered with."""
    only_service.start()
    with voxtrel.Client("settings", deadline=LONG) as client:
        client.wait_until_connected()
        client.reset_settings()
    return only_service


@pytest.fixture
def client(service: Service) -> Iterator[voxtrel.Client]:
    with voxtrel.Client("test", deadline=LONG) as client:
        client.wait_until_connected()
        yield client
        client.stop()


@pytest.fixture
def fake() -> Iterator[FakeService]:
    with FakeService() as fake:
        yield fake


@pytest.fixture
def faked(fake: FakeService) -> Iterator[voxtrel.Client]:
    """A client of the fake service."""
    with voxtrel.Client("test", deadline=LONG, fake=fake) as client:
        client.wait_until_connected()
        yield client
