// SPDX-License-Identifier: Apache-2.0
// A request to drop speech that gets lost on its way.
#include <atomic>
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/testing/FakeRemote.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeRemote;
using voxtrel::testing::FakeState;

constexpr std::uint64_t kFirstLife = 1;

class LossyRemote : public FakeRemote {
public:
    LossyRemote(std::shared_ptr<FakeState> service, const std::atomic<bool>& isLossy)
        : FakeRemote(std::move(service), kFirstLife), mIsLossy(isLossy) {}

    int stopAndFlush(unsigned pid, unsigned what) override {
        return mIsLossy ? 0 : FakeRemote::stopAndFlush(pid, what);
    }

private:
    const std::atomic<bool>& mIsLossy;
};

class LossyPort : public Port {
public:
    LossyPort(std::shared_ptr<FakeState> service, const std::atomic<bool>& isLossy)
        : mService(std::move(service)), mIsLossy(isLossy) {}

    Found find(std::function<void()> /*died*/) override {
        return {new LossyRemote(mService, mIsLossy)};
    }

private:
    const std::shared_ptr<FakeState> mService;
    const std::atomic<bool>& mIsLossy;
};

class ALostRequestToStop : public ::testing::Test {
protected:
    ~ALostRequestToStop() override {
        session->leave(client, after(kLong));
        service->end();
    }

    static Session::Clock::time_point after(std::chrono::milliseconds time) {
        return Session::Clock::now() + time;
    }

    /// Says something that sounds until it is stopped.
    Utterance speakOn() {
        service->hold(true);
        client->setHandler(notes.taker());
        auto speech = std::make_shared<Speech>();
        speech->client = client;
        speech->state = std::make_shared<UtteranceState>(1);
        speech->text = "Hello.";
        session->say(speech);
        EXPECT_TRUE(eventually([&] {
            client->dispatch();
            return notes.count(Event::Kind::Started) == 1;
        }));
        return Utterance(speech->state);
    }

    std::atomic<bool> isLossy{false};
    Notes notes;
    const std::shared_ptr<FakeState> service = std::make_shared<FakeState>();
    const std::shared_ptr<Mailbox> client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    const std::shared_ptr<Session> session = Session::joinAt(
        place,
        [this] { return std::make_shared<Session>(std::make_unique<LossyPort>(service, isLossy)); },
        client);
};

TEST_F(ALostRequestToStop, IsNoSuccessForWhoSilencesEverybody) {
    const Utterance sounding = speakOn();
    isLossy = true;
    EXPECT_EQ(Status::Lost, session->stopEverybody(client, after(Milliseconds(300))).status());
    EXPECT_TRUE(sounding.outcome().isPending());
    isLossy = false;
    EXPECT_EQ(Status::Ok, session->stopEverybody(client, after(kLong)).status());
    EXPECT_EQ("stopped by client", textOf(sounding.outcome())) << "at once";
}

}  // namespace
