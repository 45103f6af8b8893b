# SPDX-License-Identifier: Apache-2.0
"""Plain values: enums and dataclasses."""

from __future__ import annotations

import enum
from dataclasses import dataclass
from typing import Generic, Optional, TypeVar


class _OpenEnum(enum.IntEnum):
    """An enum whose numbers may be more than those that have a name here."""

    @classmethod
    def _missing_(cls, value: object) -> Optional[_OpenEnum]:
        if not isinstance(value, int):
            return None
        member = int.__new__(cls, value)
        member._name_ = f"UNNAMED_{abs(value)}"
        member._value_ = value
        return member


class Status(_OpenEnum):
    """Why something was not done.

    From -1 to -99 the service's own, which may use numbers that have no name here.
    """

    OK = 0
    DISABLED = -1
    """Speech is switched off for everybody."""
    BAD_PARAMETER = -3
    NO_SERVICE = -5
    """The service died, or there is no connection to it."""
    PROFILE_ERROR = -6
    """A profile could not be read or written."""
    LOCKED = -7
    """Another process holds the service's lock."""
    SERVICE_NOT_FOUND = -8
    """No service is registered."""
    NOT_SUPPORTED = -9
    """The service has no such language, voice or setting."""
    PERMISSION_DENIED = -10
    NO_LANGUAGE = -11
    """A voice was named without a language."""
    QUEUE_FULL = -12
    """Too much is waiting at the service."""
    AUDIO_FAILED = -13
    """The engine or the audio output failed."""
    SHUTDOWN = -14
    """The service was ended by its owner."""
    TIMED_OUT = -100
    """No answer before the deadline; it may still be done."""
    UNRESPONSIVE = -101
    """An earlier request is still not answered, so nothing was tried."""
    LOST = -102
    """The request was lost on its way, or the event about it."""
    CLOSED = -103
    """The client ended."""
    NO_MEMORY = -200
    NO_EVENT = -201
    NOT_SET = -202
    FAILED = -203


class OutcomeKind(enum.IntEnum):
    PENDING = 0
    """It waits, or is being spoken."""
    FINISHED = 1
    """Spoken to its end."""
    STOPPED = 2
    """Somebody wanted silence."""
    REFUSED = 3
    """Nothing of it is spoken; `status` says why."""
    LOST = 4
    """The service died or was ended, never got it, or refused the rest after it had begun; `status`
    says which."""


class Stopper(enum.IntEnum):
    """Who stopped an utterance, as far as it is known."""

    NOBODY = 0
    THIS_CLIENT = 1
    """`stop` or `stop_everybody` of the client that said it."""
    THIS_PROCESS = 2
    """`stop_everybody` of another client of this process."""
    SOMEBODY = 3
    """Another process."""


class OnLoss(enum.IntEnum):
    """What to do when the service dies, is ended, or never gets an utterance."""

    REPORT = 0
    """Its outcome is LOST."""
    SAY_AGAIN = 1
    """Said once more if nothing of it has been heard."""
    SAY_AGAIN_WHATEVER = 2
    """Said once more from its beginning, also if a part has been heard."""


class EventKind(_OpenEnum):
    """Other kinds may come, and are best ignored."""

    STARTED = 0
    """`utterance` begins to sound."""
    WORD = 1
    """A word of it begins, at `position`."""
    MARK = 2
    """The mark with the number `value` in its text was reached."""
    ENDED = 3
    """`utterance` has its `outcome`; the one such event about it."""
    CONNECTED = 4
    """The service is there."""
    DISCONNECTED = 5
    """It is not any more, and is being looked for."""
    CHANGED = 6
    """Something that all clients share: `setting` is now `value`."""


class Setting(_OpenEnum):
    """What CHANGED tells of; another service may tell of more, by numbers of its own."""

    SPEECH = 0
    """1: switched on."""
    VERBOSITY = 1
    SPEED = 2
    SPEED_SWITCH = 3
    PITCH = 4
    PITCH_SWITCH = 5
    VOICE = 6
    VOICE_SWITCH = 7
    VOLUME = 8
    VOLUME_SWITCH = 9
    MEDIA_VOLUME = 10
    MEDIA_VOLUME_SWITCH = 11
    SPEECH_VOLUME = 12
    SPEECH_VOLUME_SWITCH = 13
    LANGUAGE = 14
    LOCK = 15
    """Process id of the holder, 0: free."""
    READY = 16
    """1: the voices are loaded."""
    RESET = 17
    """All settings went back to their defaults."""


class Switch(enum.IntEnum):
    """Switches of the service; one that is off keeps clients from settings of their own there."""

    SPEECH = 0
    """Off: nothing is spoken."""
    SPEED = 1
    PITCH = 2
    VOICE = 3
    VOLUME = 4
    MEDIA_VOLUME = 5
    SPEECH_VOLUME = 6


