# SPDX-License-Identifier: Apache-2.0
"""From Python's values to C's and back; wrong types are TypeError, wrong values ValueError."""

from __future__ import annotations

import ctypes
import enum
import math
import os
from collections.abc import Iterable
from contextlib import contextmanager
from ctypes import c_char_p, c_float, c_int, c_size_t, c_uint
from typing import Any, Iterator, Optional, Union

from ._native import (
    CLIENT_DEADLINE,
    Function,
    RawEvent,
    RawOutcome,
    RawPeer,
    RawVoice,
    check,
    new_handle,
    text_of,
    vx,
)
from ._values import (
    Diagnosis,
    Event,
    EventKind,
    Features,
    OnLoss,
    Outcome,
    OutcomeKind,
    Peer,
    Range,
    Reach,
    Setting,
    Settings,
    SpeechOptions,
    Status,
    Stopper,
    Voice,
)

MOST_MILLISECONDS = 2**31 - 1
_MOST_UNSIGNED = 2**32 - 1
_MOST_FLOAT = 3.4028234663852886e38


def text_to_c(text: str, what: str) -> bytes:
    if not isinstance(text, str):
        raise TypeError(f"{what} is a str, not {type(text).__name__}")
    encoded = text.encode("utf-8")
    if b"\0" in encoded:
        raise ValueError(f"{what} has a NUL character")
    return encoded


def path_to_c(path: Union[str, os.PathLike[str]]) -> bytes:
    encoded = os.fsencode(path)
    if b"\0" in encoded:
        raise ValueError("path has a NUL character")
    return encoded


def whole_number(value: int, least: int, most: int, what: str) -> int:
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{what} is an int, not {type(value).__name__}")
    if not least <= value <= most:
        raise ValueError(f"{what} is from {least} to {most}, not {value}")
    return value


def real_number(value: float, what: str) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise TypeError(f"{what} is a float, not {type(value).__name__}")
    if not abs(value) <= _MOST_FLOAT:
        raise ValueError(f"{what} is a finite number of single precision, not {value}")
    return float(value)


def seconds(value: float, what: str) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise TypeError(f"{what} is a number of seconds, not {type(value).__name__}")
    if not value >= 0:
        raise ValueError(f"{what} is from 0 seconds on, not {value}")
    return float(min(value, MOST_MILLISECONDS))


def milliseconds(value: float, what: str) -> int:
    """Rounded up, so that a wait is never shorter than it was meant; at most 24 days."""
    return math.ceil(min(seconds(value, what) * 1000, MOST_MILLISECONDS))


def deadline_to_c(deadline: Optional[float]) -> int:
    return CLIENT_DEADLINE if deadline is None else milliseconds(deadline, "deadline")


def member(enumeration: type[enum.IntEnum], value: object, what: str) -> int:
    if not isinstance(value, enumeration):
        raise TypeError(f"{what} is a voxtrel.{enumeration.__name__}, not {type(value).__name__}")
    return int(value)


# What C has a setter and a getter for, by the name that both have in common, and its type there.
_OPTIONS: dict[str, Any] = {
    "language": c_char_p,
    "voice": c_char_p,
    "speed": c_uint,
    "pitch": c_float,
    "volume": c_float,
    "speech_volume": c_uint,
    "media_volume": c_uint,
    "on_loss": c_int,
}
_SETTINGS: dict[str, Any] = {**_OPTIONS, "voice": c_uint, "rate": c_uint, "verbosity": c_int}
del _SETTINGS["on_loss"]

_Fields = Iterable[tuple[str, Any, Any, Any]]


def _fields(prefix: str, types: dict[str, Any]) -> list[tuple[str, Any, Function, Function]]:
    return [
        (name, kind, vx[f"{prefix}_set_{name}"], vx[f"{prefix}_get_{name}"])
        for name, kind in types.items()
    ]


_OPTION_FIELDS = _fields("vx_options", _OPTIONS)
_SETTING_FIELDS = _fields("vx_settings", _SETTINGS)


def _to_c(name: str, kind: Any, value: Any) -> Union[bytes, int, float]:
    if name == "on_loss":
        return member(OnLoss, value, name)
    if kind is c_char_p:
        return text_to_c(value, name)
    if kind is c_uint:
        return whole_number(value, 0, _MOST_UNSIGNED, name)
    if kind is c_float:
        return real_number(value, name)
    return whole_number(value, -(2**31), 2**31 - 1, name)


def _write(handle: int, fields: _Fields, values: object) -> None:
    for name, kind, setter, _ in fields:
        value = getattr(values, name)
        if value is not None:
            check(setter(handle, _to_c(name, kind, value)))


def _read(handle: int, fields: _Fields) -> dict[str, Any]:
    found: dict[str, Any] = {}
    for name, kind, _, getter in fields:
        out = kind()
        status = getter(handle, ctypes.byref(out))
        if status != Status.NOT_SET:
            check(status)
            found[name] = out.value.decode() if kind is c_char_p else out.value
    return found


@contextmanager
def options_in_c(options: SpeechOptions) -> Iterator[int]:
    if not isinstance(options, SpeechOptions):
        raise TypeError(f"options are voxtrel.SpeechOptions, not {type(options).__name__}")
    handle = new_handle("options", vx["vx_options_new"])
    try:
        _write(handle, _OPTION_FIELDS, options)
        yield handle
    finally:
        vx["vx_options_free"](handle)


