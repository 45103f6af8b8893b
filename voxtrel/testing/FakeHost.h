// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKEHOST_H
#define VOXTREL_TESTING_FAKEHOST_H

#include <memory>
#include <mutex>

#include "voxtrel/testing/FakeState.h"
#include "voxtrel/testing/SessionSource.h"

namespace voxtrel::testing {

/// A fake service with the session that its clients share. Called on: any thread.
class FakeHost : public FakeState,
                 public SessionSource,
                 public std::enable_shared_from_this<FakeHost> {
public:
    std::shared_ptr<Session> join(const std::shared_ptr<Mailbox>& client) override;

private:
    std::mutex mSessionMutex;
    std::weak_ptr<Session> mSession;
};

}  // namespace voxtrel::testing

#endif
