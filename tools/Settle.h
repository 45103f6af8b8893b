// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SETTLE_H
#define VOXTREL_TOOLS_SETTLE_H

#include <stdexcept>

#include "tools/Session.h"

namespace voxtrelctl {

/// The user ended a command; what it had asked for is taken back already.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

/// Returns when the service has taken every request that was sent before.
///
/// Requests to speak and to stop travel one way, so their 0 only means "sent", and a process that
/// left at once could overtake them. Requests of one client are served in the order sent, and one
/// that is refused is told so by an event: this function sends a pause that is too long for any
/// service and waits for its refusal.
///
/// Throws Failure with the reason when a request sent before was refused, -5 when the service dies
/// or does not answer, and Interrupted.
void settle(Session& session);

}  // namespace voxtrelctl

#endif
