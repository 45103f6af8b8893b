# SPDX-License-Identifier: Apache-2.0
"""Speaks through the Voxtrel service.

    import voxtrel

    with voxtrel.Client("app") as client:
        outcome = client.say("Bonjour.", language="fr", speed=250).wait(30)
        if not outcome:
            print(outcome.message)

On an event loop of asyncio: `await client.say("Hello.")`, and
`async for event in client.events()`. On any other: `Client.on_event`, `fileno` and `dispatch`.
"""

from ._client import Client, Lock
from ._errors import (
    BadParameter,
    Closed,
    Error,
    Locked,
    NotSupported,
    PermissionDenied,
    TimedOut,
    Unavailable,
)
from ._events import Events
from ._native import text_of as _text_of
from ._native import vx as _vx
from ._profile import Profile
from ._utterance import Utterance
from ._values import (
    Diagnosis,
    Event,
    EventKind,
    Features,
    LockState,
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
    Switch,
    Voice,
)


def describe(status: Status) -> str:
    """What a status means and what to do about it: one line of English."""
    return _text_of(_vx["vx_describe"], int(status))


__all__ = [
    "BadParameter",
    "Client",
    "Closed",
    "Diagnosis",
    "Error",
    "Event",
    "EventKind",
    "Events",
    "Features",
    "Lock",
    "LockState",
    "Locked",
    "NotSupported",
    "OnLoss",
    "Outcome",
    "OutcomeKind",
    "Peer",
    "PermissionDenied",
    "Profile",
    "Range",
    "Reach",
    "Setting",
    "Settings",
    "SpeechOptions",
    "Status",
    "Stopper",
    "Switch",
    "TimedOut",
    "Unavailable",
    "Utterance",
    "Voice",
    "describe",
]
