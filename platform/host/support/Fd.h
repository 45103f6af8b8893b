// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_FD_H
#define VOXTREL_SUPPORT_FD_H

#include <cstddef>
#include <utility>

namespace android::transport {

/// Owns one descriptor of the runtime.
///
/// A forked child closes all of them at once: a copy left open there would hide the parent's death
/// from every holder of a reference. An `Fd` of the child's does not close its number again.
class Fd {
public:
    /// Descriptors from this number on are not closed in a forked child.
    static constexpr size_t kTracked = 65536;

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

    /// For a forked child: closes every descriptor that is open.
    static void closeAll();

private:
    int mFd = -1;
};

}  // namespace android::transport

#endif
