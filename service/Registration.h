// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_REGISTRATION_H
#define VOXTREL_SERVICE_REGISTRATION_H

#include <binder/IBinder.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "service/Log.h"

namespace voxtreld {

/// Makes the service findable: registers it with the service manager, unless another one answers
/// under its name, and again with each service manager that follows one that has died.
///
/// A runtime may wait for the service manager without end, so a thread of its own asks.
/// Called on: the main thread.
class Registration {
public:
    enum class AfterDeath { RegisterAgain, End };

    /// The process around it; replaced in tests.
    struct Process {
        /// The runtime's reference to the service manager; null where there is none.
        std::function<android::sp<android::IBinder>()> contextObject;
        /// Asks the process to end in order.
        std::function<void()> end;
        /// A reference that is dead for longer is taken for one that the runtime has cached.
        std::chrono::milliseconds deadLimit{10'000};

        static Process own();
    };

    /// @param after what to do when the service manager dies.
    Registration(AfterDeath after, Log log, Process process = Process::own());
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    /// Registers `service`. Waits 10 s at most, and no longer than until one of the `signals`
    /// comes.
    /// @param error receives, on failure, why and what to do; nothing after a signal.
    /// @return true once it is registered. From then on the process is asked to end (by SIGTERM)
    /// when the service cannot be found any more: see `loss` and `managerHasDied`.
    bool begin(const android::sp<android::IBinder>& service, const sigset_t& signals,
               std::string& error);

    /// Why the service, once registered, could not be registered again; else empty.
    std::string loss() const;
    /// With `AfterDeath::End`: the service manager has died.
    bool managerHasDied() const;

    /// Stops watching. @return false if a thread still waits in the runtime: the process must then
    /// end without the destructors of what the runtime uses.
    bool stop();

private:
    class Work;

    const std::shared_ptr<Work> mWork;
    std::future<void> mEnd;
    std::thread mThread;
};

}  // namespace voxtreld

#endif
