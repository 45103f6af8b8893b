// SPDX-License-Identifier: Apache-2.0
#include "tools/Lock.h"

#include "tools/Errors.h"
#include "tools/Fence.h"
#include "tools/Settle.h"

namespace voxtrelctl {
namespace {

/// The switch of nothing.
constexpr auto kNoFlag = static_cast<VOXTRELAPI_GCONF>(15);

/// Longer than the service ever takes for the request; reached only if it lost it.
constexpr auto kLockPatience = std::chrono::seconds(10);

bool concernsLock(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service &&
            (Fence::isFence(notice.event) || isRefusal(notice.event) ||
             (kindOf(notice.event) == EventKind::State && notice.event.second == TTS::STATE_LOCK)));
}

// The request travels one way. The service tells everybody when the lock changes hands, and tells
// the one whom it refuses who has it, or that it may not.
Event awaitEvent(EventQueue::Clock::time_point deadline, const std::string& loss,
                 const std::string& unknown) {
    const Notice notice = EventQueue::instance().next(deadline, concernsLock);
    switch (notice.source) {
        case Notice::Source::Interrupted:
            throw Interrupted();
        case Notice::Source::TimedOut:
            throw Unanswered(unknown);
        case Notice::Source::Service:
            break;
        default:
            throw Failure(TTS::STATUS_NO_SERVICE, loss);
    }
    if (isRefusal(notice.event)) {
        throw Failure(TTS::STATUS_PERMISSION_DENIED, describeRefusal(notice.event));
    }
    return notice.event;
}

}  // namespace

LockState lockState(Session& session) {
    switch (session.client()->setEnable2(kNoFlag, false)) {
        case TTS::STATUS_LOCKED:
            return LockState::OfAnother;
        case TTS::STATUS_BAD_PARAMETER:
            return LockState::Free;
        default:
            return LockState::Unknown;
    }
}

uint32_t askForLock(Session& session, const std::string& unknown) {
    check(session.client()->lock(), "");
    const auto deadline = EventQueue::Clock::now() + kLockPatience;
    Event event = {};
    while (event.third == 0) {
        try {
            event = awaitEvent(deadline, "it did not give the lock", unknown);
        } catch (const Unanswered&) {
            (void)session.client()->unlock();  // it may have it
            throw;
        }
    }
    return event.third;
}

void breakLock(Session& session, uint32_t holder) {
    // Only who means to break it names another process than itself. Not every runtime tells the
    // service whom to tell of a refusal, so the fence tells that the request was served.
    (void)session.service().unlock(holder);
    Fence fence(session);
    fence.send();
    const auto deadline = EventQueue::Clock::now() + kLockPatience;
    Event event = {};
    do {
        event = awaitEvent(deadline, "the lock is gone with it", "whether the lock is free");
        if (Fence::isFence(event)) {
            fence.see({Notice::Source::Service, event, 0});
            throw Failure(TTS::STATUS_PERMISSION_DENIED, "the service did not free the lock");
        }
    } while (event.third == holder);
}

LockHold::LockHold(Session& session) : mSession(session) {
    const uint32_t holder =
        askForLock(session, "whether it has given the lock, and the command was not run");
    if (holder != session.client()->mPid) {
        throw Failure(TTS::STATUS_LOCKED, "process " + std::to_string(holder) + " has it");
    }
}

LockHold::~LockHold() {
    // -5 when the service died meanwhile, and the lock with it.
    (void)mSession.client()->unlock();
}

}  // namespace voxtrelctl
