# SPDX-License-Identifier: Apache-2.0
"""The C interface, <voxtrel/voxtrel.h> and <voxtrel/testing/fake.h>, as ctypes sees it."""

from __future__ import annotations

import ctypes
import os
import threading
from ctypes import POINTER, c_char_p, c_float, c_int, c_size_t, c_uint, c_ulong, c_void_p
from typing import Any, Callable

from ._errors import Closed, error_for
from ._values import Status

Function = Callable[..., int]


class Position(ctypes.Structure):
    _fields_ = [("bytes", c_size_t), ("characters", c_size_t)]


class RawOutcome(ctypes.Structure):
    _fields_ = [
        ("kind", c_int),
        ("status", c_int),
        ("stopper", c_int),
        ("heard", c_int),
        ("message", c_char_p),
        ("reserved", c_void_p * 4),
    ]


class RawEvent(ctypes.Structure):
    _fields_ = [
        ("kind", c_int),
        ("utterance", c_ulong),
        ("position", Position),
        ("outcome", RawOutcome),
        ("setting", c_ulong),
        ("value", c_ulong),
        ("reserved", c_void_p * 8),
    ]


class RawVoice(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("language", c_char_p),
        ("number", c_uint),
        ("reserved", c_void_p * 4),
    ]


class RawPeer(ctypes.Structure):
    _fields_ = [
        ("process", c_uint),
        ("user_known", c_int),
        ("user", c_uint),
        ("stopped", c_int),
        ("reserved", c_void_p * 4),
    ]


class RawProfileOutput(ctypes.Structure):
    _fields_ = [
        ("sample_rate", c_int),
        ("channels", c_int),
        ("mixer_path", c_int),
        ("long_break_duration", c_int),
        ("short_break_duration", c_int),
        ("reserved", c_void_p * 4),
    ]


_OUT = POINTER(c_void_p)

FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "vx_describe": (c_int, POINTER(c_char_p)),
    "vx_last_error": (POINTER(c_char_p),),
    "vx_options_new": (_OUT,),
    "vx_options_free": (c_void_p,),
    "vx_options_set_language": (c_void_p, c_char_p),
    "vx_options_set_voice": (c_void_p, c_char_p),
    "vx_options_set_speed": (c_void_p, c_uint),
    "vx_options_set_pitch": (c_void_p, c_float),
    "vx_options_set_volume": (c_void_p, c_float),
    "vx_options_set_speech_volume": (c_void_p, c_uint),
    "vx_options_set_media_volume": (c_void_p, c_uint),
    "vx_options_set_on_loss": (c_void_p, c_int),
    "vx_options_get_language": (c_void_p, POINTER(c_char_p)),
    "vx_options_get_voice": (c_void_p, POINTER(c_char_p)),
    "vx_options_get_speed": (c_void_p, POINTER(c_uint)),
    "vx_options_get_pitch": (c_void_p, POINTER(c_float)),
    "vx_options_get_volume": (c_void_p, POINTER(c_float)),
    "vx_options_get_speech_volume": (c_void_p, POINTER(c_uint)),
    "vx_options_get_media_volume": (c_void_p, POINTER(c_uint)),
    "vx_options_get_on_loss": (c_void_p, POINTER(c_int)),
    "vx_client_options_new": (_OUT,),
    "vx_client_options_free": (c_void_p,),
    "vx_client_options_set_deadline": (c_void_p, c_int),
    "vx_client_options_set_linger": (c_void_p, c_int),
    "vx_client_options_set_handler_thread": (c_void_p, c_int),
    "vx_client_options_trust_user": (c_void_p, c_uint),
    "vx_client_new": (c_char_p, c_void_p, _OUT),
    "vx_client_free": (c_void_p,),
    "vx_is_connected": (c_void_p, POINTER(c_int)),
    "vx_wait_until_connected": (c_void_p, c_int),
    "vx_diagnose": (c_void_p, c_int, _OUT),
    "vx_diagnosis_free": (c_void_p,),
    "vx_diagnosis_reach": (c_void_p, POINTER(c_int)),
    "vx_diagnosis_why_not": (c_void_p, POINTER(c_int), POINTER(c_char_p)),
    "vx_diagnosis_transport": (c_void_p, POINTER(c_char_p)),
    "vx_diagnosis_path": (c_void_p, POINTER(c_char_p)),
    "vx_diagnosis_error": (c_void_p, POINTER(c_int)),
    "vx_diagnosis_manager": (c_void_p, POINTER(RawPeer)),
    "vx_diagnosis_service": (c_void_p, POINTER(RawPeer)),
    "vx_diagnosis_takes_any_pause": (c_void_p, POINTER(c_int)),
    "vx_set_defaults": (c_void_p, c_void_p),
    "vx_get_defaults": (c_void_p, _OUT),
    "vx_say": (c_void_p, c_char_p, c_void_p, _OUT),
    "vx_pause": (c_void_p, c_int, _OUT),
    "vx_stop": (c_void_p,),
    "vx_stop_everybody": (c_void_p, c_int),
    "vx_stop_process": (c_void_p, c_uint, c_int),
    "vx_wait_until_taken": (c_void_p, c_int),
    "vx_check_events": (c_void_p, c_int),
    "vx_wait_for_all": (c_void_p, c_int),
    "vx_utterance_number": (c_void_p, POINTER(c_ulong)),
    "vx_utterance_outcome": (c_void_p, POINTER(RawOutcome)),
    "vx_utterance_wait": (c_void_p, c_int, POINTER(RawOutcome)),
    "vx_utterance_position": (c_void_p, POINTER(Position)),
    "vx_utterance_free": (c_void_p,),
    "vx_client_fd": (c_void_p, POINTER(c_int)),
    "vx_next_event": (c_void_p, POINTER(RawEvent)),
    "vx_get_features": (c_void_p, c_int, _OUT),
    "vx_features_free": (c_void_p,),
    "vx_features_speed": (c_void_p, POINTER(c_uint), POINTER(c_uint)),
    "vx_features_pitch": (c_void_p, POINTER(c_float), POINTER(c_float)),
    "vx_features_volume": (c_void_p, POINTER(c_float), POINTER(c_float)),
    "vx_features_language_count": (c_void_p, POINTER(c_size_t)),
    "vx_features_language": (c_void_p, c_size_t, POINTER(c_char_p)),
    "vx_features_voice_count": (c_void_p, POINTER(c_size_t)),
    "vx_features_voice": (c_void_p, c_size_t, POINTER(RawVoice)),
    "vx_features_filtered_language_count": (c_void_p, POINTER(c_size_t)),
    "vx_features_filtered_language": (c_void_p, c_size_t, POINTER(c_char_p)),
    "vx_features_filtered_voice_count": (c_void_p, POINTER(c_size_t)),
    "vx_features_filtered_voice": (c_void_p, c_size_t, POINTER(RawVoice)),
    "vx_settings_new": (_OUT,),
    "vx_settings_free": (c_void_p,),
    "vx_settings_set_language": (c_void_p, c_char_p),
    "vx_settings_set_voice": (c_void_p, c_uint),
    "vx_settings_set_speed": (c_void_p, c_uint),
    "vx_settings_set_rate": (c_void_p, c_uint),
    "vx_settings_set_pitch": (c_void_p, c_float),
    "vx_settings_set_volume": (c_void_p, c_float),
    "vx_settings_set_speech_volume": (c_void_p, c_uint),
    "vx_settings_set_media_volume": (c_void_p, c_uint),
    "vx_settings_set_verbosity": (c_void_p, c_int),
    "vx_settings_get_language": (c_void_p, POINTER(c_char_p)),
    "vx_settings_get_voice": (c_void_p, POINTER(c_uint)),
    "vx_settings_get_speed": (c_void_p, POINTER(c_uint)),
    "vx_settings_get_rate": (c_void_p, POINTER(c_uint)),
    "vx_settings_get_pitch": (c_void_p, POINTER(c_float)),
    "vx_settings_get_volume": (c_void_p, POINTER(c_float)),
    "vx_settings_get_speech_volume": (c_void_p, POINTER(c_uint)),
    "vx_settings_get_media_volume": (c_void_p, POINTER(c_uint)),
    "vx_settings_get_verbosity": (c_void_p, POINTER(c_int)),
    "vx_get_settings": (c_void_p, c_int, _OUT),
    "vx_change_settings": (c_void_p, c_void_p, c_int),
    "vx_reset_settings": (c_void_p, c_int),
    "vx_is_on": (c_void_p, c_int, c_int, POINTER(c_int)),
    "vx_turn": (c_void_p, c_int, c_int, c_int),
    "vx_take_lock": (c_void_p, c_int, _OUT),
    "vx_lock_is_held": (c_void_p, POINTER(c_int)),
    "vx_lock_free": (c_void_p,),
    "vx_lock_state": (c_void_p, c_int, POINTER(c_int)),
    "vx_break_lock": (c_void_p, c_int, POINTER(c_uint)),
    "vx_save_profile": (c_void_p, c_char_p),
    "vx_load_profile": (c_void_p, c_char_p),
    "vx_profile_new": (_OUT,),
    "vx_profile_free": (c_void_p,),
    "vx_profile_path_of": (c_char_p, c_char_p, c_size_t),
    "vx_profile_read": (c_char_p, _OUT),
    "vx_profile_write": (c_void_p, c_char_p),
    "vx_profile_get_settings": (c_void_p, _OUT),
    "vx_profile_set_settings": (c_void_p, c_void_p),
    "vx_profile_is_on": (c_void_p, c_int, POINTER(c_int)),
    "vx_profile_turn": (c_void_p, c_int, c_int),
    "vx_profile_get_output": (c_void_p, POINTER(RawProfileOutput)),
}

