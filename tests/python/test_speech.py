# SPDX-License-Identifier: Apache-2.0
"""Saying, waiting and stopping, with the fake service."""

from __future__ import annotations

import math
from typing import Any, Callable

import pytest
import voxtrel
from conftest import LONG, eventually
from voxtrel import EventKind, OnLoss, OutcomeKind, SpeechOptions, Status, Stopper
from voxtrel.testing import FakeService

ALL = SpeechOptions(
    language="fr-FR",
    voice="2",
    speed=250,
    pitch=20.0,
    volume=30.0,
    speech_volume=40,
    media_volume=50,
    on_loss=OnLoss.SAY_AGAIN,
)
AS_ASKED = "fr-FR voice 2 speed 250 pitch 20 volume 30 speech-volume 40 media-volume 50"


def test_says_a_text_to_its_end(fake: FakeService, faked: voxtrel.Client) -> None:
    outcome = faked.say("Hello.").wait(LONG)
    assert outcome and outcome.kind is OutcomeKind.FINISHED and outcome.heard
    assert outcome.status is Status.OK and outcome.stopper is Stopper.NOBODY
    assert outcome.message == "spoken to its end"
    assert fake.spoken() == ["Hello."]


def test_numbers_utterances_from_one(faked: voxtrel.Client) -> None:
    assert [faked.say("a").number, faked.pause(0.001).number, faked.say("b").number] == [1, 2, 3]


def test_every_option_reaches_the_service(fake: FakeService, faked: voxtrel.Client) -> None:
    faked.say("Salut.", **vars(ALL)).wait(LONG)
    assert fake.requests()[-1] == f'say 1 "Salut." {AS_ASKED}'


def test_defaults_hold_where_nothing_is_set(fake: FakeService, faked: voxtrel.Client) -> None:
    assert faked.defaults == SpeechOptions()
    faked.defaults = ALL
    assert faked.defaults == ALL
    faked.say("Salut.").wait(LONG)
    assert fake.requests()[-1].endswith(AS_ASKED)
    faked.say("Salut.", speed=100).wait(LONG)
    assert fake.requests()[-1].endswith(AS_ASKED.replace("250", "100"))


def test_pauses_in_seconds(fake: FakeService, faked: voxtrel.Client) -> None:
    assert faked.pause(0.25).wait(LONG)
    assert fake.spoken() == ["(pause 250 ms)"]


def test_texts_of_any_characters_are_spoken(fake: FakeService, faked: voxtrel.Client) -> None:
    texts = ["안녕하세요.", "Ça va ?", "😀", "a\nb", ""]
    for text in texts:
        faked.say(text).wait(LONG)
    assert [text for text in fake.spoken() if text] == [text for text in texts if text]


def test_refusals_are_outcomes(fake: FakeService, faked: voxtrel.Client) -> None:
    refused = faked.say("Hello.", language="xx").wait(LONG)
    assert not refused and refused.kind is OutcomeKind.REFUSED
    assert refused.status is Status.NOT_SUPPORTED and not refused.heard
    fake.refuse_next(Status(-55))
    assert faked.say("Hello.").wait(LONG).status == -55
    fake.refuse_next(Status.QUEUE_FULL)
    assert faked.say("Hello.").wait(LONG).status is Status.QUEUE_FULL


