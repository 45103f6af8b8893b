# SPDX-License-Identifier: Apache-2.0
"""How objects begin and end."""

from __future__ import annotations

import copy
import gc
import os
import pickle
import resource
import signal
import threading
import time
from typing import Callable

import pytest
import voxtrel
from conftest import LONG, Service, eventually, output_of, run_python
from voxtrel import OutcomeKind, Status
from voxtrel.testing import FakeService


def descriptors() -> int:
    gc.collect()
    return len(os.listdir("/proc/self/fd"))


def test_the_block_closes_the_client(fake: FakeService) -> None:
    fake.hold()
    with voxtrel.Client("test", fake=fake) as client:
        utterance = client.say("a")
    assert client.is_closed
    assert utterance.outcome.kind is OutcomeKind.LOST
    assert utterance.wait(0).status is Status.CLOSED
    client.close()


def test_a_closed_client_raises(fake: FakeService) -> None:
    client = voxtrel.Client("test", fake=fake)
    client.close()
    calls: list[Callable[[], object]] = [
        lambda: client.say("a"),
        lambda: client.pause(1),
        client.stop,
        client.stop_everybody,
        client.wait_for_all,
        client.wait_until_connected,
        client.settings,
        client.features,
        client.lock,
        client.fileno,
        client.dispatch,
        lambda: client.is_connected,
        lambda: client.defaults,
    ]
    for call in calls:
        with pytest.raises(voxtrel.Closed) as raised:
            call()
        assert raised.value.status is Status.CLOSED


def test_what_nobody_holds_is_freed(fake: FakeService) -> None:
    before = descriptors()
    clients = [voxtrel.Client(fake=fake) for _ in range(20)]
    assert descriptors() >= before + 20
    utterance = clients[0].say("a")
    assert utterance.wait(LONG)
    del clients
    assert descriptors() == before + 1, "its utterance holds the first one"
    del utterance
    assert descriptors() == before


def test_a_handler_that_uses_its_client_does_not_keep_it(fake: FakeService) -> None:
    def make() -> None:
        client = voxtrel.Client(fake=fake)
        client.on_event(lambda event: client.stop())

    before = descriptors()
    make()
    assert descriptors() == before


def test_the_fake_service_outlives_its_clients(fake: FakeService) -> None:
    client = voxtrel.Client(fake=fake)
    with pytest.raises(RuntimeError):
        fake.close()
    client.close()
    fake.close()
    with pytest.raises(voxtrel.Closed):
        fake.spoken()


def test_ten_thousand_utterances_leave_nothing() -> None:
    def round_of(count: int) -> None:
        with FakeService() as fake, voxtrel.Client("test", fake=fake) as client:
            for _ in range(count):
                client.say("a", speed=200)
            client.wait_for_all(LONG)

    def memory() -> int:
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    def living() -> int:
        gc.collect()
        return sum(isinstance(each, voxtrel.Utterance) for each in gc.get_objects())

    round_of(2000)
    before, most = (descriptors(), living()), memory()
    for _ in range(5):
        round_of(2000)
    assert (descriptors(), living()) == before
    assert memory() - most < 1024, "KiB; 10,000 handles of C would be twice that"


def test_a_client_keeps_its_fake_service() -> None:
    client = voxtrel.Client(fake=FakeService())
    gc.collect()
    assert client.say("a").wait(LONG)
    client.close()


def test_events_that_nobody_wants_do_not_gather(fake: FakeService, faked: voxtrel.Client) -> None:
    for _ in range(2000):
        faked.say("a").wait(LONG)
    # The trimming looks every 64 utterances, of which each has three events.
    assert faked.dispatch() <= 64 * 3
    assert len(faked._hub._backlog) == 256


WAITS = {
    "an utterance": """
from voxtrel.testing import FakeService
fake = FakeService()
fake.hold()
client = voxtrel.Client(fake=fake)
wait = client.say("a").wait
""",
    "all utterances": """
from voxtrel.testing import FakeService
fake = FakeService()
fake.hold()
client = voxtrel.Client(fake=fake)
client.say("a")
wait = client.wait_for_all
""",
    "the connection": """
from voxtrel.testing import FakeService
fake = FakeService()
fake.die()
client = voxtrel.Client(deadline=3600, fake=fake)
wait = client.wait_until_connected
""",
}


