# SPDX-License-Identifier: Apache-2.0
"""Which calls fail, and how."""
import dataclasses

# call: errors it may fail with
CALLS = {
    "malloc": ["ENOMEM"],
    "write": ["ENOSPC", "EINTR"],
    "read": ["EIO", "EINTR"],
    "open": ["EMFILE", "EACCES"],
    "send": ["ENOBUFS", "EINTR"],
    "sendmsg": ["ENOBUFS", "EINTR"],
    "recv": ["ENOMEM", "EINTR"],
    "recvmsg": ["ENOMEM", "EINTR"],
    "mmap": ["ENOMEM"],
    "fsync": ["EIO"],
    "fdatasync": ["EIO"],
    "ftruncate": ["ENOSPC"],
    "link": ["ENOSPC"],
    "rename": ["ENOSPC"],
    "unlink": ["EIO"],
    "mkdir": ["ENOSPC"],
    "flock": ["ENOLCK", "EINTR"],
    "socket": ["EMFILE"],
    "socketpair": ["EMFILE"],
    "bind": ["ENOMEM"],
    "listen": ["ENOBUFS"],
    "connect": ["ECONNREFUSED", "EINTR"],
    "accept4": ["EMFILE", "ECONNABORTED"],
    "epoll_create1": ["EMFILE"],
    "epoll_ctl": ["ENOMEM"],
    "epoll_wait": ["EINTR"],
    "poll": ["EINTR", "ENOMEM"],
    "eventfd": ["EMFILE"],
    "signalfd": ["EMFILE"],
    "timerfd_create": ["EMFILE"],
    "memfd_create": ["EMFILE"],
    "pipe2": ["EMFILE"],
    "dup2": ["EBUSY"],
    "fork": ["EAGAIN"],
    "posix_spawnp": ["EAGAIN"],
    "pthread_create": ["EAGAIN"],
    "sigtimedwait": ["EINTR"],
}
# The clock of the day, which jumps an hour each time that it is read: nothing may notice. There is a
# point for it only where somebody reads it.
JUMPS = "clock"
# These are tried once more with every call from the n-th on failing: a disk that stays full, ...
LASTING = {"write": "ENOSPC", "open": "EMFILE", "socketpair": "EMFILE", "pthread_create": "EAGAIN",
           "memfd_create": "EMFILE"}


@dataclasses.dataclass(frozen=True)
class Point:
    call: str
    error: str
    at: int = 0
    times: int = 1

    @property
    def must_succeed(self):
        return self.at == 0 or self.call == JUMPS

    def __str__(self):
        how = "" if self.times == 1 else ", and all after it"
        return f"{self.call} {self.at} {self.error}{how}"
