// SPDX-License-Identifier: Apache-2.0
// A request to drop speech that gets lost on its way.
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "tests/voxtrel/LossyWay.h"
#include "voxtrel/session/Session.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeState;

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

    Losses losses;
    Notes notes;
    const std::shared_ptr<FakeState> service = std::make_shared<FakeState>();
    const std::shared_ptr<Mailbox> client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    const std::shared_ptr<Session> session = Session::joinAt(
        place,
        [this] { return std::make_shared<Session>(std::make_unique<LossyPort>(service, losses)); },
        client);
};

TEST_F(ALostRequestToStop, IsNoSuccessForWhoSilencesEverybody) {
    const Utterance sounding = speakOn();
    losses.lose(TTS::transaction::kStopAndFlush);
    EXPECT_EQ(Status::Lost, session->stopEverybody(client, after(Milliseconds(1000))).status());
    EXPECT_TRUE(sounding.outcome().isPending());
    losses.end();
    EXPECT_EQ(Status::Ok, session->stopEverybody(client, after(kLong)).status());
    EXPECT_EQ("stopped by client", textOf(sounding.outcome())) << "at once";
}

TEST_F(ALostRequestToStop, IsNotTheReasonOfALaterStop) {
    const Utterance sounding = speakOn();
    losses.lose(TTS::transaction::kStopAndFlush, 1);
    EXPECT_EQ(Status::Lost, session->stopEverybody(client, after(Milliseconds(1000))).status());
    service->stopByAnother();
    EXPECT_TRUE(eventually([&] { return !sounding.outcome().isPending(); }));
    EXPECT_EQ("stopped by somebody", textOf(sounding.outcome()));
}

TEST_F(ALostRequestToStop, HasDroppedTheSpeechWhereOnlyTheFenceBehindItIsLost) {
    const Utterance sounding = speakOn();
    losses.lose(TTS::transaction::kSilence, 1);
    EXPECT_EQ(Status::TimedOut, session->stopEverybody(client, after(Milliseconds(1000))).status());
    EXPECT_TRUE(eventually([&] { return !sounding.outcome().isPending(); }));
    EXPECT_EQ("stopped by client", textOf(sounding.outcome()));
}

}  // namespace
