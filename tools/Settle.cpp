// SPDX-License-Identifier: Apache-2.0
#include "tools/Settle.h"

#include <limits>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

constexpr uint32_t kFence = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kNotSet = 65535;
constexpr auto kPatience = std::chrono::seconds(10);

bool matters(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service &&
            (isTerminal(notice.event) || isRefusal(notice.event)));
}

/// A terminal event, or the death of the service, or TimedOut.
Notice awaitTerminal(EventQueue::Clock::time_point deadline) {
    const Notice notice = EventQueue::instance().next(deadline, matters);
    if (notice.source == Notice::Source::Interrupted) {
        throw Interrupted();
    }
    return notice;
}

}  // namespace

void settle(Session& session, const std::string& unknown) {
    check(session.client()->silence(kFence, kFence), "");
    const auto deadline = EventQueue::Clock::now() + kPatience;
    for (;;) {
        const Notice notice = awaitTerminal(deadline);
        if (notice.source == Notice::Source::ServiceDied) {
            throw Failure(TTS::STATUS_NO_SERVICE, "it did not answer");
        }
        if (notice.source == Notice::Source::TimedOut) {
            throw Unanswered(unknown);
        }
        if (isRefusal(notice.event)) {
            throw Failure(TTS::STATUS_PERMISSION_DENIED, describeRefusal(notice.event));
        }
        const int status = kindOf(notice.event) == EventKind::Stopped ? statusOf(notice.event) : 0;
        if (isFence(notice.event) && (status == TTS::STATUS_BAD_PARAMETER || status == 0)) {
            return;
        }
        check(status, "");
    }
}

void sendFence(Session& session) {
    (void)session.service().silence(session.client()->mPid, kFence, kFence, kNotSet);
}

bool isFence(const Event& event) {
    return isOfUtterance(event) && event.second == kFence;
}

bool sendsEvents(Session& session) {
    sendFence(session);
    const auto deadline = EventQueue::Clock::now() + kPatience;
    for (;;) {
        const Notice notice = awaitTerminal(deadline);
        if (notice.source != Notice::Source::Service || isFence(notice.event)) {
            return notice.source == Notice::Source::Service;
        }
    }
}

}  // namespace voxtrelctl
