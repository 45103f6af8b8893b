# SPDX-License-Identifier: Apache-2.0
"""A double of the service, for the tests of applications."""

from __future__ import annotations

import weakref
from types import TracebackType
from typing import Optional, Protocol

from . import _convert as convert
from ._native import FOREVER, Handle, check, load_testing, new_handle, vx
from ._values import EventKind, Status
from ._weak import WeakList

load_testing()


class _Client(Protocol):
    """What a fake service uses of its clients."""

    @property
    def is_closed(self) -> bool: ...


class FakeService:
    """A service inside an application's own test: no processes, no sound, and whatever faults.

        with FakeService() as fake, Client(fake=fake) as client:
            client.say("Hello.").wait(10)
            assert fake.spoken() == ["Hello."]

    It has five languages, two voices each, and keeps the rules of a service. It speaks at once and
    takes no time, unless it is told to wait. It must outlive its clients: they hold it.

    Called on: any thread.
    """

    def __init__(self) -> None:
        pointer = new_handle("fake", vx["vx_fake_new"])
        self._handle = Handle(pointer, vx["vx_fake_free"], "the fake service")
        self._finalizer = weakref.finalize(self, self._handle.close)
        self._clients: WeakList[_Client] = WeakList()

    def close(self) -> None:
        """Ends it; RuntimeError while a client of it is left."""
        if any(not client.is_closed for client in self._clients.living()):
            raise RuntimeError("a client of the fake service is not closed")
        self._finalizer()

    def __enter__(self) -> FakeService:
        return self

    def __exit__(
        self,
        kind: Optional[type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def stand_in(self, options: int) -> None:
        """Of Client: lets the client that these options of C make speak through it."""
        check(self._handle.call(_set_fake, options))

    def serve(self, client: _Client) -> None:
        """Of Client: the one that was made."""
        self._clients.add(client)

    def spoken(self) -> list[str]:
        """What has been spoken to its end: texts, and "(pause N ms)".

        A text that goes in pieces is several.
        """
        return convert.take_texts(new_handle("texts", self._handle.call, vx["vx_fake_spoken"]))

    def wait_for_spoken(self, count: int, timeout: Optional[float] = None) -> None:
        """Waits until so many have been; TimedOut when they were fewer in `timeout` seconds."""
        number = convert.whole_number(count, 0, 2**31 - 1, "count")
        time = FOREVER if timeout is None else convert.milliseconds(timeout, "timeout")
        check(self._handle.call(vx["vx_fake_wait_for_spoken"], number, time))

    def requests(self) -> list[str]:
        """What was asked of it, one line each, as `say 3 "Hello."` or `stop own`."""
        return convert.take_texts(new_handle("texts", self._handle.call, vx["vx_fake_requests"]))

    def _tell(self, order: str, *arguments: int) -> None:
        check(self._handle.call(vx[f"vx_fake_{order}"], *arguments))

    def hold(self) -> None:
        """From now on speech begins and does not end until `go_on`."""
        self._tell("hold")

    def go_on(self) -> None:
        """Ends what is held, and speaks on as at first."""
        self._tell("go_on")

    def refuse_next(self, why: Status) -> None:
        """Refuses the next utterance with `why`, from -1 to -99."""
        self._tell("refuse_next", convert.member(Status, why, "why"))

    def lose_next_request(self) -> None:
        """Never gets the next request to speak, and nobody is told."""
        self._tell("lose_next_request")

    def lose_next_event(self, kind: EventKind = EventKind.ENDED) -> None:
        """Does not send the next event of that kind about an utterance: STARTED, WORD or ENDED."""
        self._tell("lose_next_event", convert.member(EventKind, kind, "kind"))

    def freeze(self) -> None:
        """Answers nothing, and sends no events, until `thaw`: like a stopped process."""
        self._tell("freeze")

    def thaw(self) -> None:
        self._tell("thaw")

    def answer_after(self, delay: float) -> None:
        """Takes so many seconds for each request that has an answer."""
        self._tell("answer_after", convert.milliseconds(delay, "delay"))

    def die(self) -> None:
        """Dies at once. Clients that look for it find nothing until `come_back`."""
        self._tell("die")

    def shut_down(self) -> None:
        """Tells whom it cuts off that it is being ended, and dies."""
        self._tell("shut_down")

    def come_back(self) -> None:
        """Is there again, with default settings."""
        self._tell("come_back")

    def stop_by_another(self) -> None:
        """Another process stops everything."""
        self._tell("stop_by_another")

    def lock_by_another(self, process: int) -> None:
        """Another process takes the lock."""
        self._tell("lock_by_another", convert.whole_number(process, 1, 2**32 - 1, "process"))

    def unlock_by_another(self) -> None:
        """Another process gives the lock back."""
        self._tell("unlock_by_another")


def _set_fake(fake: int, options: int) -> int:
    return vx["vx_client_options_set_fake"](options, fake)
