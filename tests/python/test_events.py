# SPDX-License-Identifier: Apache-2.0
"""Events by a handler, with the fake service."""

from __future__ import annotations

import asyncio
import os
import select
import sys
import threading
from typing import Callable

import pytest
import voxtrel
from conftest import LONG, eventually
from voxtrel import Event, EventKind
from voxtrel._convert import event_of
from voxtrel._native import RawEvent
from voxtrel.testing import FakeService


def dispatch_until_ended(client: voxtrel.Client, events: list[Event], number: int) -> None:
    """As a program with a loop of its own does."""

    def has_ended() -> bool:
        return any(e.kind is EventKind.ENDED and e.utterance == number for e in events)

    while not has_ended():
        readable, _, _ = select.select([client], [], [], LONG)
        assert readable, "nothing has happened"
        assert client.dispatch() > 0


def test_a_handler_is_told_of_all_that_happens(faked: voxtrel.Client) -> None:
    events: list[Event] = []
    faked.on_event(events.append)
    utterance = faked.say("One two.")
    dispatch_until_ended(faked, events, utterance.number)
    assert [(e.kind, e.position) for e in events] == [
        (EventKind.STARTED, 0),
        (EventKind.WORD, 0),
        (EventKind.WORD, 4),
        (EventKind.ENDED, 0),
    ]
    assert {e.utterance for e in events} == {utterance.number}
    assert events[-1].outcome == utterance.outcome
    assert events[0].outcome is None and events[0].setting is None


def test_changes_and_the_connection_are_events(fake: FakeService, faked: voxtrel.Client) -> None:
    events: list[Event] = []
    faked.on_event(events.append)
    faked.change(voxtrel.Settings(speed=123))
    fake.lock_by_another(77)

    def told() -> list[tuple[object, int]]:
        faked.dispatch()
        return [(event.setting or event.kind, event.value) for event in events]

    eventually(lambda: (voxtrel.Setting.LOCK, 77) in told(), "the lock of another process")
    assert (voxtrel.Setting.SPEED, 123) in told()
    events.clear()
    fake.die()
    eventually(lambda: not faked.is_connected, "the end of the connection")
    fake.come_back()
    faked.wait_until_connected()
    eventually(lambda: (EventKind.CONNECTED, 0) in told(), "the connection")
    assert events[0].kind is EventKind.DISCONNECTED


def test_a_handler_hears_nothing_of_before(faked: voxtrel.Client) -> None:
    faked.say("before").wait(LONG)
    events: list[Event] = []
    faked.on_event(events.append)
    after = faked.say("after")
    dispatch_until_ended(faked, events, after.number)
    assert {event.utterance for event in events} == {after.number}


def test_no_handler_is_called_after_it_was_replaced(faked: voxtrel.Client) -> None:
    first: list[Event] = []
    second: list[Event] = []
    faked.on_event(first.append)
    faked.on_event(second.append)
    dispatch_until_ended(faked, second, faked.say("a").number)
    faked.on_event(None)
    faked.say("b").wait(LONG)
    faked.dispatch()
    assert not first and {event.utterance for event in second} == {1}


def test_handlers_may_call_everything(fake: FakeService, faked: voxtrel.Client) -> None:
    events: list[Event] = []
    seen: list[object] = []

    def handler(event: Event) -> None:
        if event.kind is EventKind.STARTED and event.utterance == 1:
            seen.append(faked.dispatch())
            seen.append(faked.settings().speed)
            faked.say("from the handler")
        events.append(event)

    faked.on_event(handler)
    faked.say("a")
    dispatch_until_ended(faked, events, 2)
    assert seen == [0, 300]
    assert fake.spoken() == ["a", "from the handler"]


def test_a_handler_may_close_its_client(fake: FakeService) -> None:
    client = voxtrel.Client("test", fake=fake)
    client.on_event(lambda event: client.close())
    client.say("a").wait(LONG)
    assert client.dispatch() == 1
    assert client.is_closed
    with pytest.raises(voxtrel.Closed):
        client.dispatch()


def test_what_a_handler_raises_comes_out_of_dispatch(faked: voxtrel.Client) -> None:
    events: list[Event] = []

    def handler(event: Event) -> None:
        events.append(event)
        if len(events) == 1:
            raise LookupError("of the handler")

    faked.on_event(handler)
    utterance = faked.say("a")
    utterance.wait(LONG)
    with pytest.raises(LookupError, match="of the handler"):
        eventually(faked.dispatch, "the first event")
    dispatch_until_ended(faked, events, utterance.number)
    assert [event.kind for event in events] == [EventKind.STARTED, EventKind.WORD, EventKind.ENDED]


