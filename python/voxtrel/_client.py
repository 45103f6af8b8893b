# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

import asyncio
import ctypes
import os
import time
import weakref
from ctypes import c_int, c_uint
from types import TracebackType
from typing import TYPE_CHECKING, Iterable, Optional, Union

from . import _convert as convert
from ._errors import error_for
from ._events import Events, Handler, Hub
from ._native import THREAD_OF_APPLICATION, Handle, check, last_error, new_handle, use_runtime, vx
from ._utterance import SLICE, Utterance, wait_in_slices
from ._values import (
    Diagnosis,
    Features,
    LockState,
    OnLoss,
    Outcome,
    Settings,
    SpeechOptions,
    Switch,
)

if TYPE_CHECKING:
    from .testing import FakeService

# Events that nobody asks for are looked after this often.
_TRIM_EVERY = 64

_NOTHING_SET = (None,) * 8

# Trusted in any case; named, it says that others are not.
_ROOT = 0

_say = vx["vx_say"]


class Lock:
    """Holds the service's lock until it is released: nobody else can speak or change settings.

    `with client.lock(): ...`. Called on: any thread. Given back at the latest when nothing holds
    the object any more, or the interpreter ends.
    """

    def __init__(self, pointer: int) -> None:
        self._handle = Handle(pointer, vx["vx_lock_free"], "the lock")
        self._finalizer = weakref.finalize(self, self._handle.close)

    @property
    def is_held(self) -> bool:
        """False once it was released, the service that gave it has died, or it was broken."""
        if self._handle.closed:
            return False
        held = c_int()
        check(self._handle.call(vx["vx_lock_is_held"], ctypes.byref(held)))
        return bool(held.value)

    def release(self) -> None:
        """Gives it back; nothing if that was done."""
        self._finalizer()

    def __enter__(self) -> Lock:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.release()


