// SPDX-License-Identifier: Apache-2.0
#include "tools/Lock.h"

#include "tools/Errors.h"
#include "tools/Settle.h"

namespace voxtrelctl {
namespace {

/// The switch of nothing.
constexpr auto kNoFlag = static_cast<VOXTRELAPI_GCONF>(15);

/// Longer than the service ever takes for the request; reached only if it lost it.
constexpr auto kLockPatience = std::chrono::seconds(10);

bool concernsLock(const Notice& notice) {
    return notice.source == Notice::Source::ServiceDied ||
           (notice.source == Notice::Source::Service && kindOf(notice.event) == EventKind::State &&
            notice.event.second == TTS::STATE_LOCK);
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

LockHold::LockHold(Session& session) : mSession(session) {
    check(session.client()->lock(), "");
    await();
}

LockHold::~LockHold() {
    // -5 when the service died meanwhile, and the lock with it.
    (void)mSession.client()->unlock();
}

// The request travels one way. The service tells everybody when the lock changes hands, and tells
// the one whom it refuses who has it.
void LockHold::await() {
    const auto deadline = EventQueue::Clock::now() + kLockPatience;
    for (;;) {
        const Notice notice = EventQueue::instance().next(deadline, concernsLock);
        if (notice.source == Notice::Source::Interrupted) {
            throw Interrupted();
        }
        if (notice.source == Notice::Source::TimedOut) {
            (void)mSession.client()->unlock();  // it may have it
            throw Unanswered("whether it has given the lock, and the command was not run");
        }
        if (notice.source != Notice::Source::Service) {
            throw Failure(TTS::STATUS_NO_SERVICE, "it did not give the lock");
        }
        if (notice.event.third == mSession.client()->mPid) {
            return;
        }
        if (notice.event.third != 0) {
            throw Failure(TTS::STATUS_LOCKED,
                          "process " + std::to_string(notice.event.third) + " has it");
        }
    }
}

}  // namespace voxtrelctl
