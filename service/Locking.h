// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_LOCKING_H
#define VOXTREL_SERVICE_LOCKING_H

#include <condition_variable>
#include <mutex>

// clang checks these with -Wthread-safety; every other compiler sees nothing.
#if defined(__clang__)
#define VOXTRELD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define VOXTRELD_ATTRIBUTE(attribute)
#endif
#define VOXTRELD_GUARDED_BY(mutex) VOXTRELD_ATTRIBUTE(guarded_by(mutex))
#define VOXTRELD_REQUIRES(mutex) VOXTRELD_ATTRIBUTE(requires_capability(mutex))

namespace voxtreld {

/// A standard mutex that the compiler can follow.
class VOXTRELD_ATTRIBUTE(capability("mutex")) Mutex {
public:
    void lock() VOXTRELD_ATTRIBUTE(acquire_capability()) { mMutex.lock(); }
    void unlock() VOXTRELD_ATTRIBUTE(release_capability()) { mMutex.unlock(); }

private:
    friend class MutexLock;
    std::mutex mMutex;
};

/// Holds a `Mutex` for a scope; `wait` gives it up until the condition is signalled.
class VOXTRELD_ATTRIBUTE(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VOXTRELD_ATTRIBUTE(acquire_capability(mutex))
        : mLock(mutex.mMutex) {}
    ~MutexLock() VOXTRELD_ATTRIBUTE(release_capability()) = default;
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    /// Returns with the mutex held; may wake without cause, so callers loop on their condition.
    void wait(std::condition_variable& condition) { condition.wait(mLock); }

    /// As `wait`, but not beyond the deadline. @return false when it has passed.
    template <typename TimePoint>
    bool waitUntil(std::condition_variable& condition, const TimePoint& deadline) {
        return condition.wait_until(mLock, deadline) == std::cv_status::no_timeout;
    }

private:
    std::unique_lock<std::mutex> mLock;
};

}  // namespace voxtreld

#endif
