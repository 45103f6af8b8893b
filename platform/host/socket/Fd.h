// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_FD_H
#define VOXTREL_SOCKET_FD_H

#include <utility>

namespace android::transport {

/// Owns one descriptor of the runtime.
///
/// A forked child closes all of them at once: a copy left open there would hide the parent's death
/// from everybody who holds a reference. What a child still owns by name is never closed twice.
class Fd {
public:
    Fd() = default;
    explicit Fd(int fd);
    Fd(Fd&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}
    Fd& operator=(Fd&& other) noexcept;
    ~Fd() { reset(); }

    int get() const { return mFd; }
    bool valid() const { return mFd >= 0; }
    void reset();
    /// Gives the descriptor up; the caller owns it, and must put it into an `Fd` again.
    int release() { return std::exchange(mFd, -1); }

private:
    int mFd = -1;
};

/// The same under one of the highest numbers that this process may have; as it was when none is
/// free. The kernel closes the descriptors of a dying process from the highest number down: who is
/// at the other end of this one hears of the death before everybody else.
Fd closedFirst(Fd fd);

/// From here on a fork makes the child a stranger to the runtime. Called when the runtime is first
/// used.
void armForkGuard();

/// True in a process forked from one that had used the runtime, which cannot use it.
bool isForkedChild();
/// The same; says so in the log the first time.
bool refusedAfterFork();

}  // namespace android::transport

#endif