def test_the_descriptor_is_silent_when_all_was_dispatched(faked: voxtrel.Client) -> None:
    events: list[Event] = []
    faked.on_event(events.append)
    dispatch_until_ended(faked, events, faked.say("a").number)
    assert faked.dispatch() == 0
    assert select.select([faked], [], [], 0)[0] == []


def test_events_are_dispatched_once_among_threads(faked: voxtrel.Client) -> None:
    events: list[Event] = []
    faked.on_event(events.append)
    done = threading.Event()
    threads = [
        threading.Thread(target=lambda: [faked.dispatch() for _ in iter(done.is_set, True)])
        for _ in range(3)
    ]
    for thread in threads:
        thread.start()
    for _ in range(50):
        faked.say("a")
    faked.wait_for_all(LONG)
    eventually(lambda: sum(e.kind is EventKind.ENDED for e in events) >= 50, "the events")
    done.set()
    for thread in threads:
        thread.join()
    assert sum(e.kind is EventKind.ENDED for e in events) == 50


def test_iterations_come_and_go_while_events_are_told(faked: voxtrel.Client) -> None:
    wrong: list[object] = []
    done = threading.Event()

    async def iterate() -> None:
        loop = asyncio.get_running_loop()
        loop.set_exception_handler(lambda _, context: wrong.append(context))
        while not done.is_set():
            some = [faked.events() for _ in range(20)]
            await asyncio.sleep(0)
            for events in some:
                events.close()

    def dispatch() -> None:
        while not done.is_set():
            faked.dispatch()

    def note(work: Callable[[], object]) -> None:
        try:
            work()
        except Exception as error:
            wrong.append(error)

    def run_loop() -> None:
        asyncio.run(iterate())

    works: list[Callable[[], object]] = [run_loop, run_loop, dispatch]
    threads = [threading.Thread(target=note, args=[work]) for work in works]
    before = sys.getswitchinterval()
    sys.setswitchinterval(1e-6)
    try:
        for thread in threads:
            thread.start()
        for _ in range(500):
            faked.say("word " * 100).wait(LONG)
    finally:
        done.set()
        sys.setswitchinterval(before)
        for thread in threads:
            thread.join()
    assert not wrong


def test_an_iteration_that_begins_while_an_event_is_told_hears_it(
    faked: voxtrel.Client, monkeypatch: pytest.MonkeyPatch
) -> None:
    streams = faked._hub._streams
    living = streams.living
    main = threading.get_ident()
    asked, begun = threading.Event(), threading.Event()
    looks: list[bool] = []

    def has_begun_or_waits() -> bool:
        looks.append(sys._current_frames()[main].f_code.co_name == "add_stream")
        return begun.is_set() or (len(looks) > 20 and all(looks[-20:]))

    def living_meanwhile() -> list[voxtrel.Events]:
        found = living()
        if threading.get_ident() != main:
            asked.set()
            eventually(has_begun_or_waits, "the iteration")
        return found

    async def hear() -> None:
        asked.wait(LONG)
        events = faked.events()
        begun.set()
        async for event in events:
            if event.kind is EventKind.ENDED:
                break

    faked.dispatch()
    faked.say("Refused.", language="xx")  # which is the only event
    monkeypatch.setattr(streams, "living", living_meanwhile)
    thread = threading.Thread(target=faked.dispatch)
    thread.start()
    asyncio.run(asyncio.wait_for(hear(), LONG))
    thread.join()


def test_two_clients_hear_of_their_own(fake: FakeService, faked: voxtrel.Client) -> None:
    with voxtrel.Client("other", fake=fake) as other:
        assert other.fileno() != faked.fileno() and os.fstat(other.fileno())
        other.wait_until_connected(LONG)
        theirs: list[Event] = []
        ours: list[Event] = []
        other.on_event(theirs.append)
        faked.on_event(ours.append)
        faked.say("ours").wait(LONG)
        dispatch_until_ended(other, theirs, other.say("theirs").number)
        dispatch_until_ended(faked, ours, 1)
        assert len(theirs) == len(ours) == 3


def test_marks_have_their_number_and_place() -> None:
    raw = RawEvent(kind=EventKind.MARK, utterance=3, position=(9, 7), value=2)
    assert event_of(raw) == Event(EventKind.MARK, 3, 7, None, None, 2)


def test_events_of_kinds_to_come_are_told() -> None:
    event = event_of(RawEvent(kind=77, setting=4000, value=2))
    assert event.kind == 77 and event.value == 2
    changed = event_of(RawEvent(kind=EventKind.CHANGED, setting=4000, value=2))
    assert changed.setting == 4000
