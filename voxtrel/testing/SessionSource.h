// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_SESSIONSOURCE_H
#define VOXTREL_TESTING_SESSIONSOURCE_H

#include <memory>

#include "voxtrel/session/Session.h"

namespace voxtrel::testing {

/// What the library of the clients calls of a fake service.
class SessionSource {
public:
    virtual ~SessionSource() = default;

    /// The session that clients of this service share, joined by `client`.
    virtual std::shared_ptr<Session> join(const std::shared_ptr<Mailbox>& client) = 0;
};

}  // namespace voxtrel::testing

#endif
