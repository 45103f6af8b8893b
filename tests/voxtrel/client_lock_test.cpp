// SPDX-License-Identifier: Apache-2.0
// Who holds the lock, and how it is broken.
#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;

class ALockOfAnother : public ClientTest {
protected:
    ALockOfAnother() {
        EXPECT_TRUE(client.waitUntilConnected(kLong));
        service.lockByAnother(4711);
    }

    Client client{"test", options()};
};

TEST_F(ALockOfAnother, IsRefusedWithTheProcessThatHoldsIt) {
    const Result<Lock> refused = client.lock();
    EXPECT_EQ(Status::Locked, refused.status());
    EXPECT_STREQ("process 4711 holds the service's lock: try again when it is free",
                 refused.message());
}

TEST_F(ALockOfAnother, IsSeenWithoutAskingForIt) {
    EXPECT_EQ(LockState::HeldByAnother, client.lockState().value());
    service.unlockByAnother();
    EXPECT_EQ(LockState::Free, client.lockState().value());
    const Lock lock = std::move(client.lock().value());
    EXPECT_EQ(LockState::HeldByThisProcess, client.lockState().value());
}

TEST_F(ALockOfAnother, IsBroken) {
    EXPECT_EQ(4711U, client.breakLock().value());
    EXPECT_EQ(LockState::Free, client.lockState().value());
    EXPECT_EQ(0U, client.breakLock().value()) << "nobody has it any more";
    EXPECT_EQ(LockState::Free, client.lockState().value()) << "and this client does not keep it";
}

TEST_F(ALockOfAnother, OfTheSameProcessIsNotBroken) {
    service.unlockByAnother();
    Client holder("holder", options());
    const Lock lock = std::move(holder.lock().value());
    EXPECT_EQ(Status::Locked, client.breakLock().status());
    EXPECT_TRUE(lock.isHeld());
}

}  // namespace
