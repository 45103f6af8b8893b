# SPDX-License-Identifier: Apache-2.0
"""On event loops, with the fake service."""

from __future__ import annotations

import asyncio
import gc
import os
import threading
import time
from typing import Any, Coroutine, TypeVar

import pytest
import voxtrel
from conftest import LONG, eventually
from voxtrel import Event, EventKind, OutcomeKind
from voxtrel.testing import FakeService

Value = TypeVar("Value")


def run(work: Coroutine[Any, Any, Value]) -> Value:
    return asyncio.run(asyncio.wait_for(work, LONG))


def descriptors() -> int:
    gc.collect()
    return len(os.listdir("/proc/self/fd"))


async def until_ended(events: voxtrel.Events, number: int) -> list[Event]:
    seen = []
    async for event in events:
        seen.append(event)
        if event.kind is EventKind.ENDED and event.utterance == number:
            break
    return seen


def test_an_utterance_is_awaited(faked: voxtrel.Client) -> None:
    async def work() -> None:
        utterance = faked.say("a")
        assert await utterance
        assert await utterance == utterance.outcome

    run(work())
    run(work())


def test_the_loop_runs_while_an_utterance_is_awaited(
    fake: FakeService, faked: voxtrel.Client
) -> None:
    async def work() -> None:
        fake.hold()
        asyncio.get_running_loop().call_later(0.01, fake.go_on)
        assert await faked.say("a")

    run(work())


def test_many_await_at_once(fake: FakeService, faked: voxtrel.Client) -> None:
    async def work() -> None:
        fake.hold()
        utterances = [faked.say(str(i)) for i in range(50)]

        async def outcome_of(utterance: voxtrel.Utterance) -> voxtrel.Outcome:
            return await utterance

        tasks = [asyncio.ensure_future(outcome_of(u)) for u in utterances * 2]
        await asyncio.sleep(0)
        fake.go_on()
        assert all(await asyncio.gather(*tasks))

    run(work())


def test_awaiting_can_be_given_up(fake: FakeService, faked: voxtrel.Client) -> None:
    async def work() -> None:
        fake.hold()
        utterance = faked.say("a")
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(utterance, 0.01)
        fake.go_on()
        assert await utterance

    before = descriptors()
    run(work())
    assert descriptors() == before


def test_events_are_iterated(faked: voxtrel.Client) -> None:
    async def work() -> list[Event]:
        events = faked.events()
        number = faked.say("One two.").number
        return await until_ended(events, number)

    kinds = [event.kind for event in run(work()) if event.utterance]
    assert kinds == [EventKind.STARTED, EventKind.WORD, EventKind.WORD, EventKind.ENDED]


def test_iteration_begins_with_what_nobody_has_heard(faked: voxtrel.Client) -> None:
    async def work() -> list[Event]:
        utterance = faked.say("a")
        assert await utterance
        return await until_ended(faked.events(), utterance.number)

    assert [e.kind for e in run(work())][-3:] == [
        EventKind.STARTED,
        EventKind.WORD,
        EventKind.ENDED,
    ]


def test_iterations_and_a_handler_all_hear(faked: voxtrel.Client) -> None:
    handled: list[Event] = []

    async def work() -> None:
        faked.on_event(handled.append)
        first, second = faked.events(), faked.events()
        number = faked.say("a").number
        heard = await asyncio.gather(until_ended(first, number), until_ended(second, number))
        assert [event for event in heard[0] if event.utterance] == heard[1] == handled
        assert len(handled) == 3

    run(work())


def test_iteration_ends_with_the_client(fake: FakeService) -> None:
    async def work() -> None:
        async with voxtrel.Client("test", fake=fake) as client:
            fake.hold()
            utterance = client.say("a")
            events = client.events()
            task = asyncio.ensure_future(until_ended(events, 99))
            waiting = asyncio.ensure_future(client._outcome_on_loop(utterance))
            await asyncio.sleep(0)
        await task
        outcome = await waiting
        assert outcome.kind is OutcomeKind.LOST and outcome.status is voxtrel.Status.CLOSED
        assert await utterance == outcome
        with pytest.raises(voxtrel.Closed):
            client.events()

    before = descriptors()
    run(work())
    assert descriptors() == before


def test_iteration_that_was_closed_ends(faked: voxtrel.Client) -> None:
    async def work() -> None:
        events = faked.events()
        asyncio.get_running_loop().call_soon(events.close)
        assert await until_ended(events, 99) is not None

    run(work())


def test_iterations_left_in_the_middle_leave_nothing(faked: voxtrel.Client) -> None:
    async def work() -> None:
        for _ in range(100):
            events = faked.events()
            faked.say("a")
            async for event in events:
                if event.kind is EventKind.STARTED:
                    break

    before = descriptors()
    for _ in range(3):
        run(work())
    assert descriptors() == before
    assert not faked._hub._readers and not faked._hub._waiters


