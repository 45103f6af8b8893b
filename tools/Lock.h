// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_LOCK_H
#define VOXTREL_TOOLS_LOCK_H

#include <string>

#include "tools/Reports.h"
#include "tools/Session.h"

namespace voxtrelctl {

/// Whether another client holds the service lock.
///
/// The library's own `locked()` is one-way and says "no" whoever holds it. So the switch of nothing
/// is asked for: a locked service refuses it with -7, a free one with -3, and one that does neither
/// has not told.
LockState lockState(Session& session);

/// Asks for the lock. @return the process that holds it now: this one or another.
/// Throws Failure with -10 when this user may not have it and -5 when the service dies, Unanswered
/// when it sends no event of it (`unknown` is a part of that), and Interrupted.
uint32_t askForLock(Session& session, const std::string& unknown);

/// Frees the lock of another process, for a user that may. Throws as askForLock() does.
void breakLock(Session& session, uint32_t holder);

/// Holds the service lock for a scope.
class LockHold {
public:
    /// Returns with the lock held. Throws Failure with -7 when another client holds it, and as
    /// askForLock() does.
    explicit LockHold(Session& session);
    ~LockHold();
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

private:
    Session& mSession;
};

}  // namespace voxtrelctl

#endif