TESTING_FUNCTIONS: dict[str, tuple[Any, ...]] = {
    "vx_client_options_set_fake": (c_void_p, c_void_p),
    "vx_fake_new": (_OUT,),
    "vx_fake_free": (c_void_p,),
    "vx_texts_count": (c_void_p, POINTER(c_size_t)),
    "vx_texts_get": (c_void_p, c_size_t, POINTER(c_char_p)),
    "vx_texts_free": (c_void_p,),
    "vx_fake_spoken": (c_void_p, _OUT),
    "vx_fake_wait_for_spoken": (c_void_p, c_size_t, c_int),
    "vx_fake_requests": (c_void_p, _OUT),
    "vx_fake_hold": (c_void_p,),
    "vx_fake_go_on": (c_void_p,),
    "vx_fake_refuse_next": (c_void_p, c_int),
    "vx_fake_lose_next_request": (c_void_p,),
    "vx_fake_lose_next_event": (c_void_p, c_int),
    "vx_fake_freeze": (c_void_p,),
    "vx_fake_thaw": (c_void_p,),
    "vx_fake_answer_after": (c_void_p, c_int),
    "vx_fake_die": (c_void_p,),
    "vx_fake_shut_down": (c_void_p,),
    "vx_fake_come_back": (c_void_p,),
    "vx_fake_stop_by_another": (c_void_p,),
    "vx_fake_lock_by_another": (c_void_p, c_uint),
    "vx_fake_unlock_by_another": (c_void_p,),
}

FOREVER = -1
CLIENT_DEADLINE = -2
THREAD_OF_APPLICATION = 1


_PATH = os.environ.get("VOXTREL_LIBRARY") or "libvoxtrel.so.1"


def _load(path: str, package: str, signatures: dict[str, tuple[Any, ...]]) -> dict[str, Function]:
    try:
        library = ctypes.CDLL(path)
    except OSError as problem:
        raise ImportError(
            f"voxtrel's library was not found: {problem}; install the package {package}, or set "
            "VOXTREL_LIBRARY to the path of libvoxtrel.so.1"
        ) from None
    functions: dict[str, Function] = {}
    for name, arguments in signatures.items():
        try:
            function = getattr(library, name)
        except AttributeError:
            raise ImportError(
                f"'{path}' has no function {name}: it is another library, or older than this module"
            ) from None
        function.argtypes = arguments
        function.restype = c_int
        functions[name] = function
    return functions


