// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_WORKER_H
#define VOXTREL_SESSION_WORKER_H

#include <functional>
#include <thread>

namespace voxtrel {

/// A thread of a session's, which may be started again after it has finished. Called on: any
/// thread, one at a time.
class Worker {
public:
    Worker() = default;

    /// A thread that nobody has joined goes its way.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Runs `loop`, unless it runs. The thread gets no signal that is meant for the process, so
    /// that an application may wait for its signals on a thread of its choice. Throws
    /// std::system_error or std::bad_alloc; then nothing runs.
    void startWithoutSignals(const std::function<void()>& loop);

    /// Runs `loop`, unless it runs, with the signals that the calling thread gets.
    void start(const std::function<void()>& loop);

    /// The last thing that the loop does.
    void finish();

    bool isRunning() const { return mIsRunning; }

    /// The calling thread is this one.
    bool isHere() const { return mId == std::this_thread::get_id(); }

    /// Lets go of the thread.
    /// @return it, to be joined, if it has finished; one that runs ends by itself.
    std::thread release();

private:
    std::thread mHandle;
    std::thread::id mId;
    bool mIsRunning = false;
};

}  // namespace voxtrel

#endif
