// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESESSION_H
#define VOXTREL_TESTING_FAKESESSION_H

#include "voxtrel/testing/FakeHost.h"
#include "voxtrel/testing/FakeService.h"

namespace voxtrel::testing {

/// Of `service`.
inline FakeHost& hostOf(FakeService& service) {
    return *service.mState;
}

/// The session that clients of `service` share, joined by `client`. Inline, since the fake service
/// is in a library of its own, which that of the clients does not need.
inline std::shared_ptr<Session> sessionOf(FakeService& service,
                                          const std::shared_ptr<Mailbox>& client) {
    SessionSource& source = hostOf(service);
    return source.join(client);
}

}  // namespace voxtrel::testing

#endif
