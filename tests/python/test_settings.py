# SPDX-License-Identifier: Apache-2.0
"""What all clients share, with the real service."""

from __future__ import annotations

import dataclasses
import gc
from pathlib import Path

import pytest
import voxtrel
from conftest import LONG, eventually
from voxtrel import Setting, Settings, SpeechOptions, Status, Switch
from voxtrel import _client
from voxtrel import _native as native
from voxtrel.testing import FakeService


def test_tells_what_the_service_can_do(client: voxtrel.Client) -> None:
    features = client.features()
    assert features.speed == voxtrel.Range(80, 900)
    assert features.pitch is not None and 200 in features.pitch and 401 not in features.pitch
    assert features.volume == voxtrel.Range(0.0, 100.0)
    assert features.languages == ("en-US", "fr-FR", "es-ES", "ko-KR", "pt-PT")
    french = [voice for voice in features.voices if voice.language == "fr-FR"]
    assert [voice.number for voice in french] == list(range(1, len(french) + 1))
    assert all(voice.name for voice in french)


def test_every_setting_is_changed_and_read(client: voxtrel.Client) -> None:
    wanted = Settings(
        language="fr-FR",
        voice=2,
        speed=250,
        pitch=100.0,
        volume=50.0,
        speech_volume=60,
        media_volume=70,
        verbosity=1,
        rate=250,
    )
    client.change(wanted)
    assert client.settings() == wanted
    client.reset_settings()
    assert client.settings().language == "en-US" and client.settings().speed == 300


def test_changes_only_what_is_set(client: voxtrel.Client) -> None:
    before = client.settings()
    client.change(Settings())
    assert client.settings() == before
    client.change(Settings(speed=111))
    assert client.settings() == dataclasses.replace(before, speed=111, rate=111)
    client.change(Settings(rate=222))
    assert client.settings() == dataclasses.replace(before, speed=222, rate=222)


def test_a_setting_that_is_refused_raises(client: voxtrel.Client) -> None:
    before = client.settings()
    with pytest.raises(voxtrel.BadParameter) as raised:
        client.change(Settings(speed=10**6))
    assert raised.value.status is Status.BAD_PARAMETER and isinstance(raised.value, ValueError)
    assert str(raised.value)
    assert client.settings() == before


@pytest.mark.parametrize("which", Switch)
def test_switches_turn(client: voxtrel.Client, which: Switch) -> None:
    assert client.is_on(which) is True
    client.turn(which, False)
    assert client.is_on(which) is False
    client.turn(which, True)
    assert client.is_on(which) is True


def test_silence_for_everybody_is_a_refusal(client: voxtrel.Client) -> None:
    client.turn(Switch.SPEECH, False)
    assert client.say("Hello.").wait(LONG).status is Status.DISABLED
    client.turn(Switch.SPEECH, True)
    assert client.say("Hello.").wait(LONG)


def test_the_lock_is_held_within_its_block(client: voxtrel.Client) -> None:
    with client.lock() as lock:
        assert lock.is_held
        with pytest.raises(voxtrel.Locked) as raised:
            client.lock()
        assert raised.value.status is Status.LOCKED
    assert not lock.is_held
    lock.release()
    with client.lock():
        pass


def test_a_lock_that_nobody_holds_is_given_back(client: voxtrel.Client) -> None:
    client.lock()
    gc.collect()
    with client.lock() as lock:
        assert lock.is_held


def test_a_lock_outlives_its_client(fake: FakeService) -> None:
    with voxtrel.Client("test", fake=fake) as client:
        client.wait_until_connected(LONG)
        lock = client.lock(LONG)
    lock.release()
    assert not lock.is_held


def test_another_process_with_the_lock_keeps_it(fake: FakeService, faked: voxtrel.Client) -> None:
    fake.lock_by_another(77)
    with pytest.raises(voxtrel.Locked):
        faked.lock()
    fake.unlock_by_another()
    with faked.lock():
        assert fake.requests()[-1] == "lock"


def test_what_is_in_the_way_is_told(fake: FakeService, faked: voxtrel.Client) -> None:
    faked.wait_until_connected(LONG)
    assert faked.diagnose() == voxtrel.Diagnosis(voxtrel.Reach.CONNECTED, Status.OK, "")
    fake.die()
    eventually(lambda: not faked.is_connected, "the end of the service is noticed")
    seen = faked.diagnose()
    assert seen.reach is voxtrel.Reach.NO_SERVICE and seen.status is Status.SERVICE_NOT_FOUND
    assert "no speech service is registered" in seen.message


def test_trusted_users_are_numbers(fake: FakeService) -> None:
    with voxtrel.Client("test", fake=fake, trusted_users=[0, 4711]) as client:
        client.wait_until_connected(LONG)
    with pytest.raises(TypeError):
        voxtrel.Client("test", fake=fake, trusted_users=["anna"])  # type: ignore[list-item]


def test_who_trusts_nobody_else_does_not_trust_everybody(
    fake: FakeService, monkeypatch: pytest.MonkeyPatch
) -> None:
    name = "vx_client_options_trust_user"
    trust = native.vx[name]
    trusted: list[int] = []

    def note(options: int, user: int) -> int:
        trusted.append(user)
        return trust(options, user)

    everything: dict[str, object] = {**native.vx, name: note}
    monkeypatch.setattr(_client, "vx", everything)
    voxtrel.Client(fake=fake).close()
    assert not trusted, "anybody is"
    voxtrel.Client(fake=fake, trusted_users=[]).close()
    assert trusted == [0], "only root, who is in any case"


def test_a_lock_is_seen_and_broken(fake: FakeService, faked: voxtrel.Client) -> None:
    assert faked.lock_state() is voxtrel.LockState.FREE
    fake.lock_by_another(77)
    assert faked.lock_state() is voxtrel.LockState.HELD_BY_ANOTHER
    assert faked.break_lock() == 77
    assert faked.break_lock() == 0
    with faked.lock():
        assert faked.lock_state() is voxtrel.LockState.HELD_BY_THIS_PROCESS


def test_a_lock_is_lost_with_the_service(fake: FakeService, faked: voxtrel.Client) -> None:
    with faked.lock() as lock:
        fake.die()
        assert not lock.is_held


def test_defaults_go_through_a_profile(client: voxtrel.Client, tmp_path: Path) -> None:
    wanted = SpeechOptions(language="fr-FR", speed=250, pitch=20.0, media_volume=10)
    client.defaults = wanted
    client.save_profile(tmp_path / "profile.ini")
    client.defaults = SpeechOptions(volume=5.0)
    client.load_profile(str(tmp_path / "profile.ini"))
    assert client.defaults == wanted


def test_a_profile_that_cannot_be_read_raises(client: voxtrel.Client, tmp_path: Path) -> None:
    for call in (client.load_profile, client.save_profile):
        with pytest.raises(voxtrel.Error) as raised:
            call(tmp_path / "none" / "profile.ini")
        assert raised.value.status is Status.PROFILE_ERROR
        with pytest.raises(ValueError):
            call("a\0b")


def test_changes_are_told_to_the_other_client(client: voxtrel.Client) -> None:
    with voxtrel.Client("other") as other:
        other.wait_until_connected(LONG)
        changes: list[tuple[object, int]] = []
        other.on_event(lambda event: changes.append((event.setting, event.value)))
        client.change(Settings(speed=234))
        end = other.say("a")
        end.wait(LONG)
        other.dispatch()
        assert (Setting.SPEED, 234) in changes