def test_what_is_taken_need_not_be_spoken(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    held = faked.say("Held.")
    faked.wait_until_taken()
    assert held.outcome.kind is OutcomeKind.PENDING
    fake.go_on()
    assert held.wait(LONG)


def test_a_service_shows_that_it_tells_of_something(
    fake: FakeService, faked: voxtrel.Client
) -> None:
    faked.check_events()
    fake.freeze()
    with pytest.raises(voxtrel.TimedOut):
        faked.check_events(0.02)
    fake.thaw()
    faked.check_events(LONG)


def test_stops_what_another_process_said(fake: FakeService, faked: voxtrel.Client) -> None:
    faked.stop_process(4711)
    assert fake.requests()[-1] == "stop process 4711"


def test_stops_what_the_client_said(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    utterance = faked.say("Hello.")
    assert utterance.outcome.is_pending and not utterance.outcome
    faked.stop()
    outcome = utterance.wait(LONG)
    assert outcome.kind is OutcomeKind.STOPPED and outcome.stopper is Stopper.THIS_CLIENT


def test_knows_who_stopped_it(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    with voxtrel.Client("other", fake=fake) as other:
        first = faked.say("Hello.")
        eventually(lambda: any("say" in line for line in fake.requests()), "the request")
        other.stop_everybody(LONG)
        assert first.wait(LONG).stopper is Stopper.THIS_PROCESS
    second = faked.say("Hello.")
    eventually(lambda: sum("say" in line for line in fake.requests()) == 2, "the request")
    fake.stop_by_another()
    assert second.wait(LONG).stopper is Stopper.SOMEBODY


def test_stopping_one_client_leaves_the_other(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    with voxtrel.Client("other", fake=fake) as other:
        theirs, ours = other.say("theirs"), faked.say("ours")
        assert (theirs.number, ours.number) == (1, 1)
        faked.stop()
        assert ours.wait(LONG).kind is OutcomeKind.STOPPED
        fake.go_on()
        assert theirs.wait(LONG)
    assert fake.spoken() == ["theirs"]


def test_waiting_ends_in_time(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    utterance = faked.say("Hello.")
    for wait in (utterance.wait, faked.wait_for_all):
        for timeout in (0, 0.01, 0.12):
            with pytest.raises(TimeoutError) as raised:
                wait(timeout)
            assert isinstance(raised.value, voxtrel.TimedOut)
            assert raised.value.status is Status.TIMED_OUT
    fake.go_on()
    faked.wait_for_all()
    assert utterance.wait()


def test_what_is_lost_can_be_said_again(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    lost = faked.say("lost")
    again = faked.say("again", on_loss=OnLoss.SAY_AGAIN)
    eventually(lambda: sum("say" in line for line in fake.requests()) == 2, "the requests")
    fake.die()
    outcome = lost.wait(LONG)
    assert outcome.kind is OutcomeKind.LOST and outcome.status is Status.NO_SERVICE
    assert again.outcome.is_pending
    fake.go_on()
    fake.come_back()
    assert again.wait(LONG)
    assert fake.spoken() == ["again"]


def test_a_service_that_was_ended_says_so(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.hold()
    utterance = faked.say("Hello.")
    eventually(lambda: any("say" in line for line in fake.requests()), "the request")
    fake.shut_down()
    assert utterance.wait(LONG).status is Status.SHUTDOWN


def test_a_lost_request_is_lost(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.lose_next_request()
    assert faked.say("lost").wait(LONG).kind is OutcomeKind.LOST
    fake.lose_next_event()
    first, second = faked.say("first"), faked.say("second")
    assert not first.wait(LONG).is_pending and second.wait(LONG)


def test_an_event_of_each_kind_can_be_lost(fake: FakeService, faked: voxtrel.Client) -> None:
    kinds: list[EventKind] = []
    faked.on_event(lambda event: kinds.append(event.kind))
    fake.lose_next_event(EventKind.WORD)
    assert faked.say("One.").wait(LONG) and faked.say("Two.").wait(LONG)
    eventually(lambda: faked.dispatch() >= 0 and kinds.count(EventKind.ENDED) == 2, "the events")
    assert kinds.count(EventKind.WORD) == 1
    with pytest.raises(voxtrel.BadParameter):
        fake.lose_next_event(EventKind.MARK)


def test_positions_are_indices_into_the_text(fake: FakeService, faked: voxtrel.Client) -> None:
    text = "Hé 😀 tout le monde"
    words = []
    faked.on_event(
        lambda event: words.append(text[event.position :].split()[0])
        if event.kind is voxtrel.EventKind.WORD
        else None
    )
    utterance = faked.say(text)
    utterance.wait(LONG)
    eventually(lambda: faked.dispatch() + 1 and words[-1:] == ["monde"], "the last word")
    assert [word for word in words if word.isalpha()] == ["Hé", "tout", "le", "monde"]
    assert utterance.position == text.index("monde")


def test_a_text_with_a_nul_is_refused(faked: voxtrel.Client) -> None:
    wrong: list[dict[str, Any]] = [
        {"text": "a\0b"},
        {"text": "a", "language": "f\0r"},
        {"text": "\ud83d"},
    ]
    for arguments in wrong:
        with pytest.raises(ValueError):
            faked.say(**arguments)
    with pytest.raises(ValueError):
        voxtrel.Client("a\0b")


@pytest.mark.parametrize(
    "options",
    [
        {"text": b"bytes"},
        {"text": None},
        {"language": 3},
        {"voice": 3},
        {"speed": "fast"},
        {"speed": 2.5},
        {"speed": True},
        {"pitch": "high"},
        {"volume": False},
        {"media_volume": 1.0},
        {"on_loss": 1},
        {"rate": 1},
    ],
)
def test_wrong_types_are_type_errors(faked: voxtrel.Client, options: dict[str, Any]) -> None:
    arguments: dict[str, Any] = {"text": "a", **options}
    with pytest.raises(TypeError):
        faked.say(**arguments)


@pytest.mark.parametrize(
    "options",
    [{"speed": -1}, {"speed": 2**32}, {"pitch": math.nan}, {"volume": math.inf}, {"pitch": 1e39}],
)
def test_wrong_values_are_value_errors(faked: voxtrel.Client, options: dict[str, Any]) -> None:
    with pytest.raises(ValueError):
        faked.say("a", **options)
    with pytest.raises(ValueError):
        faked.defaults = SpeechOptions(**options)


def test_times_are_seconds_from_zero_on(fake: FakeService, faked: voxtrel.Client) -> None:
    utterance = faked.say("a")
    calls: list[Callable[[Any], object]] = [
        utterance.wait,
        faked.pause,
        faked.settings,
        faked.wait_until_connected,
        fake.answer_after,
        lambda time: voxtrel.Client(deadline=time),
        lambda time: voxtrel.Client(linger=time),
    ]
    for call in calls:
        for value in (-1, math.nan):
            with pytest.raises(ValueError):
                call(value)
        with pytest.raises(TypeError):
            call("1")
    assert utterance.wait(math.inf)


def test_takes_no_values_of_other_classes(fake: FakeService, faked: voxtrel.Client) -> None:
    wrong: Any = 1
    with pytest.raises(TypeError):
        faked.defaults = wrong
    with pytest.raises(TypeError):
        faked.change(wrong)
    with pytest.raises(TypeError):
        faked.is_on(wrong)
    with pytest.raises(TypeError):
        faked.turn(voxtrel.Switch.SPEED, wrong)
    with pytest.raises(TypeError):
        faked.on_event(wrong)
    with pytest.raises(TypeError):
        faked.save_profile(wrong + 0.5)
    with pytest.raises(TypeError):
        fake.refuse_next(wrong)
    with pytest.raises(TypeError):
        voxtrel.Client(fake=wrong)


def test_describes_statuses() -> None:
    said = {voxtrel.describe(status) for status in Status if status is not Status.OK}
    assert all(said) and "\n" not in "".join(said)
    assert len(said) == len(Status) - 1
