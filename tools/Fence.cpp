// SPDX-License-Identifier: Apache-2.0
#include "tools/Fence.h"

#include <iostream>
#include <limits>

namespace voxtrelctl {
namespace {

constexpr uint32_t kFence = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kNotSet = 65535;
constexpr unsigned kFlushOwn = 1;
constexpr auto kRecallPatience = std::chrono::seconds(2);

bool isAboutFence(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service && Fence::isFence(notice.event));
}

}  // namespace

Fence::~Fence() {
    finish();
}

void Fence::send() {
    mPending = true;
    mRecalled = false;
    (void)mSession.service().silence(mSession.client()->mPid, kFence, kFence, kNotSet);
}

void Fence::see(const Notice& notice) {
    if (!isAboutFence(notice)) {
        return;
    }
    if (notice.source == Notice::Source::ServiceDied) {
        mPending = false;
        return;
    }
    mAnswered = true;
    // What is dropped because speech is off has started as well, and was not taken.
    mTaken = kindOf(notice.event) != EventKind::Stopped || statusOf(notice.event) == 0;
    mPending = mPending && !isTerminal(notice.event);
    if (mPending) {
        recall();
    }
}

void Fence::recall() {
    if (mPending && !mRecalled) {
        mRecalled = true;
        // Not through the client, which would ask first whether speech is on: a service that hangs
        // does not answer.
        (void)mSession.service().stopAndFlush(mSession.client()->mPid, kFlushOwn);
    }
}

void Fence::finish() {
    recall();
    const auto deadline = EventQueue::Clock::now() + kRecallPatience;
    while (mPending) {
        const Notice notice = EventQueue::instance().next(deadline, isAboutFence);
        if (notice.source == Notice::Source::TimedOut ||
            notice.source == Notice::Source::Interrupted) {
            return;
        }
        see(notice);
    }
}

bool Fence::isFence(const Event& event) {
    return isOfUtterance(event) && event.second == kFence;
}

void warnOfAnyPause() {
    std::cerr << "voxtrelctl: the service takes a pause of 49 days, which it must refuse at once "
                 "(docs/writing-a-service.md); it was told to drop it again\n";
}

}  // namespace voxtrelctl
