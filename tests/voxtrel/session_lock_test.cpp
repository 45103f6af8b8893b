// SPDX-License-Identifier: Apache-2.0
// A lock of which something gets lost on its way.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "ipc/BnCallback.h"
#include "tests/voxtrel/ClientTest.h"
#include "vocabulary/Events.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/testing/FakeRemote.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeRemote;
using voxtrel::testing::FakeState;

/// What never reaches the service, or never comes from it.
struct Losses {
    std::atomic<bool> locks{false};
    std::atomic<bool> unlocks{false};
    std::atomic<bool> newsOfLocks{false};
};

class LossyCallback : public TTS::BnCallback {
public:
    LossyCallback(android::sp<TTS::ICallback> client, const Losses& losses)
        : mClient(std::move(client)), mLosses(losses) {}

    bool notify(unsigned event, unsigned second, unsigned third) override {
        const bool isLost =
            mLosses.newsOfLocks && event == TTS::EVENT_STATE && second == TTS::STATE_LOCK;
        return isLost || mClient->notify(event, second, third);
    }

private:
    const android::sp<TTS::ICallback> mClient;
    const Losses& mLosses;
};

class LossyRemote : public FakeRemote {
public:
    LossyRemote(std::shared_ptr<FakeState> service, const Losses& losses)
        : FakeRemote(std::move(service), kFirstLife), mLosses(losses) {}

    int lock(unsigned pid) override { return mLosses.locks ? 0 : FakeRemote::lock(pid); }
    int unlock(unsigned pid) override { return mLosses.unlocks ? 0 : FakeRemote::unlock(pid); }
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& client) override {
        return FakeRemote::registerCallback(pid, new LossyCallback(client, mLosses));
    }

private:
    static constexpr std::uint64_t kFirstLife = 1;
    const Losses& mLosses;
};

class LossyPort : public Port {
public:
    LossyPort(std::shared_ptr<FakeState> service, const Losses& losses)
        : mService(std::move(service)), mLosses(losses) {}

    Found find(std::function<void()> /*died*/) override {
        return {new LossyRemote(mService, mLosses)};
    }

private:
    const std::shared_ptr<FakeState> mService;
    const Losses& mLosses;
};

class ALockOnALossyWay : public ::testing::Test {
protected:
    ~ALockOnALossyWay() override {
        session->leave(client, deadline());
        service->end();
    }

    static Session::Clock::time_point deadline() { return Session::Clock::now() + kLong; }
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
    losses.locks = true;
    EXPECT_EQ(Status::Lost, lock());
    losses.locks = false;
    EXPECT_EQ(Status::Ok, lock());
}

TEST_F(ALockOnALossyWay, IsGivenBackWhenTheNewsOfItIsLost) {
    losses.newsOfLocks = true;
    EXPECT_EQ(Status::Lost, lock());
    losses.newsOfLocks = false;
    EXPECT_EQ(Status::Ok, lock()) << "the service has not kept it for us";
}

TEST_F(ALockOnALossyWay, IsTakenAgainThoughItCouldNotBeGivenBack) {
    losses.unlocks = true;
    const Result<std::uint64_t> first = session->lock(*client, deadline());
    ASSERT_TRUE(first);
    session->unlock(*first);
    EXPECT_EQ(Status::Ok, lock());
}

TEST_F(ALockOnALossyWay, IsAnothersThoughTheNewsOfThatIsLost) {
    losses.newsOfLocks = true;
    service->setHolder(4711);
    EXPECT_EQ(Status::Locked, lock());
}

}  // namespace