@pytest.mark.parametrize("what", WAITS)
def test_the_keyboard_interrupts_a_wait_for(what: str) -> None:
    child = run_python(
        "import sys, threading, time, traceback, voxtrel"
        + WAITS[what]
        + """
def tell_of_the_wait(main=threading.get_ident()):
    while "voxtrel" not in traceback.extract_stack(sys._current_frames()[main])[-1].filename:
        time.sleep(0.001)
    print("waiting", flush=True)
threading.Thread(target=tell_of_the_wait).start()
try:
    wait()
except KeyboardInterrupt:
    print("interrupted", flush=True)
    sys.exit(0)
"""
    )
    assert child.stdout is not None and child.stdout.readline() == "waiting\n"
    child.send_signal(signal.SIGINT)
    assert output_of(child) == ("interrupted\n", "")
    assert child.returncode == 0


def test_a_lock_whose_taking_is_interrupted_is_given_back() -> None:
    child = run_python(
        """
import os, signal, sys, threading, time, traceback, voxtrel
from voxtrel.testing import FakeService
fake = FakeService()
client = voxtrel.Client(deadline=60, fake=fake)
client.wait_until_connected()
fake.freeze()
reader, writer = os.pipe()
os.set_blocking(writer, False)
signal.set_wakeup_fd(writer)
def interrupt(main=threading.get_ident()):
    while traceback.extract_stack(sys._current_frames()[main])[-1].name != "call":
        time.sleep(0.001)
    os.kill(os.getpid(), signal.SIGINT)
    os.read(reader, 1)
    fake.thaw()
threading.Thread(target=interrupt).start()
try:
    lock = client.lock()
except KeyboardInterrupt:
    print(client.lock_state().name)
"""
    )
    assert output_of(child) == ("FREE\n", "")


# Between any two lines: a handler of the interpreter's may come then, or the garbage collector.
IN_BETWEEN = """
import asyncio, gc, os, sys, voxtrel
from voxtrel.testing import FakeService
ACTIONS = {"close": lambda client: client.close(), "use": lambda client: client.dispatch()}
fake = FakeService()

async def wait(client):
    fake.hold()
    utterance = client.say("b")
    asyncio.get_running_loop().call_soon(fake.go_on)
    await utterance

def run(action, moment):
    lines = 0
    def trace(frame, what, argument):
        nonlocal lines
        if "voxtrel" not in frame.f_code.co_filename:
            return None
        lines += what == "line"
        if what == "line" and lines == moment:
            action(client)
        return trace
    client = voxtrel.Client(fake=fake)
    client.on_event(lambda event: None)
    sys.settrace(trace)
    try:
        client.say("a")
        client.wait_for_all(60)
        client.dispatch()
        asyncio.run(wait(client))
    except voxtrel.Closed:
        pass
    finally:
        sys.settrace(None)
    client.close()
    fake.go_on()
    return lines >= moment

descriptors = len(os.listdir("/proc/self/fd"))
moment = 1
while run(ACTIONS[sys.argv[1]], moment):
    moment += 1
fake.close()
gc.collect()
assert moment > 100, moment
assert len(os.listdir("/proc/self/fd")) == descriptors
"""


@pytest.mark.parametrize("action", ["close", "use"])
def test_signal_handlers_may_at_any_moment(action: str) -> None:
    child = run_python(IN_BETWEEN, action)
    assert output_of(child, 2 * LONG) == ("", "")
    assert child.returncode == 0


