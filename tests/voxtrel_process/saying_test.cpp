// SPDX-License-Identifier: Apache-2.0
// What is said, and the one outcome of each utterance.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/Eventually.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Event;
using voxtrel::Milliseconds;
using voxtrel::Status;
using voxtrel::Utterance;
using Said = voxtrel::Outcome;

namespace {

constexpr const char* kLong =
    "The last train had left the station an hour ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he knew every line of it. Then it began to rain.";

class Saying : public ::testing::Test {
protected:
    /// Waits for a word of the long sentence. The service has what was said behind it by then.
    void awaitWord() {
        EXPECT_TRUE(events.awaits(Event::Kind::Word));
        EXPECT_TRUE(client.settings(kLimit));
        EXPECT_TRUE(client.settings(kLimit));
    }

    /// Each utterance has had its one `Ended`, and no other.
    void expectOneEndEach(std::size_t utterances) {
        EXPECT_TRUE(events.awaits(Event::Kind::Ended, utterances));
        EXPECT_TRUE(client.waitForAll(kLimit));
        std::vector<std::uint64_t> numbers;
        for (const Event& event : events.all(Event::Kind::Ended)) {
            numbers.push_back(event.utterance.number());
            EXPECT_EQ(inWords(event.outcome), inWords(event.utterance.outcome()));
        }
        std::sort(numbers.begin(), numbers.end());
        EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
        EXPECT_EQ(numbers.size(), utterances);
    }

    Saying() { events.listenTo(client); }