class Client:
    """Speaks through the service.

    Made at once. The client finds the service by itself, and again after each death; what is said
    meanwhile waits. No call waits longer than its deadline, whatever the service or the service
    manager does; `say`, `pause` and `stop` do not wait at all. Other threads of the interpreter run
    while a call waits. Clients of one process share one connection and the lock, and do not know
    of each other otherwise.

    Times are in seconds. A `deadline` of None is the client's own; where it passes, TimedOut is
    raised, and an interrupt from the keyboard waits for it unless said otherwise. A value of a
    wrong type is TypeError, one out of range ValueError, and what the library or the service
    refuses is an `Error` with its `status`.

    The client ends with `close`, with its `with` block, when nothing holds it any more (its
    utterances do), or with the interpreter. Utterances without an outcome are LOST, CLOSED then;
    what the service already has is spoken all the same.

    A process that is forked before the first client has clients of its own. One that is forked
    later has none: they raise RuntimeError there, and harm nothing when they end. It starts another
    program instead, or, with multiprocessing, by the start method "spawn".

    Called on: any thread, handlers of events and of signals included.

    name: what the application is called, of use in logs only.
    deadline: how long a call may wait for the service, where it is not told.
    linger: how long the end may wait until the service has what was said. Not waited for are the
        end of the speech, and a service that is not there.
    trusted_users: unless None, only a service of this user's own, of root's, or of one of these, by
        number, is talked to. Those of the client that begins the connection count.
    fake: stands in for the service in tests.
    """

    def __init__(
        self,
        name: str = "",
        *,
        deadline: float = 2.0,
        linger: float = 2.0,
        trusted_users: Optional[Iterable[int]] = None,
        fake: Optional[FakeService] = None,
    ) -> None:
        if fake is None:
            use_runtime()
        else:
            _check_is_fake(fake)
        name_in_c = convert.text_to_c(name, "name")
        deadline_ms = convert.milliseconds(deadline, "deadline")
        linger_ms = convert.milliseconds(linger, "linger")
        self._deadline = deadline_ms / 1000
        self._said = 0
        self._fake = fake
        options = new_handle("client_options", vx["vx_client_options_new"])
        try:
            check(vx["vx_client_options_set_deadline"](options, deadline_ms))
            check(vx["vx_client_options_set_linger"](options, linger_ms))
            check(vx["vx_client_options_set_handler_thread"](options, THREAD_OF_APPLICATION))
            if trusted_users is not None:
                for user in (_ROOT, *trusted_users):
                    number = convert.whole_number(user, 0, 2**32 - 1, "a user")
                    check(vx["vx_client_options_trust_user"](options, number))
            if fake is not None:
                fake.stand_in(options)
            self._hub = Hub(new_handle("client", vx["vx_client_new"], name_in_c, options))
        finally:
            vx["vx_client_options_free"](options)
        self._handle = self._hub.handle
        self._finalizer = weakref.finalize(self, self._handle.close)
        if fake is not None:
            fake.serve(self)

    def close(self) -> None:
        """Ends the client; nothing if that was done. May be called inside its own handler.

        Where another thread is in a call of the client, the client ends with that call.
        """
        self._finalizer()

    @property
    def is_closed(self) -> bool:
        return self._handle.closed

    def __enter__(self) -> Client:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    async def __aenter__(self) -> Client:
        return self

    async def __aexit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        # It may linger, and the loop has other work.
        await asyncio.get_running_loop().run_in_executor(None, self.close)

    # ---- The connection

    @property
    def is_connected(self) -> bool:
        connected = c_int()
        check(self._handle.call(vx["vx_is_connected"], ctypes.byref(connected)))
        return bool(connected.value)

    def wait_until_connected(self, deadline: Optional[float] = None) -> None:
        """Returns once there is a service; raises why there is none.

        An interrupt from the keyboard ends it within a twentieth of a second.
        """
        left = self._deadline if deadline is None else convert.seconds(deadline, "deadline")
        end = time.monotonic() + left
        while True:
            part = min(left, SLICE)
            begin = time.monotonic()
            status = self._handle.call(
                vx["vx_wait_until_connected"], convert.milliseconds(part, "deadline")
            )
            left = end - time.monotonic()
            if status == 0:
                return
            if left <= 0 or time.monotonic() - begin < part:
                raise error_for(status, last_error())

    def diagnose(self, deadline: Optional[float] = None) -> Diagnosis:
        """How far the way to the service goes, and what is in the way.

        Says so as soon as it is known, and at once where there is no service manager; while nobody
        answers it waits a moment, and no longer than the deadline.
        """
        time_in_c = convert.deadline_to_c(deadline)
        diagnose = vx["vx_diagnose"]
        return convert.take_diagnosis(
            new_handle("diagnosis", self._handle.call, diagnose, time_in_c)
        )

    # ---- Speech

    def say(
        self,
        text: str,
        *,
        language: Optional[str] = None,
        voice: Optional[str] = None,
        speed: Optional[int] = None,
        pitch: Optional[float] = None,
        volume: Optional[float] = None,
        speech_volume: Optional[int] = None,
        media_volume: Optional[int] = None,
        on_loss: Optional[OnLoss] = None,
    ) -> Utterance:
        """Speaks a text after what was said before; never waits.

        What is None is as in `defaults`; the fields of `SpeechOptions` have the same names. A text
        that begins with "<speak" is marked up (SSML) where the service understands it.

        A text of any length is spoken; it is held in memory until then. One that is marked up may
        have 262144 bytes of UTF-8. What cannot be spoken raises nothing: its outcome is REFUSED. A
        text with a NUL, or with half of a surrogate pair, is ValueError.
        """
        text_in_c = convert.text_to_c(text, "text")
        options = (language, voice, speed, pitch, volume, speech_volume, media_volume, on_loss)
        if options == _NOTHING_SET:
            return self._utterance(
                new_handle("utterance", self._handle.call, _say, text_in_c, None)
            )
        with convert.options_in_c(SpeechOptions(*options)) as handle:
            return self._utterance(
                new_handle("utterance", self._handle.call, _say, text_in_c, handle)
            )

    def pause(self, length: float) -> Utterance:
        """Silence of `length` seconds among what is said."""
        length_ms = convert.milliseconds(length, "length")
        pause = vx["vx_pause"]
        return self._utterance(new_handle("utterance", self._handle.call, pause, length_ms))

    def _utterance(self, pointer: int) -> Utterance:
        utterance = Utterance(self, pointer)
        self._said += 1
        if self._said % _TRIM_EVERY == 0:
            self._hub.trim()
        return utterance

    def stop(self) -> None:
        """Ends what this client said; never waits. The outcomes come as the service tells them."""
        check(self._handle.call(vx["vx_stop"]))

    def stop_everybody(self, deadline: Optional[float] = None) -> None:
        """Ends what anybody said."""
        check(self._handle.call(vx["vx_stop_everybody"], convert.deadline_to_c(deadline)))

    def stop_process(self, process: int, deadline: Optional[float] = None) -> None:
        """Ends what another process of this user said, which may have ended since.

        Not every service lets it. PermissionDenied: it is not this user's, or has said nothing.
        """
        number = convert.whole_number(process, 0, 2**32 - 1, "process")
        time_in_c = convert.deadline_to_c(deadline)
        check(self._handle.call(vx["vx_stop_process"], number, time_in_c))

    def wait_until_taken(self, deadline: Optional[float] = None) -> None:
        """Waits until the service has everything that this client said.

        What has no outcome then is being spoken or waits at the service for its turn. Of a long
        text that may be as late as it takes to speak all but the last 64 KiB.
        """
        check(self._handle.call(vx["vx_wait_until_taken"], convert.deadline_to_c(deadline)))

    def wait_for_all(self, timeout: Optional[float] = None) -> None:
        """Waits until every utterance of this client has an outcome, for ever or `timeout` seconds.

        TimedOut when some have none then. An interrupt from the keyboard ends it within a
        twentieth of a second.
        """
        wait = vx["vx_wait_for_all"]
        wait_in_slices(lambda ms: self._handle.call(wait, ms), timeout)

    @property
    def defaults(self) -> SpeechOptions:
        """What `say` uses where its own options are None; where these are, too: the service's."""
        get = vx["vx_get_defaults"]
        return convert.take_options(new_handle("options", self._handle.call, get))

    @defaults.setter
    def defaults(self, defaults: SpeechOptions) -> None:
        with convert.options_in_c(defaults) as handle:
            check(self._handle.call(vx["vx_set_defaults"], handle))

    # ---- Events

    def on_event(self, handler: Optional[Handler]) -> None:
        """Calls `handler` for what happens from now on, and for what an earlier one was not called for.

        None: no handler.

        It is called in `dispatch`, and on an event loop that awaits something of this client. What
        it raises comes out of `dispatch`, and what has happened since is handled by the next.
        """
        if handler is not None and not callable(handler):
            raise TypeError(f"a handler is called, which {type(handler).__name__} cannot be")
        self._hub.set_handler(handler)

    def fileno(self) -> int:
        """A descriptor that is readable while `dispatch` has something to do; for `select`.

        It is the client's until that is closed, and must not be read, written or closed.
        """
        return self._hub.fileno()

    def dispatch(self) -> int:
        """Calls the handler for all that has happened, on this thread; one thread at a time.

        How many events there were: 0 inside a handler.
        """
        return self._hub.dispatch()

    def events(self) -> Events:
        """What happens from now on, on the running event loop: `async for event in ...`.

        Each call gives an iterator of its own, which begins with the last 256 events that nobody
        has heard, and ends with the client.
        """
        return Events(self._hub, self)

    def check_events(self, deadline: Optional[float] = None) -> None:
        """Asks the service for an event, and waits until it has told it.

        A service that does not will tell of nothing else either. TimedOut: the next call waits on.
        """
        check(self._handle.call(vx["vx_check_events"], convert.deadline_to_c(deadline)))

    async def _outcome_on_loop(self, utterance: Utterance) -> Outcome:
        return await self._hub.outcome_of(utterance)

    # ---- What the service can do, and what all clients share

    def features(self, deadline: Optional[float] = None) -> Features:
        """What the service can do."""
        time_in_c = convert.deadline_to_c(deadline)
        get = vx["vx_get_features"]
        return convert.take_features(new_handle("features", self._handle.call, get, time_in_c))

    def settings(self, deadline: Optional[float] = None) -> Settings:
        """The settings that the service keeps for all its clients."""
        time_in_c = convert.deadline_to_c(deadline)
        get = vx["vx_get_settings"]
        return convert.take_settings(new_handle("settings", self._handle.call, get, time_in_c))

    def change(self, settings: Settings, deadline: Optional[float] = None) -> None:
        """Changes those that are not None, one after the other; ends with the first refused."""
        time_in_c = convert.deadline_to_c(deadline)
        with convert.settings_in_c(settings) as handle:
            check(self._handle.call(vx["vx_change_settings"], handle, time_in_c))

    def reset_settings(self, deadline: Optional[float] = None) -> None:
        """Puts the settings of the service back to what it was delivered with."""
        check(self._handle.call(vx["vx_reset_settings"], convert.deadline_to_c(deadline)))

    def is_on(self, which: Switch, deadline: Optional[float] = None) -> bool:
        """Whether a switch of the service is on."""
        number = convert.member(Switch, which, "which")
        time_in_c = convert.deadline_to_c(deadline)
        on = c_int()
        check(self._handle.call(vx["vx_is_on"], number, time_in_c, ctypes.byref(on)))
        return bool(on.value)

    def turn(self, which: Switch, on: bool, deadline: Optional[float] = None) -> None:
        """Turns a switch of the service on or off."""
        number = convert.member(Switch, which, "which")
        if not isinstance(on, bool):
            raise TypeError(f"on is a bool, not {type(on).__name__}")
        time_in_c = convert.deadline_to_c(deadline)
        check(self._handle.call(vx["vx_turn"], number, int(on), time_in_c))

    def lock(self, deadline: Optional[float] = None) -> Lock:
        """Takes the lock: `with client.lock(): ...`. A process has it once."""
        time_in_c = convert.deadline_to_c(deadline)
        return Lock(new_handle("lock", self._handle.call, vx["vx_take_lock"], time_in_c))

    def lock_state(self, deadline: Optional[float] = None) -> LockState:
        """Who has the lock."""
        state = c_int()
        time_in_c = convert.deadline_to_c(deadline)
        check(self._handle.call(vx["vx_lock_state"], time_in_c, ctypes.byref(state)))
        return LockState(state.value)

    def break_lock(self, deadline: Optional[float] = None) -> int:
        """Frees the lock, whoever has it, if this user may: the process that had it, or 0."""
        process = c_uint()
        time_in_c = convert.deadline_to_c(deadline)
        check(self._handle.call(vx["vx_break_lock"], time_in_c, ctypes.byref(process)))
        return process.value

    # ---- Profiles

    def save_profile(self, path: Union[str, os.PathLike[str]]) -> None:
        """Writes `defaults` into a profile (docs/profile-format.md), but for `on_loss`.

        What was there stays as it is unless all could be written. Volume and pitch become whole
        numbers, which the format has; a voice is written as its number, so that one named otherwise
        needs a connection. Error, PROFILE_ERROR, with the system's reason; BadParameter for what a
        profile cannot hold. `Profile` has the whole of a file.
        """
        check(self._handle.call(vx["vx_save_profile"], convert.path_to_c(path)))

    def load_profile(self, path: Union[str, os.PathLike[str]]) -> None:
        """Reads `defaults` from a profile, but for `on_loss`, which stays.

        What is not set there, or is no language, is None afterwards. Error, PROFILE_ERROR, with the
        system's reason; then nothing has changed.
        """
        check(self._handle.call(vx["vx_load_profile"], convert.path_to_c(path)))


def _check_is_fake(fake: object) -> None:
    from .testing import FakeService  # most programs do without

    if not isinstance(fake, FakeService):
        raise TypeError(f"fake is a voxtrel.testing.FakeService, not {type(fake).__name__}")
