// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeHost.h"

#include "voxtrel/testing/FakeRemote.h"

namespace voxtrel::testing {

std::shared_ptr<Session> FakeHost::join(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mSessionMutex);
    const auto newSession = [this] {
        return std::make_shared<Session>(std::make_unique<FakePort>(weak_from_this()));
    };
    return Session::joinAt(mSession, newSession, client);
}

}  // namespace voxtrel::testing
