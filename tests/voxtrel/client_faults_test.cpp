// SPDX-License-Identifier: Apache-2.0
// Whatever happens, each utterance has one outcome.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>

#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using Kind = Event::Kind;

constexpr int kSteps = 600;

/// A client, what it said, and what it was told.
struct Speaker {
    std::shared_ptr<Notes> notes = std::make_shared<Notes>();
    std::unique_ptr<Client> client;
    std::vector<Utterance> said;
};

class RandomFaults : public ClientTest {
protected:
    RandomFaults() {
        const char* const given = std::getenv("VOXTREL_TEST_SEED");
        mSeed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                 : std::random_device()();
        std::printf("VOXTREL_TEST_SEED=%u\n", mSeed);
        mRandom.seed(mSeed);
        for (Speaker& speaker : mSpeakers) {
            begin(speaker);
        }
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(mRandom() % limit); }

    void begin(Speaker& speaker) {
        speaker = {};
        speaker.client = std::make_unique<Client>("test", options(50ms));
        speaker.client->onEvent(speaker.notes->taker());
    }

    void end(Speaker& speaker) {
        speaker.client.reset();
        for (const Utterance& utterance : speaker.said) {
            EXPECT_FALSE(utterance.outcome().isPending());
            EXPECT_GE(1U, speaker.notes->ended(utterance));
        }
        mUtterances += speaker.said.size();
    }

    void say(Speaker& speaker) {
        static const std::string texts[] = {"Hello.",
                                            "",
                                            "\u00c9t\u00e9, \u20ac.",
                                            "\xFF",
                                            std::string(5000, 'a'),
                                            "<speak>One</speak>"};
        SpeechOptions how;
        how.onLoss = static_cast<OnLoss>(below(3));
        if (below(20) == 0) {
            how.speed = 1;
        }
        speaker.said.push_back(below(4) == 0 ? speaker.client->pause(Milliseconds(below(70000)))
                                             : speaker.client->say(texts[below(6)], how));
    }

    void act(Speaker& speaker) {
        const std::function<void()> acts[] = {
            [&] { speaker.client->stop(); },
            [&] { (void)speaker.client->stopEverybody(20ms); },
            [&] { (void)speaker.client->settings(20ms); },
            [&] { (void)speaker.client->lock(20ms); },
            [&] { (void)speaker.client->waitForAll(Milliseconds(below(20))); },
            [&] {
                end(speaker);
                begin(speaker);
            },
        };
        acts[below(6)]();
    }

    void fail() {
        const std::function<void()> faults[] = {
            [this] { service.refuseNext(Status::QueueFull); },
            [this] { service.loseNextRequest(); },
            [this] { service.loseNextEvent(Kind::Started); },
            [this] { service.loseNextEvent(Kind::Word); },
            [this] { service.loseNextEvent(Kind::Ended); },
            [this] { service.hold(); },
            [this] { service.goOn(); },
            [this] { service.goOn(); },
            [this] { service.freeze(); },
            [this] { service.thaw(); },
            [this] { service.thaw(); },
            [this] { service.die(); },
            [this] { service.shutDown(); },
            [this] { service.comeBack(); },
            [this] { service.comeBack(); },
            [this] { service.comeBack(); },
            [this] { service.stopByAnother(); },
            [this] { service.lockByAnother(4711); },
            [this] { service.unlockByAnother(); },
            [this] { service.unlockByAnother(); },
        };
        faults[below(20)]();
    }

    void recover() {
        service.thaw();
        service.goOn();
        service.unlockByAnother();
        service.comeBack();
    }

    unsigned mSeed = 0;
    std::mt19937 mRandom;
    Speaker mSpeakers[3];
    std::size_t mUtterances = 0;
};

TEST_F(RandomFaults, LeaveEachUtteranceWithOneOutcomeAndOneEventOfIt) {
    SCOPED_TRACE("VOXTREL_TEST_SEED=" + std::to_string(mSeed));
    for (int step = 0; step < kSteps; ++step) {
        Speaker& speaker = mSpeakers[below(3)];
        const unsigned what = below(20);
        if (what < 12) {
            say(speaker);
        } else if (what < 14) {
            act(speaker);
        } else if (what < 17) {
            fail();
        } else {
            service.waitForSpoken(service.spoken().size() + 1, Milliseconds(below(10)));
        }
    }
    recover();
    for (Speaker& speaker : mSpeakers) {
        EXPECT_TRUE(speaker.client->waitForAll(2 * kLong));
        for (const Utterance& utterance : speaker.said) {
            EXPECT_FALSE(utterance.outcome().isPending()) << utterance.number();
        }
        EXPECT_TRUE(speaker.notes->waitFor(Kind::Ended, speaker.said.size()));
        EXPECT_EQ(speaker.said.size(), speaker.notes->count(Kind::Ended));
        for (const Utterance& utterance : speaker.said) {
            EXPECT_EQ(1U, speaker.notes->ended(utterance)) << utterance.number();
        }
        end(speaker);
    }
    EXPECT_LT(200U, mUtterances);
}

}  // namespace
