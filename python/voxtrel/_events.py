# SPDX-License-Identifier: Apache-2.0
"""Where the events of a client go."""

from __future__ import annotations

import asyncio
import ctypes
import os
import threading
import weakref
from collections import deque
from ctypes import c_int
from functools import partial
from typing import TYPE_CHECKING, Any, Callable, Optional

from ._convert import event_of
from ._errors import Closed
from ._native import Handle, RawEvent, check, vx
from ._values import Event, EventKind, Outcome, Status
from ._weak import WeakList

if TYPE_CHECKING:
    from ._utterance import Utterance

Handler = Callable[[Event], Any]
Loop = asyncio.AbstractEventLoop

# So many are kept while nobody listens; a listener that has so many unread misses words.
ROOM = 256

# The rest of a loop has its turn after so many.
_AT_ONCE = 64

_client_free = vx["vx_client_free"]
_client_fd = vx["vx_client_fd"]
_next_event = vx["vx_next_event"]


def _on(loop: Loop, function: Callable[[], None]) -> None:
    """Calls `function` on the thread of `loop`; at once if it is this one."""
    try:
        if asyncio.get_running_loop() is loop:
            function()
            return
    except RuntimeError:
        pass  # no loop runs on this thread
    try:
        loop.call_soon_threadsafe(function)
    except RuntimeError:
        pass  # the loop is closed, and nothing waits on it any more


class Events:
    """What happens to a client: `async for event in client.events()`.

    Begins with the last 256 events until then that nobody has heard. Ends with the client. A loop
    that reads slowly misses words, and nothing else.

    Called on: the event loop on which it was made.
    """

    def __init__(self, hub: Hub, keep_alive: object) -> None:
        self._closed = True
        self._loop = asyncio.get_running_loop()
        self._hub = hub
        self._keep_alive = keep_alive
        self._inbox: deque[Event] = deque()
        self._news = asyncio.Event()
        hub.join(self._loop)
        self._closed = False
        hub.add_stream(self)

    def __del__(self) -> None:
        self.close()

    def close(self) -> None:
        """Ends the iteration, as letting go of the object does."""
        if not self._closed:
            self._closed = True
            self._hub.remove_stream(self)
            self._hub.leave(self._loop)
            self._news.set()

    def put(self, event: Event) -> None:
        _on(self._loop, partial(self._receive, event))

    def end(self) -> None:
        _on(self._loop, self.close)

    def _receive(self, event: Event) -> None:
        if event.kind is not EventKind.WORD or len(self._inbox) < ROOM:
            self._inbox.append(event)
            self._news.set()

    def __aiter__(self) -> Events:
        return self

    async def __anext__(self) -> Event:
        while not self._inbox:
            if self._closed:
                raise StopAsyncIteration
            self._news.clear()
            await self._news.wait()
        return self._inbox.popleft()


class _Reader:
    """Lets a loop watch a client, through a descriptor that outlives the client."""

    def __init__(self, client: Handle) -> None:
        self.users = 0
        check(client.call(self._duplicate))

    def _duplicate(self, client: int) -> int:
        """In a call: where the client is closed in between, the number may be another file's."""
        fd = c_int()
        status = _client_fd(client, ctypes.byref(fd))
        if status == 0:
            self.fd = os.dup(fd.value)
        return status

    def __del__(self, _close: Callable[[int], None] = os.close) -> None:
        if hasattr(self, "fd"):
            _close(self.fd)


def _end(client: int, hub: weakref.ref[Hub]) -> None:
    """Frees the client, and tells who waits for something of it."""
    _client_free(client)
    listened = hub()
    if listened is not None:
        listened.tell_end()


