// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_THREADS_H
#define VOXTREL_KERNEL_THREADS_H

#include <pthread.h>

#include "kernel/DriverThread.h"

namespace android::kernel {

/// The `DriverThread` of each thread; ends with it. Also there in the destructors of statics, which
/// run when the objects of the main thread have gone.
///
/// Called on: any thread. Locks: none.
class Threads {
public:
    explicit Threads(Process& process);
    /// The calling thread is the last one that uses them.
    ~Threads();
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    DriverThread& current();

    /// The first thread that serves without having been asked for by the driver.
    void startFirst();
    /// One more, as the driver has asked.
    void startAsked();

private:
    void start(uint32_t enter);
    void run(uint32_t enter);

    Process& mProcess;
    pthread_key_t mKey{};
};

}  // namespace android::kernel

#endif
