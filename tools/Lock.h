// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_LOCK_H
#define VOXTREL_TOOLS_LOCK_H

#include "tools/Session.h"

namespace voxtrelctl {

/// True while another client holds the service lock.
///
/// The library's own `locked()` is one-way and says "no" whoever holds it. A request with an answer
/// is refused with -7 instead, so one is made that changes nothing.
bool isLockedByOther(Session& session);

/// Holds the service lock for a scope.
class LockHold {
public:
    /// Returns with the lock held. Throws Failure with -7 when another client holds it, -5 when the
    /// service dies, and Interrupted.
    explicit LockHold(Session& session);
    ~LockHold();
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

private:
    void await();

    Session& mSession;
};

}  // namespace voxtrelctl

#endif
