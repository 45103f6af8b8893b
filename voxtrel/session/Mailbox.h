// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_MAILBOX_H
#define VOXTREL_SESSION_MAILBOX_H

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "voxtrel/Event.h"

namespace voxtrel {

/// The events of one client on their way to its handler.
///
/// A full one drops words and marks, of which the next shows the progress as well, and never
/// anything else, unless memory runs out. Called on: any thread. Locks: its own, never while the
/// handler runs.
class Mailbox {
public:
    using Handler = std::function<void(const Event&)>;

    /// @param isPolled keeps `fd` readable while there is something to dispatch.
    explicit Mailbox(bool isPolled);
    ~Mailbox();
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    /// Dispatched by the application, not by the session's thread.
    bool isPolled() const { return mIsPolled; }

    /// -1 unless polled, or where the system had no descriptor left.
    int fd() const { return mFd; }

    /// Dropped while there is no handler. Throws nothing.
    /// @return there is something new to dispatch.
    bool put(Event&& event);

    /// Replaces the handler, and waits until the old one has returned unless it is the caller. What
    /// has not been handled yet is left to the new one.
    void setHandler(Handler handler);
    bool hasHandler() const;

    /// Runs the handler for all that is there, or for the first `max`; for nothing while another
    /// thread, or the caller itself, is inside it.
    /// @return how many events there were.
    std::size_t dispatch(std::size_t max = std::numeric_limits<std::size_t>::max());

    /// No handler runs from now on; waits for one as `setHandler` does.
    void close();

private:
    using SharedHandler = std::shared_ptr<const Handler>;

    /// Words beyond are dropped.
    static constexpr std::size_t kRoom = 256;

    std::size_t waiting() const { return mEvents.size() - mFirst; }
    Event takeFirst();
    void append(Event&& event);
    void clear();
    void handleFirst(std::unique_lock<std::mutex>& lock);
    void waitForOlder(std::unique_lock<std::mutex>& lock);
    bool renews(const Event& event);
    void signal() const;
    void unsignal() const;

    const bool mIsPolled;
    const int mFd;
    mutable std::mutex mMutex;
    std::condition_variable mIdle;
    SharedHandler mHandler;
    std::vector<Event> mEvents;  ///< from `mFirst`; memory is kept
    std::size_t mFirst = 0;
    std::thread::id mInside;  ///< dispatches
    SharedHandler mRunning;   ///< the handler that runs there
    bool mClosed = false;
};

}  // namespace voxtrel

#endif