def take_options(handle: int) -> SpeechOptions:
    """Reads options and frees them."""
    try:
        found = _read(handle, _OPTION_FIELDS)
    finally:
        vx["vx_options_free"](handle)
    if "on_loss" in found:
        found["on_loss"] = OnLoss(found["on_loss"])
    return SpeechOptions(**found)


@contextmanager
def settings_in_c(settings: Settings) -> Iterator[int]:
    if not isinstance(settings, Settings):
        raise TypeError(f"settings are voxtrel.Settings, not {type(settings).__name__}")
    handle = new_handle("settings", vx["vx_settings_new"])
    try:
        _write(handle, _SETTING_FIELDS, settings)
        yield handle
    finally:
        vx["vx_settings_free"](handle)


def take_settings(handle: int) -> Settings:
    """Reads settings and frees them."""
    try:
        return Settings(**_read(handle, _SETTING_FIELDS))
    finally:
        vx["vx_settings_free"](handle)


def _range(handle: int, name: str, kind: Any) -> Optional[Range[Any]]:
    least, most = kind(), kind()
    status = vx[f"vx_features_{name}"](handle, ctypes.byref(least), ctypes.byref(most))
    if status == Status.NOT_SUPPORTED:
        return None
    check(status)
    return Range(least.value, most.value)


def _count(handle: int, name: str) -> int:
    count = c_size_t()
    check(vx[name](handle, ctypes.byref(count)))
    return count.value


def _voice(get: Function, handle: int, index: int) -> Voice:
    voice = RawVoice()
    check(get(handle, index, ctypes.byref(voice)))
    # A service has room for so many bytes of a name, and may cut it within a character.
    return Voice(voice.name.decode("utf-8", "replace"), voice.language.decode(), voice.number)


def _languages(handle: int, kind: str) -> tuple[str, ...]:
    count = _count(handle, f"vx_features_{kind}language_count")
    get = vx[f"vx_features_{kind}language"]
    return tuple(text_of(get, handle, i) for i in range(count))


def _voices(handle: int, kind: str) -> tuple[Voice, ...]:
    count = _count(handle, f"vx_features_{kind}voice_count")
    get = vx[f"vx_features_{kind}voice"]
    return tuple(_voice(get, handle, i) for i in range(count))


def take_features(handle: int) -> Features:
    """Reads features and frees them."""
    try:
        return Features(
            speed=_range(handle, "speed", c_uint),
            pitch=_range(handle, "pitch", c_float),
            volume=_range(handle, "volume", c_float),
            languages=_languages(handle, ""),
            voices=_voices(handle, ""),
            filtered_languages=_languages(handle, "filtered_"),
            filtered_voices=_voices(handle, "filtered_"),
        )
    finally:
        vx["vx_features_free"](handle)


def _number(get: Function, handle: int) -> int:
    out = c_int()
    check(get(handle, ctypes.byref(out)))
    return out.value


def _peer(get: Function, handle: int) -> Peer:
    raw = RawPeer()
    check(get(handle, ctypes.byref(raw)))
    return Peer(raw.process, raw.user if raw.user_known else None, bool(raw.stopped))


def take_diagnosis(handle: int) -> Diagnosis:
    """Reads a diagnosis and frees it."""
    why, message, path = c_int(), c_char_p(), c_char_p()
    try:
        check(vx["vx_diagnosis_why_not"](handle, ctypes.byref(why), ctypes.byref(message)))
        check(vx["vx_diagnosis_path"](handle, ctypes.byref(path)))
        return Diagnosis(
            reach=Reach(_number(vx["vx_diagnosis_reach"], handle)),
            status=Status(why.value),
            message=(message.value or b"").decode("utf-8", "replace"),
            transport=text_of(vx["vx_diagnosis_transport"], handle),
            path=os.fsdecode(path.value or b""),
            error=_number(vx["vx_diagnosis_error"], handle),
            manager=_peer(vx["vx_diagnosis_manager"], handle),
            service=_peer(vx["vx_diagnosis_service"], handle),
            takes_any_pause=bool(_number(vx["vx_diagnosis_takes_any_pause"], handle)),
        )
    finally:
        vx["vx_diagnosis_free"](handle)


def take_texts(handle: int) -> list[str]:
    """Reads a list of texts and frees it."""
    try:
        indices = range(_count(handle, "vx_texts_count"))
        return [text_of(vx["vx_texts_get"], handle, i) for i in indices]
    finally:
        vx["vx_texts_free"](handle)


def outcome_of(raw: RawOutcome) -> Outcome:
    return Outcome(
        OutcomeKind(raw.kind),
        Status(raw.status),
        Stopper(raw.stopper),
        bool(raw.heard),
        (raw.message or b"").decode(),
    )


def event_of(raw: RawEvent) -> Event:
    kind = EventKind(raw.kind)
    return Event(
        kind,
        raw.utterance,
        raw.position.characters,
        outcome_of(raw.outcome) if kind is EventKind.ENDED else None,
        Setting(raw.setting) if kind is EventKind.CHANGED else None,
        raw.value,
    )
