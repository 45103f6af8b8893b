// SPDX-License-Identifier: Apache-2.0
#include "tools/Settle.h"

#include <limits>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

constexpr uint32_t kFence = std::numeric_limits<uint32_t>::max();
constexpr auto kPatience = std::chrono::seconds(10);

bool matters(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service && kindOf(notice.event) == EventKind::Stopped);
}

}  // namespace

void settle(Session& session) {
    check(session.client()->silence(kFence, kFence), "");
    const auto deadline = EventQueue::Clock::now() + kPatience;
    for (;;) {
        const Notice notice = EventQueue::instance().next(deadline, matters);
        if (notice.source == Notice::Source::Interrupted) {
            throw Interrupted();
        }
        if (notice.source != Notice::Source::Service) {
            throw Failure(TTS::STATUS_NO_SERVICE, "it did not answer");
        }
        const int status = statusOf(notice.event);
        const bool isFence = notice.event.second == kFence;
        if (isFence && status == TTS::STATUS_BAD_PARAMETER) {
            return;
        }
        check(status, "");
    }
}

}  // namespace voxtrelctl