def test_waiting_takes_no_processor_time(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    utterance = faked.say("a")
    begin = time.thread_time()
    with pytest.raises(voxtrel.TimedOut):
        utterance.wait(1)
    assert time.thread_time() - begin < 0.1


def test_the_interpreter_ends_with_everything_open(service: Service) -> None:
    child = run_python(
        """
import asyncio, voxtrel
client = voxtrel.Client("child")
client.wait_until_connected(60)
client.on_event(print)
utterances = [client.say("Hello.") for _ in range(10)]
lock = client.lock(60)
async def work():
    global events, task
    events = client.events()
    task = asyncio.ensure_future(events.__anext__())
    await asyncio.sleep(0)
asyncio.run(work())
"""
    )
    output, errors = output_of(child)
    assert (child.returncode, errors) == (0, "")
    with voxtrel.Client("test") as client:
        client.wait_until_connected(LONG)
        eventually(lambda: client.lock(LONG).is_held, "the lock of the child")


def test_a_child_that_is_forked_first_has_clients(service: Service) -> None:
    child = run_python(
        """
import os, sys, voxtrel
child = os.fork()
with voxtrel.Client("one of two") as client:
    assert client.say("Hello.", speed=900).wait(60)
if child != 0:
    assert os.waitpid(child, 0)[1] == 0
"""
    )
    assert output_of(child) == ("", "")
    assert child.returncode == 0


def test_a_child_that_is_forked_later_lets_its_parents_clients_be(service: Service) -> None:
    child = run_python(
        """
import gc, os, sys, voxtrel
client = voxtrel.Client("parent")
client.wait_until_connected(60)
utterance = client.say("Of the parent.", speed=900)
child = os.fork()
if child == 0:
    calls = (lambda: client.say("a"), client.stop, lambda: utterance.outcome, utterance.wait,
             voxtrel.Client)
    for call in calls:
        try:
            call()
            sys.exit("the child used a client")
        except RuntimeError as error:
            assert "fork" in str(error)
    client.close()
    del client, utterance
    gc.collect()
    sys.exit(0)
assert os.waitpid(child, 0)[1] == 0
assert utterance.wait(60)
assert client.say("After the child.", speed=900).wait(60)
"""
    )
    assert output_of(child) == ("", "")
    assert child.returncode == 0


def test_a_forked_child_leaves_the_blocks_of_its_parent() -> None:
    child = run_python(
        """
import os, sys, voxtrel
from voxtrel.testing import FakeService
with FakeService() as fake, voxtrel.Client(fake=fake) as client:
    client.wait_until_connected(60)
    lock = client.lock(60)
    child = os.fork()
    if child == 0:
        assert client.is_closed and not lock.is_held
if child != 0:
    assert os.waitpid(child, 0)[1] == 0
"""
    )
    assert output_of(child) == ("", "")
    assert child.returncode == 0


def test_closing_waits_for_a_call_on_another_thread(fake: FakeService) -> None:
    for _ in range(20):
        client = voxtrel.Client(deadline=LONG, fake=fake)
        client.wait_until_connected()
        begun = threading.Event()

        def read(client: voxtrel.Client = client, begun: threading.Event = begun) -> None:
            with pytest.raises((voxtrel.Error, voxtrel.Closed)):
                while True:
                    begun.set()
                    client.settings()

        readers = [threading.Thread(target=read) for _ in range(3)]
        for reader in readers:
            reader.start()
        begun.wait(LONG)
        client.close()
        for reader in readers:
            reader.join(LONG)
            assert not reader.is_alive()


def test_utterances_compare_by_identity_and_tell_of_themselves(faked: voxtrel.Client) -> None:
    first, second = faked.say("a"), faked.say("a")
    assert first != second and len({first, second}) == 2
    second.wait(LONG)
    assert repr(second) == "<voxtrel.Utterance 2: finished>"


def test_values_can_be_sent_to_other_processes(faked: voxtrel.Client) -> None:
    outcome = faked.say("a").wait(LONG)
    assert pickle.loads(pickle.dumps(outcome)) == outcome == copy.copy(outcome)
    with pytest.raises(voxtrel.BadParameter) as raised:
        faked.change(voxtrel.Settings(speed=10**6))
    again = pickle.loads(pickle.dumps(raised.value))
    assert type(again) is voxtrel.BadParameter
    assert (again.status, str(again)) == (raised.value.status, str(raised.value))