class Reach(enum.IntEnum):
    """How far a client gets on its way to the service."""

    NO_MANAGER = 0
    MANAGER_NOT_PERMITTED = 1
    """This user may not talk to the service manager."""
    MANAGER_SILENT = 2
    """It does not answer."""
    NO_SERVICE = 3
    NOT_TRUSTED = 4
    """Another user's, and not asked for anything."""
    SERVICE_SILENT = 5
    LOADING = 6
    """It answers and is loading its voices."""
    NOT_ADMITTED = 7
    """It does not let this user in, or has too many clients."""
    CONNECTED = 8


@dataclass(frozen=True)
class Peer:
    """Who stands at the other end, as far as the system tells."""

    process: int = 0
    """0: not known."""
    user: Optional[int] = None
    """The number of the user that started it; None: not known."""
    is_stopped: bool = False
    """The process is stopped, as by SIGSTOP or a debugger."""


@dataclass(frozen=True)
class Diagnosis:
    """What a client sees on its way to the service."""

    reach: Reach
    status: Status
    """Why there is no connection; OK when there is one."""
    message: str
    """What is in the way, with path, process and what to do; empty when nothing is."""
    transport: str = ""
    """"socket", or "driver": the device's own; empty for a fake service."""
    path: str = ""
    """Where the service manager is looked for; empty: not a file."""
    error: int = 0
    """`errno` of the attempt to get there; 0: none, or not known."""
    manager: Peer = Peer()
    service: Peer = Peer()
    takes_any_pause: bool = False
    """The service has begun a pause of 49 days, which it must refuse at once
    (docs/writing-a-service.md). It was told to drop it again, and with it what was said."""


class LockState(enum.IntEnum):
    """Who has the service's lock."""

    FREE = 0
    HELD_BY_THIS_PROCESS = 1
    HELD_BY_ANOTHER = 2
    UNKNOWN = 3
    """The service does not tell, or not this user."""


@dataclass(frozen=True)
class Outcome:
    """What became of an utterance. True for FINISHED alone."""

    kind: OutcomeKind
    status: Status
    stopper: Stopper
    heard: bool
    """A part of it has been heard; of a finished one, all of it."""
    message: str
    """One line of English, with what to do."""

    def __bool__(self) -> bool:
        return self.kind is OutcomeKind.FINISHED

    @property
    def is_pending(self) -> bool:
        return self.kind is OutcomeKind.PENDING


@dataclass(frozen=True)
class Event:
    """Something that happened."""

    kind: EventKind
    utterance: int = 0
    """`Utterance.number` in its client, for STARTED, WORD, MARK and ENDED; else 0."""
    position: int = 0
    """WORD, MARK: an index into the text that was given to `say`."""
    outcome: Optional[Outcome] = None
    """ENDED."""
    setting: Optional[Setting] = None
    """CHANGED."""
    value: int = 0
    """Numbers as their whole part."""


@dataclass(frozen=True)
class SpeechOptions:
    """How to speak, where set; what None means is said at `Client.say` and `Client.defaults`."""

    language: Optional[str] = None
    """"fr", "fr-FR", "fr_FR": the nearest."""
    voice: Optional[str] = None
    """A name, or its number in the language."""
    speed: Optional[int] = None
    """In `Features.speed`."""
    pitch: Optional[float] = None
    """In `Features.pitch`."""
    volume: Optional[float] = None
    """In `Features.volume`."""
    speech_volume: Optional[int] = None
    """Per cent, beside `volume`."""
    media_volume: Optional[int] = None
    """Per cent, of other sounds meanwhile."""
    on_loss: Optional[OnLoss] = None
    """None: REPORT."""


@dataclass(frozen=True)
class Settings:
    """Settings that the service keeps for all its clients.

    Read: those that the service does not tell are None. Changed: those that are not None.
    """

    language: Optional[str] = None
    """A tag, "fr-FR"."""
    voice: Optional[int] = None
    """Its number in the language."""
    speed: Optional[int] = None
    pitch: Optional[float] = None
    volume: Optional[float] = None
    speech_volume: Optional[int] = None
    """Per cent."""
    media_volume: Optional[int] = None
    """Per cent."""
    verbosity: Optional[int] = None
    """1: punctuation is spoken."""
    rate: Optional[int] = None
    """Of most services the same as `speed`."""


@dataclass(frozen=True)
class Voice:
    name: str
    language: str
    """As a tag, "fr-FR"."""
    number: int
    """From 1 in its language."""


Number = TypeVar("Number", int, float)


@dataclass(frozen=True)
class Range(Generic[Number]):
    least: Number
    most: Number

    def __contains__(self, value: float) -> bool:
        return self.least <= value <= self.most


@dataclass(frozen=True)
class Features:
    """What the service can do; a range is None where it cannot."""

    speed: Optional[Range[int]]
    pitch: Optional[Range[float]]
    volume: Optional[Range[float]]
    languages: tuple[str, ...]
    """As tags, "en-US"."""
    voices: tuple[Voice, ...]
    filtered_languages: tuple[str, ...] = ()
    """The service's, kept from applications on this device."""
    filtered_voices: tuple[Voice, ...] = ()
