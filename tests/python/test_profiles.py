# SPDX-License-Identifier: Apache-2.0
"""A profile and its file."""

from __future__ import annotations

import dataclasses
from pathlib import Path
from typing import Any

import pytest
import voxtrel
from voxtrel import Profile, Settings, Status, Switch

TEXT = """
version=2
speed_enable=1
speed=200
volume_enable=1
volume=80
media_volume_enable=1
media_volume=30
tts_volume_enable=1
tts_volume=70
voice_enable=1
voice=2
pitch_enable=0
pitch=65535
lang=fr_FR
verbosity=1
enable=0

"""

OUTPUT = """sample_rate=16000
channels=2
mixer_path=3
long_break_duration=4
short_break_duration=5
"""

PROFILE = Profile(
    Settings(
        language="fr-FR",
        voice=2,
        speed=200,
        volume=80.0,
        speech_volume=70,
        media_volume=30,
        verbosity=1,
    ),
    frozenset({Switch.SPEECH, Switch.PITCH}),
)


@pytest.fixture
def path(tmp_path: Path) -> Path:
    return tmp_path / "p.ini"


def test_is_read_whole(path: Path) -> None:
    path.write_text(TEXT + OUTPUT)
    output = {"sample_rate": 16000, "channels": 2, "mixer_path": 3}
    breaks = {"long_break_duration": 4, "short_break_duration": 5}
    assert Profile.read(path) == dataclasses.replace(PROFILE, **output, **breaks)


def test_is_written_as_it_was_read(path: Path) -> None:
    path.write_text(TEXT + OUTPUT)
    Profile.read(str(path)).write(path)
    assert path.read_text() == TEXT


def test_is_changed(path: Path) -> None:
    settings = dataclasses.replace(PROFILE.settings, speed=90, rate=77)
    Profile(settings, frozenset({Switch.VOICE})).write(path)
    text = path.read_text()
    assert "\nspeed=90\n" in text and "voice_enable=0" in text and "\nenable=1\n" in text
    assert "pitch_enable=1" in text
    read = Profile.read(path)
    assert read.settings == dataclasses.replace(settings, rate=None)
    assert read.switched_off == {Switch.VOICE}


def test_sets_nothing_unless_told(path: Path) -> None:
    Profile().write(path)
    read = Profile.read(path)
    assert read.settings == Settings(verbosity=0) and not read.switched_off


def test_that_cannot_be_read_or_written_raises(path: Path) -> None:
    nowhere = path / "p.ini"
    for call in (Profile.read, Profile().write):
        with pytest.raises(voxtrel.Error) as raised:
            call(nowhere)
        assert raised.value.status is Status.PROFILE_ERROR and str(nowhere) in str(raised.value)


def test_cannot_hold_every_value(path: Path) -> None:
    with pytest.raises(voxtrel.BadParameter):
        Profile(Settings(media_volume=101)).write(path)
    wrong: Any = 1
    for profile in (Profile(wrong), Profile(switched_off=frozenset({wrong}))):
        with pytest.raises(TypeError):
            profile.write(path)
    with pytest.raises(ValueError):
        Profile().write("a\0b")
    assert not path.exists()


def test_of_the_device_has_a_place_of_its_own() -> None:
    assert Profile.path_of("radio") == "/Customer/radio.ini"
    assert Profile.path_of("라디오") == "/Customer/라디오.ini"
    with pytest.raises(ValueError):
        Profile.path_of("a\0b")
