// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_MUTEX_H
#define VOXTREL_UTILS_MUTEX_H

#include <mutex>

#if defined(__clang__)
#define PLATFORM_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define PLATFORM_THREAD_ATTRIBUTE(x)
#endif

/// What -Wthread-safety checks: the annotated member is touched only with `lock` held.
#define PLATFORM_GUARDED_BY(lock) PLATFORM_THREAD_ATTRIBUTE(guarded_by(lock))
#define PLATFORM_REQUIRES(lock) PLATFORM_THREAD_ATTRIBUTE(requires_capability(lock))
#define PLATFORM_EXCLUDES(lock) PLATFORM_THREAD_ATTRIBUTE(locks_excluded(lock))

namespace android {

/// A plain, non-recursive lock that the compiler's thread-safety analysis understands.
class PLATFORM_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() PLATFORM_THREAD_ATTRIBUTE(acquire_capability()) { mLock.lock(); }
    void unlock() PLATFORM_THREAD_ATTRIBUTE(release_capability()) { mLock.unlock(); }

    /// Holds the lock for a scope.
    class PLATFORM_THREAD_ATTRIBUTE(scoped_lockable) Autolock {
    public:
        explicit Autolock(Mutex& mutex) PLATFORM_THREAD_ATTRIBUTE(acquire_capability(mutex))
            : mMutex(mutex) {
            mMutex.lock();
        }
        ~Autolock() PLATFORM_THREAD_ATTRIBUTE(release_capability()) { mMutex.unlock(); }
        Autolock(const Autolock&) = delete;
        Autolock& operator=(const Autolock&) = delete;

    private:
        Mutex& mMutex;
    };

private:
    std::mutex mLock;
};

}  // namespace android

#endif
