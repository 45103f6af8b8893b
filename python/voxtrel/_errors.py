# SPDX-License-Identifier: Apache-2.0
"""What is raised."""

from __future__ import annotations

from ._values import Status


class Error(Exception):
    """Something was not done; `status` says why, the text says what to do next."""

    def __init__(self, status: Status, message: str) -> None:
        super().__init__(message)
        self.status = status

    def __reduce__(self) -> tuple[type[Error], tuple[Status, str]]:
        return type(self), (self.status, str(self))


class Unavailable(Error):
    """There is no service, or it went away: NO_SERVICE, SERVICE_NOT_FOUND, SHUTDOWN, LOST."""


class TimedOut(Error, TimeoutError):
    """No answer in time: TIMED_OUT, UNRESPONSIVE."""


class Locked(Error):
    """Another process holds the service's lock: LOCKED."""


class NotSupported(Error):
    """The service has no such language, voice or setting: NOT_SUPPORTED, NO_LANGUAGE."""


class PermissionDenied(Error):
    """The service does not let this user do that: PERMISSION_DENIED."""


class BadParameter(Error, ValueError):
    """A value that the library or the service does not take: BAD_PARAMETER."""


class Closed(Error):
    """The client was closed: CLOSED."""


_CLASSES: dict[int, type[Error]] = {
    Status.NO_SERVICE: Unavailable,
    Status.SERVICE_NOT_FOUND: Unavailable,
    Status.SHUTDOWN: Unavailable,
    Status.LOST: Unavailable,
    Status.TIMED_OUT: TimedOut,
    Status.UNRESPONSIVE: TimedOut,
    Status.LOCKED: Locked,
    Status.NOT_SUPPORTED: NotSupported,
    Status.NO_LANGUAGE: NotSupported,
    Status.PERMISSION_DENIED: PermissionDenied,
    Status.BAD_PARAMETER: BadParameter,
    Status.CLOSED: Closed,
}


def error_for(status: int, message: str) -> Error:
    return _CLASSES.get(status, Error)(Status(status), message)