def test_a_loop_that_reads_slowly_misses_words_only(faked: voxtrel.Client) -> None:
    async def work() -> list[Event]:
        slow, quick = faked.events(), faked.events()
        words = [faked.say("word " * 100) for _ in range(20)]
        await until_ended(quick, words[-1].number)
        return await until_ended(slow, words[-1].number)

    kinds = [event.kind for event in run(work()) if event.utterance]
    assert kinds.count(EventKind.STARTED) == kinds.count(EventKind.ENDED) == 20
    assert 100 < kinds.count(EventKind.WORD) <= 256


def test_a_client_is_used_on_two_loops_at_once(fake: FakeService, faked: voxtrel.Client) -> None:
    async def work() -> bool:
        return all([await faked.say("a") for _ in range(30)])

    results: list[bool] = []
    threads = [threading.Thread(target=lambda: results.append(run(work()))) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True, True]


def test_a_handler_that_raises_does_not_end_the_loop(faked: voxtrel.Client) -> None:
    raised: list[object] = []

    def handler(event: Event) -> None:
        raise LookupError("of the handler")

    async def work() -> None:
        loop = asyncio.get_running_loop()
        loop.set_exception_handler(lambda _, context: raised.append(context["exception"]))
        faked.on_event(handler)
        events = faked.events()
        await until_ended(events, faked.say("a").number)

    run(work())
    assert raised and all(isinstance(each, LookupError) for each in raised)


def test_events_need_a_running_loop(faked: voxtrel.Client) -> None:
    with pytest.raises(RuntimeError):
        faked.events()


def test_an_utterance_of_a_client_that_lingers_is_awaited(fake: FakeService) -> None:
    client = voxtrel.Client("test", fake=fake, linger=LONG)
    client.wait_until_connected()
    fake.freeze()

    async def work() -> voxtrel.Outcome:
        utterance = client.say("a")
        threading.Thread(target=client.close).start()
        eventually(lambda: client.is_closed, "the begin of the end")
        asyncio.get_running_loop().call_later(0.01, fake.thaw)
        return await utterance

    assert run(work()).kind is not OutcomeKind.PENDING


def test_a_client_closed_on_another_thread_ends_its_waits(fake: FakeService) -> None:
    client = voxtrel.Client("test", fake=fake)
    fake.hold()

    async def work() -> voxtrel.Outcome:
        utterance = client.say("a")
        task = asyncio.ensure_future(client._outcome_on_loop(utterance))
        await asyncio.sleep(0)
        threading.Thread(target=client.close).start()
        return await task

    assert run(work()).status is voxtrel.Status.CLOSED
    eventually(lambda: client.is_closed, "the end of the client")


@pytest.mark.parametrize("is_iteration_closed_first", [True, False])
def test_a_loop_that_is_closed_before_its_client_leaves_nothing(
    fake: FakeService, is_iteration_closed_first: bool
) -> None:
    before = descriptors()
    client = voxtrel.Client("test", fake=fake)
    loop = asyncio.new_event_loop()

    async def begin() -> voxtrel.Events:
        return client.events()

    events = loop.run_until_complete(begin())
    if is_iteration_closed_first:
        events.close()
    loop.close()
    assert client.say("a").wait(LONG)
    client.dispatch()
    events.close()
    client.close()
    del client, events, begin
    assert descriptors() == before


def test_an_await_left_on_a_closed_loop_keeps_nothing(fake: FakeService) -> None:
    fake.hold()

    def leave() -> None:
        client = voxtrel.Client("test", fake=fake)
        utterance = client.say("a")

        async def wait() -> voxtrel.Outcome:
            return await utterance

        loop = asyncio.new_event_loop()
        loop.set_exception_handler(lambda *_: None)  # it would tell of the task that is left
        loop.create_task(wait())
        loop.call_soon(loop.stop)
        loop.run_forever()
        loop.close()
        with pytest.raises(asyncio.TimeoutError):
            asyncio.run(asyncio.wait_for(wait(), 0.01))

    before = descriptors()
    leave()
    assert descriptors() == before


def test_a_loop_rests_while_its_client_lingers(fake: FakeService) -> None:
    client = voxtrel.Client("test", fake=fake, linger=LONG)
    client.wait_until_connected()

    async def work() -> float:
        events = client.events()
        client.say("Its events wait for the loop.").wait(LONG)
        fake.freeze()
        client.say("It is waited for.")
        closing = threading.Thread(target=client.close)
        closing.start()
        eventually(lambda: client.is_closed, "the begin of the end")
        begin = time.thread_time()
        await asyncio.sleep(0.5)
        spent = time.thread_time() - begin
        fake.thaw()
        await until_ended(events, 99)
        closing.join()
        return spent

    assert run(work()) < 0.1
