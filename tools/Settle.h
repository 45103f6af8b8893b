// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SETTLE_H
#define VOXTREL_TOOLS_SETTLE_H

#include <stdexcept>
#include <string>

#include "tools/Reports.h"
#include "tools/Session.h"
#include "tools/Utterances.h"

namespace voxtrelctl {

/// The user ended a command; what it had asked for is taken back already.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

// Requests to speak and to stop travel one way, so their 0 only means "sent", and a process that
// left at once could overtake them. What the service refuses it tells by an event; the fence
// (tools/Fence.h) shows when it is through with them.

/// Returns when the service is through with every request that was sent before and has reached it.
/// A service that takes the fence is complained of on standard error.
///
/// Throws Failure with the reason when a request sent before was refused, -5 when the service dies,
/// Lost when events about `sent` show that one was lost, Unanswered (of which `unknown` is a part)
/// when no event about the fence comes in time, and Interrupted; after the last three the service
/// has been asked to drop what this client asked for.
void settle(Session& session, Utterances& sent, const std::string& unknown);

/// Sends the fence, and says what came of it in time. Throws Interrupted.
EventReport checkEvents(Session& session);

}  // namespace voxtrelctl

#endif
