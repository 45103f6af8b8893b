// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_EVENTQUEUE_H
#define VOXTREL_TOOLS_EVENTQUEUE_H

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>

#include "tools/Events.h"

namespace voxtrelctl {

/// What wakes the main thread.
struct Notice {
    enum class Source {
        Service,      ///< `event` came from the service, or from the client's own setters
        ServiceDied,  ///< the service process is gone
        Connected,    ///< a connection attempt ended; `status` is its result
        ChildEnded,   ///< a command that this program runs ended; `status` as from waitpid
        Interrupted,  ///< Ctrl-C, or a request to end; `status` is the signal's number
        TimedOut,     ///< nothing of the wanted kind within the time given
    };
    Source source = Source::TimedOut;
    Event event;
    int status = 0;
};

/// Brings what other threads and signals have to say to the main thread, which sleeps in the kernel
/// until there is something.
///
/// The notification function of the client library is a plain function pointer, so there is one
/// queue in the process. It is never destroyed: binder threads may post while the process ends.
/// post() is called on any thread; next() and the constructor on the main thread only.
/// Locks: its own, held only while the queue is touched.
class EventQueue {
public:
    using Clock = std::chrono::steady_clock;
    using Filter = std::function<bool(const Notice&)>;

    /// The first call takes SIGINT, SIGTERM and SIGHUP over, for this thread and every thread
    /// started later: call it before the binder threads start.
    static EventQueue& instance();

    /// The notification function to hand to the client library.
    static void onEvent(unsigned first, unsigned second, unsigned third);

    void post(const Notice& notice);

    /// The oldest notice that `wanted` accepts; what it does not accept stays queued. Interrupted
    /// and TimedOut are given whatever `wanted` says.
    Notice next(Clock::time_point deadline, const Filter& wanted);

    /// The oldest notice, without a time limit.
    Notice next();

private:
    EventQueue();
    ~EventQueue() = default;

    bool take(const Filter& wanted, Notice& notice);

    int mWake;     ///< eventfd: something was posted
    int mSignals;  ///< signalfd
    std::mutex mMutex;
    std::deque<Notice> mQueue;
};

}  // namespace voxtrelctl

#endif
