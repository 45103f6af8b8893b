# SPDX-License-Identifier: Apache-2.0
from __future__ import annotations

import ctypes
import time
from ctypes import c_ulong
from typing import Generator, Optional, Protocol

from ._convert import outcome_of, seconds
from ._errors import error_for
from ._native import Function, Position, RawOutcome, check, forks, last_error, vx
from ._values import Outcome, Status

# An interrupt from the keyboard is seen between two waits of C.
SLICE = 0.05

_wait = vx["vx_utterance_wait"]


def wait_in_slices(function: Function, timeout: Optional[float], *after: object) -> None:
    """Calls `function`, which takes milliseconds to wait, until it has an answer.

    TimedOut when there is none in `timeout` seconds; None: for ever.
    """
    end = None if timeout is None else time.monotonic() + seconds(timeout, "timeout")
    while True:
        left = SLICE if end is None else max(end - time.monotonic(), 0.0)
        status = function(int(min(left, SLICE) * 1000 + 0.999), *after)
        if status != Status.TIMED_OUT:
            check(status)
            return
        if end is not None and left <= SLICE and time.monotonic() >= end:
            raise error_for(status, last_error())


class _Client(Protocol):
    """What an utterance uses of the client that said it."""

    async def _outcome_on_loop(self, utterance: Utterance) -> Outcome: ...


class Utterance:
    """A handle on what a client said. It may outlive the client, which decides its outcome.

    `await utterance` gives its outcome, on an event loop, as `wait` does on a thread.

    Called on: any thread. Letting go of it stops nothing.
    """

    __slots__ = ("__weakref__", "_client", "_forks", "_number", "_pointer")

    def __init__(self, client: _Client, pointer: int) -> None:
        self._client = client
        self._pointer = pointer
        self._forks = forks()
        self._number: Optional[int] = None

    def __del__(
        self, _free: Function = vx["vx_utterance_free"], _now: Function = forks
    ) -> None:
        pointer, self._pointer = getattr(self, "_pointer", 0), 0
        if pointer and self._forks == _now():
            _free(pointer)

    def _in_c(self) -> int:
        if self._forks != forks():
            raise RuntimeError("the utterance was said before a fork: its parent's process has it")
        return self._pointer

    def __repr__(self) -> str:
        return f"<voxtrel.Utterance {self.number}: {self.outcome.kind.name.lower()}>"

    @property
    def number(self) -> int:
        """Counted from 1 in its client; events carry it."""
        if self._number is None:
            out = c_ulong()
            check(vx["vx_utterance_number"](self._in_c(), ctypes.byref(out)))
            self._number = out.value
        return self._number

    @property
    def outcome(self) -> Outcome:
        """The outcome; PENDING while there is none."""
        raw = RawOutcome()
        check(vx["vx_utterance_outcome"](self._in_c(), ctypes.byref(raw)))
        return outcome_of(raw)

    @property
    def position(self) -> int:
        """Where the word begins that is being spoken: an index into the text.

        0 before the first.
        """
        out = Position()
        check(vx["vx_utterance_position"](self._in_c(), ctypes.byref(out)))
        return int(out.characters)

    def wait(self, timeout: Optional[float] = None) -> Outcome:
        """Waits for the outcome, for ever or `timeout` seconds; TimedOut when there is none then.

        An interrupt from the keyboard ends it within a twentieth of a second.
        """
        pointer = self._in_c()
        raw = RawOutcome()
        wait_in_slices(lambda ms: _wait(pointer, ms, ctypes.byref(raw)), timeout)
        return outcome_of(raw)

    def __await__(self) -> Generator[object, None, Outcome]:
        return self._client._outcome_on_loop(self).__await__()
