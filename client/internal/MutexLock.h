// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_INTERNAL_MUTEXLOCK_H
#define VOXTREL_CLIENT_INTERNAL_MUTEXLOCK_H

#include "client/Mutex.h"

namespace TTS {

/// Holds a Mutex from construction to the end of the scope.
class VOXTREL_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VOXTREL_ACQUIRE(mutex) VOXTREL_NO_THREAD_ANALYSIS
        : mMutex(mutex) {
        pthread_mutex_lock(&mMutex.m);
    }
    ~MutexLock() VOXTREL_RELEASE() VOXTREL_NO_THREAD_ANALYSIS { pthread_mutex_unlock(&mMutex.m); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mMutex;
};

}  // namespace TTS

#endif