class Hub:
    """Takes a client's events from C and gives them to who listens.

    Called on: any thread; `join` on its loop.
    """

    def __init__(self, pointer: int) -> None:
        # Weakly: the handle lives until the client is freed, and who listens may hold the client.
        self.handle = Handle(pointer, partial(_end, hub=weakref.ref(self)), "the client")
        self._dispatching = threading.Lock()
        self._handler: Optional[Handler] = None
        self._backlog: deque[RawEvent] = deque(maxlen=ROOM)
        self._streams: WeakList[Events] = WeakList()
        # Of the waiters, and of what is kept for the next who listens. Finalizers and signal handlers
        # get in.
        self._mutex = threading.RLock()
        self._waiters: dict[int, list[Callable[[], None]]] = {}
        self._readers: dict[Loop, _Reader] = {}

    def fileno(self) -> int:
        fd = c_int()
        check(self.handle.call(_client_fd, ctypes.byref(fd)))
        return fd.value

    def set_handler(self, handler: Optional[Handler]) -> None:
        if not self._is_heard():
            self.dispatch()  # what happened before is not for it
        self._handler = handler

    def _is_heard(self) -> bool:
        return self._handler is not None or bool(self._streams.living())

    def dispatch(self, most: Optional[int] = None) -> int:
        """Hands out what has happened, on this thread; 0 while that is already being done."""
        if not self._dispatching.acquire(blocking=False):
            return 0
        try:
            return self._hand_out_all(most)
        finally:
            self._dispatching.release()

    def _hand_out_all(self, most: Optional[int]) -> int:
        count = 0
        while most is None or count < most:
            raw = RawEvent()
            try:
                status = self.handle.call(_next_event, ctypes.byref(raw))
            except Closed:
                if count == 0:
                    raise
                break
            if status == Status.NO_EVENT:
                break
            check(status)
            count += 1
            self._hand_out(raw)
        return count

    def _hand_out(self, raw: RawEvent) -> None:
        if raw.kind == EventKind.ENDED:
            self._wake(raw.utterance)
        with self._mutex:
            streams, handler = self._streams.living(), self._handler
            if not streams and handler is None:
                self._backlog.append(raw)
                return
        event = event_of(raw)
        for stream in streams:
            stream.put(event)
        if handler is not None:
            handler(event)

    def trim(self) -> None:
        """Keeps what nobody listens to from growing."""
        if not self._is_heard():
            self.dispatch()

    def add_stream(self, stream: Events) -> None:
        with self._mutex:
            while self._backlog:
                stream.put(event_of(self._backlog.popleft()))
            self._streams.add(stream)

    def remove_stream(self, stream: Events) -> None:
        self._streams.remove(stream)

    def join(self, loop: Loop) -> None:
        """Lets the running `loop` dispatch, until as many have left it as have joined."""
        reader = self._readers.get(loop)
        if reader is None:
            for other in list(self._readers):  # other threads have loops of their own
                if other.is_closed():
                    self._forget(other)
            reader = _Reader(self.handle)
            loop.add_reader(reader.fd, self._ready)
            self._readers[loop] = reader
        reader.users += 1

    def leave(self, loop: Loop) -> None:
        if loop.is_closed():
            self._forget(loop)
        else:
            _on(loop, partial(self._left, loop))

    def _left(self, loop: Loop) -> None:
        reader = self._readers.get(loop)
        if reader is not None:
            reader.users -= 1
            if reader.users == 0:
                self._forget(loop)

    def _forget(self, loop: Loop) -> None:
        reader = self._readers.pop(loop, None)
        if reader is not None and not loop.is_closed():
            loop.remove_reader(reader.fd)

    def _ready(self) -> None:
        try:
            self.dispatch(_AT_ONCE)
        except Closed:
            # Its end is on the way to this loop, and its descriptor may stay readable until then.
            loop = asyncio.get_running_loop()
            reader = self._readers.get(loop)
            if reader is not None:
                loop.remove_reader(reader.fd)

    async def outcome_of(self, utterance: Utterance) -> Outcome:
        outcome = utterance.outcome
        if not outcome.is_pending:
            return outcome
        loop = asyncio.get_running_loop()
        try:
            await self._end_of(utterance, loop)
        except Closed:
            pass
        outcome = utterance.outcome
        if outcome.is_pending:  # until the client, which is closed, has lingered on another thread
            outcome = await loop.run_in_executor(None, utterance.wait)
        return outcome

    async def _end_of(self, utterance: Utterance, loop: Loop) -> None:
        """Waits until the utterance has an outcome, or the client is closed."""
        ended = asyncio.Event()
        wake = partial(_on, loop, ended.set)
        self.join(loop)
        self._add_waiter(utterance.number, wake)
        try:
            # An outcome comes before its event.
            if utterance.outcome.is_pending and not self.handle.closed:
                await ended.wait()
        finally:
            self._remove_waiter(utterance.number, wake)
            self.leave(loop)

    def _add_waiter(self, number: int, wake: Callable[[], None]) -> None:
        with self._mutex:
            self._waiters.setdefault(number, []).append(wake)

    def _remove_waiter(self, number: int, wake: Callable[[], None]) -> None:
        with self._mutex:
            waiters = self._waiters.get(number, [])
            if wake in waiters:
                waiters.remove(wake)
                if not waiters:
                    self._waiters.pop(number, None)

    def _wake(self, number: int) -> None:
        with self._mutex:
            waiters = self._waiters.pop(number, [])
        for wake in waiters:
            wake()

    def tell_end(self) -> None:
        for number in list(self._waiters):
            self._wake(number)
        for stream in self._streams.living():
            stream.end()