vx = _load(_PATH, "libvoxtrel1", FUNCTIONS)


def load_testing() -> None:
    """Adds the functions of the fake service; its library lies beside the other."""
    path = os.path.join(os.path.dirname(_PATH), "libvoxtrel-testing.so.1")
    vx.update(_load(path, "libvoxtrel-dev", TESTING_FUNCTIONS))

_forks = 0
_uses_runtime = False
_is_cut_off = False


def _after_fork() -> None:
    global _forks, _is_cut_off
    _forks += 1
    _is_cut_off = _uses_runtime


os.register_at_fork(after_in_child=_after_fork)


def use_runtime() -> None:
    """RuntimeError in a child of a process that had done the same: the runtime has ended there."""
    global _uses_runtime
    if _is_cut_off:
        raise RuntimeError(
            "this process was forked from one that had a client, and can have none: start a new "
            "program instead (multiprocessing: the start method 'spawn')"
        )
    _uses_runtime = True


def forks() -> int:
    """How many forks lie between this process and the one that loaded the module."""
    return _forks


def text_of(function: Function, *arguments: object) -> str:
    """The text that a function gives through its last parameter; the library keeps its own."""
    out = c_char_p()
    check(function(*arguments, ctypes.byref(out)))
    return (out.value or b"").decode("utf-8", "replace")


_last_error = vx["vx_last_error"]


def last_error() -> str:
    out = c_char_p()
    _last_error(ctypes.byref(out))
    return (out.value or b"").decode("utf-8", "replace")


def check(status: int) -> None:
    """Raises what a status stands for, with the library's own words on why."""
    if status != 0:
        raise error_for(status, last_error())


def new_handle(kind: str, function: Function, *arguments: object) -> int:
    """The handle that a function gives through its last parameter; of the type vx_`kind`."""
    out = c_void_p()
    try:
        check(function(*arguments, ctypes.byref(out)))
    except BaseException:
        # An interrupt during the call is raised when it has returned, and may have given one.
        if out.value:
            vx[f"vx_{kind}_free"](out.value)
        raise
    return out.value or 0


class Handle:
    """A handle of C that is freed once, and never during a call.

    Where another thread is in a call when it is closed, that thread frees it on its way out.
    A process that was forked off neither uses nor frees the handles of its parent: to it they are
    closed.

    Called on: any thread, finalizers and signal handlers included. These may get in between where
    the mutex is held, which lets its own thread in: so a call counts itself before it looks.
    """

    __slots__ = ("_closed", "_forks", "_free", "_mutex", "_pointer", "_users", "_what")

    def __init__(self, pointer: int, free: Callable[[int], object], what: str) -> None:
        self._pointer = pointer
        self._free = free
        self._what = what
        self._mutex = threading.RLock()
        self._users = 0
        self._closed = False
        self._forks = _forks

    @property
    def closed(self) -> bool:
        return self._closed or self._forks != _forks

    def call(self, function: Function, *arguments: object) -> int:
        """Calls `function` with the handle in front; Closed once it is closed."""
        if self._forks != _forks:
            raise RuntimeError(f"{self._what} was made before a fork: make one of your own")
        with self._mutex:
            self._users += 1
        try:
            if self._closed:
                raise Closed(Status.CLOSED, f"{self._what} is closed")
            return function(self._pointer, *arguments)
        finally:
            with self._mutex:
                self._users -= 1
            self._free_if_done()

    def close(self) -> None:
        if self._forks == _forks:
            self._closed = True
            self._free_if_done()

    def _free_if_done(self) -> None:
        pointer = 0
        with self._mutex:
            if self._closed and self._users == 0:
                pointer, self._pointer = self._pointer, 0
        if pointer:
            self._free(pointer)