    Machine machine;
    Recorder events;
    Client client;
};

TEST_F(Saying, SpeaksWhatIsSaidBeforeThereIsAService) {
    const Utterance first = client.say("Hello.");
    EXPECT_TRUE(first.outcome().isPending());
    machine.startService();
    EXPECT_EQ(inWords(first.wait(kLimit)), "finished");
    EXPECT_EQ(inWords(client.say("Hello again.").wait(kLimit)), "finished");
    expectOneEndEach(2);
}

TEST_F(Saying, TellsConnectedStartedWordsAndTheEndInThisOrder) {
    machine.startService();
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    const Utterance said = client.say("Two words.");
    ASSERT_EQ(inWords(said.wait(kLimit)), "finished");
    ASSERT_TRUE(events.awaits(Event::Kind::Ended));
    const auto words = events.all(Event::Kind::Word);
    ASSERT_EQ(words.size(), 2U);
    EXPECT_EQ(words[1].position.bytes, 4U);
    EXPECT_EQ(events.count(Event::Kind::Started), 1U);
    EXPECT_EQ(events.count(Event::Kind::Connected), 1U);
}

TEST_F(Saying, CountsPositionsInCharactersAndInBytes) {
    machine.startService();
    const Utterance said = client.say("Café über Zürich", {/*language=*/"fr"});
    ASSERT_EQ(inWords(said.wait(kLimit)), "finished");
    ASSERT_TRUE(events.awaits(Event::Kind::Ended));
    const auto words = events.all(Event::Kind::Word);
    ASSERT_EQ(words.size(), 3U);
    EXPECT_EQ(words[2].position.characters, 10U);
    EXPECT_EQ(words[2].position.bytes, 12U);
    EXPECT_EQ(said.position().bytes, 12U);
}

TEST_F(Saying, RefusesWhatCannotBeSpoken) {
    EXPECT_EQ(inWords(client.say("\xff").outcome()), "refused -3 unheard");
    EXPECT_EQ(inWords(client.say("x", {/*language=*/"tlh"}).outcome()), "refused -9 unheard");
    machine.startService();
    voxtrel::SpeechOptions fast;
    fast.speed = 100'000;
    EXPECT_EQ(inWords(client.say("x", fast).wait(kLimit)), "refused -3 unheard");
    voxtrel::SpeechOptions nobody;
    nobody.voice = "nobody";
    EXPECT_EQ(inWords(client.say("x", nobody).wait(kLimit)), "refused -9 unheard");
    expectOneEndEach(4);
}

TEST_F(Saying, HasItsReasonWhileSpeechIsSwitchedOff) {
    machine.startService();
    ASSERT_TRUE(client.turn(voxtrel::Switch::Speech, false, kLimit));
    const Said outcome = client.say("x").wait(kLimit);
    EXPECT_FALSE(outcome.wasHeard());
    EXPECT_EQ(outcome.status(), Status::Disabled);
    ASSERT_TRUE(client.turn(voxtrel::Switch::Speech, true, kLimit));
    EXPECT_EQ(inWords(client.say("x").wait(kLimit)), "finished");
}

TEST_F(Saying, SpeaksTheTextBehindANulByte) {
    machine.startService();
    const Utterance said = client.say(std::string("One\0two", 7));
    ASSERT_EQ(inWords(said.wait(kLimit)), "finished");
    EXPECT_EQ(said.position().bytes, 4U);
}

TEST_F(Saying, NeverBlocksWhileTheServiceIsStoppedAndMuchIsOnItsWay) {
    machine.startService({"--real-time"});
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    machine.stopService();
    const std::string text = "It rains." + std::string(1000, ' ');
    std::vector<Utterance> said;
    for (int n = 0; n < 2000; ++n) {
        said.push_back(client.say(text));
        said.push_back(client.pause(Milliseconds(1)));
    }
    EXPECT_TRUE(said.front().outcome().isPending());
    EXPECT_TRUE(said.back().outcome().isPending());
    client.stop();
    EXPECT_EQ(inWords(said.back().outcome()), "stopped by this client unheard");
    machine.continueService();
    expectOneEndEach(4000);
    EXPECT_EQ(inWords(said.front().outcome()).rfind("stopped by this client", 0), 0U)
        << inWords(said.front().outcome());
}

TEST_F(Saying, GoesOnWhenAStoppedServiceIsContinued) {
    machine.startService();
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    machine.stopService();
    std::vector<Utterance> said;
    for (int n = 0; n < 300; ++n) {
        said.push_back(client.say("It rains."));
    }
    EXPECT_EQ(client.settings(Milliseconds(100)).status(), Status::TimedOut);
    machine.continueService();
    for (const Utterance& each : said) {
        EXPECT_EQ(inWords(each.wait(kLimit)), "finished");
    }
    expectOneEndEach(300);
    EXPECT_TRUE(client.settings(kLimit)) << "it answers again";
}

TEST_F(Saying, IsStoppedByTheClientItself) {
    machine.startService({"--real-time"});
    const Utterance first = client.say(kLong);
    const Utterance second = client.say("Never.");
    awaitWord();
    client.stop();
    EXPECT_EQ(inWords(first.wait(kLimit)), "stopped by this client");
    EXPECT_EQ(inWords(second.wait(kLimit)), "stopped by this client unheard");
    expectOneEndEach(2);
    EXPECT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
}

TEST_F(Saying, OfAnotherClientGoesOnWhenThisOneStops) {
    machine.startService({"--real-time"});
    const Utterance first = client.say(kLong);
    awaitWord();
    Client other;
    const Utterance second = other.say("Hello.");
    other.stop();
    EXPECT_EQ(inWords(second.wait(kLimit)), "stopped by this client unheard");
    EXPECT_TRUE(first.outcome().isPending());
    EXPECT_TRUE(other.stopEverybody(kLimit));
    EXPECT_EQ(inWords(first.wait(kLimit)), "stopped by this process");
}

TEST_F(Saying, IsNotBegunAfterEverybodyWasStopped) {
    machine.startService({"--sink", "wavdir:" + machine.path("spoken"), "--real-time"});
    std::vector<Utterance> said = {client.say(kLong)};
    awaitWord();
    for (int n = 0; n < 200; ++n) {
        said.push_back(client.say("Never."));
    }
    EXPECT_TRUE(client.stopEverybody(kLimit));
    for (const Utterance& each : said) {
        EXPECT_EQ(each.wait(kLimit).kind(), Said::Kind::Stopped);
        EXPECT_EQ(each.outcome().stopper(), Said::Stopper::ThisClient);
    }
    EXPECT_EQ(machine.spokenFiles(), 1U);
    EXPECT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
}

TEST_F(Saying, IsLostWhenTheServiceIsKilled) {
    machine.startService({"--real-time"});
    const Utterance first = client.say(kLong);
    const Utterance second = client.say("Never.");
    awaitWord();
    machine.killService();
    EXPECT_EQ(inWords(first.wait(kLimit)), "lost -5");
    EXPECT_EQ(inWords(second.wait(kLimit)), "lost -5 unheard");
    expectOneEndEach(2);
    EXPECT_TRUE(events.awaits(Event::Kind::Disconnected));
    EXPECT_FALSE(client.isConnected());
}

TEST_F(Saying, IsLostWithItsReasonWhenTheServiceIsShutDown) {
    // The news of the death may come long before, on a busy machine, and then stands for the
    // reason.
    constexpr std::size_t kRounds = 5;
    std::size_t shutdowns = 0;
    for (std::size_t round = 0; round < kRounds; ++round) {
        machine.startService({"--real-time"});
        const std::size_t words = events.count(Event::Kind::Word);
        const Utterance first = client.say(kLong);
        const Utterance second = client.say("Never.");
        ASSERT_TRUE(events.awaits(Event::Kind::Word, words + 1));
        awaitWord();
        machine.shutDownService();
        for (const Utterance& each : {first, second}) {
            const std::string outcome = inWords(each.wait(kLimit));
            const bool isReason = outcome.rfind("lost -14", 0) == 0;
            EXPECT_TRUE(isReason || outcome.rfind("lost -5", 0) == 0) << outcome;
            shutdowns += isReason ? 1 : 0;
        }
        expectOneEndEach(2 * (round + 1));
        ASSERT_TRUE(events.awaits(Event::Kind::Disconnected, round + 1));
    }
    EXPECT_LE(kRounds, shutdowns) << "of " << 2 * kRounds;
}

TEST_F(Saying, IsSaidAgainByANextServiceWhereThatIsWanted) {
    machine.startService({"--real-time"});
    voxtrel::SpeechOptions again;
    again.onLoss = voxtrel::OnLoss::SayAgain;
    voxtrel::SpeechOptions whatever;
    whatever.onLoss = voxtrel::OnLoss::SayAgainWhatever;
    const Utterance heard = client.say(kLong, again);
    const Utterance unheard = client.say("One.", again);
    const Utterance reported = client.say("Two.");
    awaitWord();
    machine.killService();
    EXPECT_EQ(inWords(heard.wait(kLimit)), "lost -5") << "a part of it has been heard";
    EXPECT_EQ(inWords(reported.wait(kLimit)), "lost -5 unheard");
    EXPECT_TRUE(unheard.outcome().isPending());
    const Utterance next = client.say(kLong, whatever);
    machine.startService({"--real-time"});
    EXPECT_EQ(inWords(unheard.wait(kLimit)), "finished");
    ASSERT_TRUE(eventually([&] { return next.position().bytes > 4; }));
    machine.killService();
    ASSERT_TRUE(events.awaits(Event::Kind::Disconnected, 2));
    machine.startService();
    EXPECT_EQ(inWords(next.wait(kLimit)), "finished");
    expectOneEndEach(4);
    EXPECT_EQ(events.count(Event::Kind::Connected), 3U);
}

TEST_F(Saying, IsNotSaidAThirdTime) {
    machine.startService({"--real-time"});
    voxtrel::SpeechOptions whatever;
    whatever.onLoss = voxtrel::OnLoss::SayAgainWhatever;
    const Utterance said = client.say(kLong, whatever);
    awaitWord();
    machine.killService();
    machine.startService({"--real-time"});
    ASSERT_TRUE(events.awaits(Event::Kind::Connected, 2));
    const std::size_t words = events.count(Event::Kind::Word);
    ASSERT_TRUE(events.awaits(Event::Kind::Word, words + 1));
    machine.killService();
    EXPECT_EQ(inWords(said.wait(kLimit)), "lost -5");
    expectOneEndEach(1);
}

TEST_F(Saying, SurvivesTheServiceManager) {
    machine.startService({"--real-time"});
    const Utterance said = client.say(kLong);
    awaitWord();
    machine.killManager();
    EXPECT_EQ(inWords(said.wait(kLimit)), "finished");
    EXPECT_EQ(events.count(Event::Kind::Disconnected), 0U);
}

TEST_F(Saying, GoesToTheServiceThatWasFoundUntilItDiesAndThenToTheNext) {
    machine.startService();
    ASSERT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
    machine.startOther({VOXTREL_BLOCKED_SERVICE});
    EXPECT_EQ(events.count(Event::Kind::Disconnected), 0U);
    const Utterance first = client.say("Two words.");
    EXPECT_EQ(inWords(first.wait(kLimit)), "finished");
    EXPECT_EQ(first.position().bytes, 4U) << "the other one tells of no words";
    machine.killService();
    ASSERT_TRUE(events.awaits(Event::Kind::Connected, 2));
    const Utterance second = client.say("Two words.");
    EXPECT_EQ(inWords(second.wait(kLimit)), "finished");
    EXPECT_EQ(second.position().bytes, 0U);
}

TEST_F(Saying, OfEightMegabytesComesInPiecesAndIsStoppedAtOnce) {
    machine.startService({"--queue", "100"});
    std::string text;
    while (text.size() < 8'000'000) {
        text += "It rains on the town, and nobody has an umbrella.\n";
    }
    const Utterance said = client.say(text);
    // Much more than may be on its way at one time.
    ASSERT_TRUE(eventually([&] { return said.position().bytes > 100'000; }))
        << inWords(said.outcome());
    const voxtrel::Position at = said.position();
    EXPECT_EQ(at.characters, at.bytes);
    EXPECT_TRUE(said.outcome().isPending());
    client.stop();
    EXPECT_EQ(inWords(said.wait(kLimit)), "stopped by this client");
    EXPECT_LT(said.position().bytes, text.size() / 2);
    EXPECT_EQ(events.count(Event::Kind::Started), 1U);
    expectOneEndEach(1);
    EXPECT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
}

TEST_F(Saying, OfALongTextIsSpokenToItsEnd) {
    machine.startService();
    std::string text;
    while (text.size() < 100'000) {
        text += "It rains. ";
    }
    const Utterance said = client.say(text + "Über.");
    EXPECT_EQ(inWords(said.wait(kLimit)), "finished");
    EXPECT_EQ(said.position().bytes, text.size());
}

}  // namespace
