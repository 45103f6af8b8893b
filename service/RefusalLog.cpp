// SPDX-License-Identifier: Apache-2.0
#include "service/RefusalLog.h"

#include <algorithm>
#include <utility>

#include "vocabulary/Status.h"

namespace voxtreld {

int RefusalLog::take(const Refusal& refusal, Time now) {
    const MutexLock lock(mMutex);
    if (std::find(mSeen.begin(), mSeen.end(), refusal) != mSeen.end()) {
        return -1;
    }
    mSeen.push_back(refusal);
    if (mSeen.size() > kRemembered) {
        mSeen.pop_front();
    }
    if (now - mSecond >= std::chrono::seconds(1)) {
        mSecond = now;
        mLines = 0;
    }
    if (mLines == kLines) {
        ++mLeftOut;
        return -1;
    }
    ++mLines;
    return std::exchange(mLeftOut, 0);
}

void RefusalLog::refused(uint32_t pid, const char* operation, int status, const std::string& line,
                         Time now) {
    const int leftOut = take({pid, operation, status}, now);
    if (leftOut < 0) {
        return;
    }
    if (leftOut > 0) {
        mLog(LogLevel::Warning, std::to_string(leftOut) + " more refusals were left out");
    }
    const bool matters =
        status == TTS::STATUS_PERMISSION_DENIED || status == TTS::STATUS_QUEUE_FULL;
    mLog(matters ? LogLevel::Warning : LogLevel::Debug, line);
}

void RefusalLog::forget(uint32_t pid) {
    const MutexLock lock(mMutex);
    mSeen.erase(std::remove_if(mSeen.begin(), mSeen.end(),
                               [pid](const Refusal& refusal) { return refusal.pid == pid; }),
                mSeen.end());
}

}  // namespace voxtreld
