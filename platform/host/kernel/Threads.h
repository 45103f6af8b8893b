// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_THREADS_H
#define VOXTREL_KERNEL_THREADS_H

#include <pthread.h>

#include "kernel/DriverThread.h"

namespace android::kernel {

/// The `DriverThread` of each thread, destroyed when the thread ends. In thread-specific data,
/// since a `thread_local` of the main thread is gone when destructors of statics still make calls.
///
/// Called on: any thread. Locks: none.
class Threads {
public:
    explicit Threads(Process& process);
    /// No other thread may use it any more.
    ~Threads();
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    DriverThread& current();

    /// The pool's first looper, which the driver has not requested.
    void startLooper();
    /// One more, on BR_SPAWN_LOOPER.
    void startRequestedLooper();

private:
    void start(uint32_t enter);
    void run(uint32_t enter);

    Process& mProcess;
    pthread_key_t mKey{};
};

}  // namespace android::kernel

#endif
