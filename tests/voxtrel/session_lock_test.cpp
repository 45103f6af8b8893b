// SPDX-License-Identifier: Apache-2.0
// A lock of which something gets lost on its way.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "tests/voxtrel/LossyWay.h"
#include "voxtrel/session/Session.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeState;

class ALockOnALossyWay : public ::testing::Test {
protected:
    ~ALockOnALossyWay() override {
        session->leave(client, deadline());
        service->end();
    }

    static Session::Clock::time_point deadline() { return Session::Clock::now() + kLong; }
    bool isAsked(const std::string& what) const {
        const std::vector<std::string> requests = service->requests();
        return std::find(requests.begin(), requests.end(), what) != requests.end();
    }
    Status lock() { return session->lock(*client, deadline()).status(); }

    Losses losses;
    const std::shared_ptr<FakeState> service = std::make_shared<FakeState>();
    const std::shared_ptr<Mailbox> client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    const std::shared_ptr<Session> session = Session::joinAt(
        place,
        [this] { return std::make_shared<Session>(std::make_unique<LossyPort>(service, losses)); },
        client);
};

TEST_F(ALockOnALossyWay, IsLostWithItsRequestAndNobodyElses) {
    losses.lose(TTS::transaction::kLock);
    EXPECT_EQ(Status::Lost, lock());
    losses.end();
    EXPECT_EQ(Status::Ok, lock());
}

TEST_F(ALockOnALossyWay, IsGivenBackWhenTheNewsOfItIsLost) {
    losses.loseNewsOfLocks();
    EXPECT_EQ(Status::Lost, lock());
    losses.end();
    EXPECT_EQ(Status::Ok, lock()) << "the service has not kept it for us";
}

TEST_F(ALockOnALossyWay, IsGivenBackWhenTheFenceBehindItIsLost) {
    losses.lose(TTS::transaction::kSilence, 1);
    EXPECT_EQ(Status::TimedOut, session->lock(*client, Session::Clock::now() + 1s).status());
    EXPECT_TRUE(eventually([&] { return isAsked("unlock"); })) << "the service keeps it for us";
    EXPECT_TRUE(losses.areOver());
    EXPECT_EQ(Status::Ok, lock());
}

TEST_F(ALockOnALossyWay, IsTakenAgainThoughItCouldNotBeGivenBack) {
    losses.lose(TTS::transaction::kUnlock);
    const Result<std::uint64_t> first = session->lock(*client, deadline());
    ASSERT_TRUE(first);
    session->unlock(*first);
    EXPECT_EQ(Status::Ok, lock());
}

TEST_F(ALockOnALossyWay, IsAnothersThoughTheNewsOfThatIsLost) {
    losses.loseNewsOfLocks();
    service->setHolder(4711);
    EXPECT_EQ(Status::Locked, lock());
}

}  // namespace
