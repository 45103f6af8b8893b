# SPDX-License-Identifier: Apache-2.0
"""A real service that speaks, freezes, dies and comes back."""

from __future__ import annotations

import asyncio
import os
import threading

import pytest
import voxtrel
from conftest import FOLDER, LONG, Service, eventually
from voxtrel import EventKind, OnLoss, OutcomeKind, Reach, Status

# Short enough to be sent as a whole; what still waits in the client is not lost with a service.
LONG_TEXT = "This is a sentence of some length, which takes a while to be spoken. " * 12


def begin(client: voxtrel.Client, **options: OnLoss) -> voxtrel.Utterance:
    """Something that is being spoken."""
    utterance = client.say(LONG_TEXT, **options)  # type: ignore[arg-type]
    eventually(lambda: utterance.position > 0, "the second word")
    return utterance


def test_speaks(client: voxtrel.Client) -> None:
    assert client.is_connected
    assert client.say("Hello.", language="en", voice="2", speed=900).wait(LONG)


def test_two_clients_speak_one_after_the_other(client: voxtrel.Client) -> None:
    with voxtrel.Client("other") as other:
        first, second = client.say("One.", speed=900), other.say("Two.", speed=900)
        assert second.wait(LONG)
        assert first.outcome


def test_stops_at_once(client: voxtrel.Client) -> None:
    utterance = begin(client)
    client.stop()
    outcome = utterance.wait(LONG)
    assert outcome.kind is OutcomeKind.STOPPED and outcome.heard


def test_marks_are_events(client: voxtrel.Client) -> None:
    text = '<speak>One, <mark name="a"/> two, <mark name="b"/> three.</speak>'
    marks: list[voxtrel.Event] = []
    client.on_event(
        lambda event: marks.append(event) if event.kind is EventKind.MARK else None
    )
    assert client.say(text, speed=900).wait(LONG)
    client.dispatch()
    assert [mark.value for mark in marks] == [1, 2]


def test_survives_a_death_in_the_middle(client: voxtrel.Client, service: Service) -> None:
    lost = begin(client)
    meanwhile = client.say("And on.", speed=900)
    again = client.say("Once more.", speed=900, on_loss=OnLoss.SAY_AGAIN)
    client.settings()  # asked for after them, so that the service has them all
    service.kill()
    outcome = lost.wait(LONG)
    assert outcome.kind is OutcomeKind.LOST and outcome.heard
    assert outcome.status is Status.NO_SERVICE
    assert meanwhile.wait(LONG).kind is OutcomeKind.LOST
    eventually(lambda: not client.is_connected, "the end of the connection")
    between = client.say("Between.", speed=900)
    service.start()
    assert between.wait(LONG)
    assert again.wait(LONG)


def test_a_loop_sees_a_death_and_the_return(client: voxtrel.Client, service: Service) -> None:
    async def work() -> list[EventKind]:
        events = client.events()
        utterance = client.say(LONG_TEXT, on_loss=OnLoss.SAY_AGAIN_WHATEVER)
        seen: list[EventKind] = []
        async for event in events:
            if event.kind is EventKind.DISCONNECTED or (seen and event.kind is EventKind.CONNECTED):
                seen.append(event.kind)
            if event.kind is EventKind.WORD and event.position > 0:
                if not seen:
                    service.kill()
                    service.start()
                elif EventKind.CONNECTED in seen:
                    client.stop()
            if event.kind is EventKind.ENDED and event.utterance == utterance.number:
                break
        assert (await utterance).kind is OutcomeKind.STOPPED
        return seen

    seen = asyncio.run(asyncio.wait_for(work(), LONG))
    assert seen == [EventKind.DISCONNECTED, EventKind.CONNECTED]


def test_an_ended_service_tells_so(client: voxtrel.Client, service: Service) -> None:
    utterance = begin(client)
    service.end()
    assert utterance.wait(LONG).status is Status.SHUTDOWN


def test_without_a_service_calls_say_so(client: voxtrel.Client, service: Service) -> None:
    service.end()
    eventually(lambda: not client.is_connected, "the end of the connection")
    for call in (client.wait_until_connected, client.settings, client.features, client.lock):
        with pytest.raises(voxtrel.Unavailable) as raised:
            call(0.2)
        assert raised.value.status in (Status.SERVICE_NOT_FOUND, Status.NO_SERVICE)
    service.start()
    client.wait_until_connected()


def test_a_frozen_service_blocks_nobody(client: voxtrel.Client, service: Service) -> None:
    with voxtrel.Client("short", deadline=0.1) as short:
        with service.frozen():
            waiting = client.say("Hello.", speed=900)
            with pytest.raises(voxtrel.TimedOut):
                short.settings()
            with pytest.raises(voxtrel.TimedOut):
                client.settings(0.1)
            with pytest.raises(voxtrel.TimedOut):
                waiting.wait(0.1)
        assert waiting.wait(LONG)
        client.settings(LONG)


def test_the_way_to_the_service_is_seen(client: voxtrel.Client, service: Service) -> None:
    assert service.process is not None
    process, user = service.process.pid, os.getuid()
    seen = client.diagnose()
    assert (seen.reach, seen.status, seen.message) == (Reach.CONNECTED, Status.OK, "")
    assert (seen.transport, seen.path, seen.error) == ("socket", str(FOLDER / "binder"), 0)
    assert seen.service == voxtrel.Peer(process, user)
    assert seen.manager.process not in (0, process) and seen.manager.user == user
    with service.frozen():
        with pytest.raises(voxtrel.TimedOut):
            client.settings(0.1)
        seen = client.diagnose()
    assert (seen.reach, seen.status) == (Reach.SERVICE_SILENT, Status.UNRESPONSIVE)
    assert seen.service == voxtrel.Peer(process, user, is_stopped=True)
    assert not seen.manager.is_stopped and f"process {process} is stopped" in seen.message


def test_other_threads_run_while_one_waits(client: voxtrel.Client, service: Service) -> None:
    counted = 0
    done = threading.Event()

    def count() -> None:
        nonlocal counted
        while not done.wait(0.001):
            counted += 1

    thread = threading.Thread(target=count)
    with service.frozen():
        thread.start()
        with pytest.raises(voxtrel.TimedOut):
            client.settings(0.5)
        assert counted > 10
    done.set()
    thread.join()


def test_starts_no_thread_of_the_interpreter(client: voxtrel.Client) -> None:
    before = threading.active_count()
    client.say("Hello.", speed=900).wait(LONG)
    assert threading.active_count() == before


def test_prints_nothing(capfd: pytest.CaptureFixture[str], service: Service) -> None:
    with voxtrel.Client() as client:
        client.say("Hello.", speed=900).wait(LONG)
        client.say("Hello.", language="xx").wait(LONG)
    assert capfd.readouterr() == ("", "")
