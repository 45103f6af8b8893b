// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SETTLE_H
#define VOXTREL_TOOLS_SETTLE_H

#include <stdexcept>
#include <string>

#include "tools/Session.h"

namespace voxtrelctl {

/// The user ended a command; what it had asked for is taken back already.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

// Requests to speak and to stop travel one way, so their 0 only means "sent", and a process that
// left at once could overtake them. Requests of one client are served in the order sent, and one
// that is refused is told so by an event. A pause that is too long for any service is the fence:
// the event of its refusal says that everything before it was served.

/// Returns when the service has taken every request that was sent before.
///
/// Throws Failure with the reason when a request sent before was refused, -5 when the service dies,
/// Unanswered (of which `unknown` is a part) when it sends no event in time, and Interrupted.
void settle(Session& session, const std::string& unknown);

/// Sends the fence, without waiting, whether speech is on or not.
void sendFence(Session& session);

/// An event about the fence.
bool isFence(const Event& event);

/// Sends the fence, and says whether an event about it came in time. Throws Interrupted.
bool sendsEvents(Session& session);

}  // namespace voxtrelctl

#endif
