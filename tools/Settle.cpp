// SPDX-License-Identifier: Apache-2.0
#include "tools/Settle.h"

#include "tools/Errors.h"
#include "tools/Fence.h"

namespace voxtrelctl {
namespace {

constexpr auto kPatience = std::chrono::seconds(10);

bool matters(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service &&
            (isOfUtterance(notice.event) || isRefusal(notice.event)));
}

/// An event of an utterance, a refusal, the death of the service, or TimedOut.
Notice awaitEvent(EventQueue::Clock::time_point deadline) {
    const Notice notice = EventQueue::instance().next(deadline, matters);
    if (notice.source == Notice::Source::Interrupted) {
        throw Interrupted();
    }
    return notice;
}

/// The reason in a stopped event; 0 for any other, and for a flush.
int reasonOf(const Event& event) {
    return kindOf(event) == EventKind::Stopped ? statusOf(event) : 0;
}

/// Throws unless `event` leaves it possible that all is well; a refusal is kept in `refusal`.
void judge(const Event& event, Utterances& sent, int& refusal) {
    sent.see(event);
    if (sent.lost()) {
        throw Lost(*sent.lost());
    }
    const int reason = reasonOf(event);
    const bool isRight = Fence::isFence(event) && reason == TTS::STATUS_BAD_PARAMETER;
    if (refusal == 0 && !isRight) {
        refusal = reason;
    }
}

}  // namespace

void settle(Session& session, Utterances& sent, const std::string& unknown) {
    Fence fence(session);
    fence.send();
    const auto deadline = EventQueue::Clock::now() + kPatience;
    int refusal = 0;
    while (fence.isPending() && !fence.wasTaken()) {
        const Notice notice = awaitEvent(deadline);
        fence.see(notice);
        if (notice.source == Notice::Source::ServiceDied) {
            throw Failure(TTS::STATUS_NO_SERVICE, "it did not answer");
        }
        if (notice.source == Notice::Source::TimedOut) {
            check(refusal, "");
            fence.finish();
            throw Unanswered(unknown, fence.wasTaken() ? Unanswered::Why::TakesAnyPause
                                                       : Unanswered::Why::NoEvent);
        }
        if (isRefusal(notice.event)) {
            throw Failure(TTS::STATUS_PERMISSION_DENIED, describeRefusal(notice.event));
        }
        judge(notice.event, sent, refusal);
    }
    fence.finish();
    check(refusal, "");
    if (fence.wasTaken()) {
        warnOfAnyPause();
    }
}

EventReport checkEvents(Session& session) {
    Fence fence(session);
    fence.send();
    const auto deadline = EventQueue::Clock::now() + kPatience;
    Notice notice;
    do {
        notice = awaitEvent(deadline);
        fence.see(notice);
    } while (notice.source == Notice::Source::Service && !fence.wasAnswered());
    fence.finish();
    return {fence.wasAnswered(), fence.wasTaken()};
}

}  // namespace voxtrelctl
