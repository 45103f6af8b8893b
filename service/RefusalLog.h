// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_REFUSALLOG_H
#define VOXTREL_SERVICE_REFUSALLOG_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "service/Locking.h"
#include "service/Log.h"

namespace voxtreld {

/// Logs refusals at a limited rate: repeated refusals of the same kind and process give one line,
/// and there are at most `kLines` lines a second in all.
///
/// Refusals that the client's own library reports are logged for debugging; a rejected user or
/// process and a full queue are warnings.
///
/// Called on: any thread. Locks: its own, not while it logs.
class RefusalLog {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr size_t kRemembered = 256;
    static constexpr int kLines = 50;

    explicit RefusalLog(Log log) : mLog(std::move(log)) {}

    /// @param line names the process, the operation and the reason.
    void refused(uint32_t pid, const char* operation, int status, const std::string& line,
                 Time now = std::chrono::steady_clock::now());

    /// The process has gone; another one may get its number.
    void forget(uint32_t pid);

private:
    struct Refusal {
        uint32_t pid;
        std::string operation;
        int status;

        bool operator==(const Refusal& other) const {
            return pid == other.pid && status == other.status && operation == other.operation;
        }
    };

    /// -1: not this one. Else how many before it were left out.
    int take(const Refusal& refusal, Time now);

    const Log mLog;
    Mutex mMutex;
    std::deque<Refusal> mSeen VOXTRELD_GUARDED_BY(mMutex);
    Time mSecond VOXTRELD_GUARDED_BY(mMutex);
    int mLines VOXTRELD_GUARDED_BY(mMutex) = 0;
    int mLeftOut VOXTRELD_GUARDED_BY(mMutex) = 0;
};

}  // namespace voxtreld

#endif
