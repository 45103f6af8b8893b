// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_MUTEX_H
#define VOXTREL_CLIENT_MUTEX_H

#include <pthread.h>

#include "client/ThreadAnnotations.h"

namespace TTS {

/// Owner of one process-private, non-recursive pthread mutex.
///
/// The class only creates and destroys it: users lock and unlock `m` directly, with
/// `pthread_mutex_lock` and `pthread_mutex_unlock`. A thread that locks it twice deadlocks.
/// Destroying a locked mutex is undefined; the owner makes sure that nobody holds it.
class VOXTREL_CAPABILITY("mutex") Mutex {
public:
    /// Initialises the mutex with default attributes.
    Mutex();
    virtual ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    pthread_mutex_t m;  ///< the mutex to lock
};

}  // namespace TTS

#endif
