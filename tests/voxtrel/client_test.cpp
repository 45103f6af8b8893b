// SPDX-License-Identifier: Apache-2.0
#include <future>
#include <optional>

#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using AClient = ClientTest;
using Lines = std::vector<std::string>;
using Kind = Event::Kind;

TEST_F(AClient, NumbersItsUtterances) {
    Client client("test", options());
    EXPECT_EQ(1U, client.say("One.").number());
    EXPECT_EQ(2U, client.pause(1ms).number());
    EXPECT_EQ(3U, client.say("\xFF").number());
    EXPECT_EQ(0U, Utterance().number());
    EXPECT_TRUE(Utterance().wait().isPending());
}

TEST_F(AClient, TellsOfWordsInCharactersAndBytesOfTheWholeText) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    std::string text;
    std::size_t characters = 0;
    std::vector<std::pair<std::size_t, std::size_t>> words;
    while (words.size() < 500) {
        words.emplace_back(characters, text.size());
        text += "\u00e9\u20ac. ";
        characters += 4;
    }
    const Utterance utterance = client.say(text);
    ASSERT_TRUE(utterance.wait(kLong));
    ASSERT_TRUE(notes.waitFor(Kind::Ended));
    EXPECT_LT(1U, service.spoken().size());
    EXPECT_EQ(1U, notes.count(Kind::Started));
    std::size_t word = 0;
    for (const Event& event : notes.all()) {
        if (event.kind == Kind::Word) {
            while (word < words.size() && words[word].first != event.position.characters) {
                ++word;  // a full mailbox drops words
            }
            ASSERT_LT(word, words.size());
            EXPECT_EQ(words[word].second, event.position.bytes);
        }
    }
    EXPECT_EQ(words.back().second, utterance.position().bytes);
}

TEST_F(AClient, RefusesAtOnceWhatNoServiceCouldSpeak) {
    service.die();
    Client client("test", options());
    SpeechOptions german;
    german.language = "de";
    SpeechOptions loud;
    loud.mediaVolume = 101;
    EXPECT_EQ("refused -3", textOf(client.say("\xC3(").outcome()));
    EXPECT_EQ("refused -9", textOf(client.say("Hallo.", german).outcome()));
    EXPECT_EQ("refused -3", textOf(client.say("Hello.", loud).outcome()));
    EXPECT_EQ("refused -3", textOf(client.pause(-1ms).outcome()));
    EXPECT_EQ("refused -3", textOf(client.say("<speak>" + std::string(262144, 'a')).outcome()));
    EXPECT_TRUE(client.say("Hello.").outcome().isPending());
}

TEST_F(AClient, RefusesWhatThisServiceCannotSpeak) {
    Client client("test", options());
    SpeechOptions fast;
    fast.speed = 65535;
    SpeechOptions nobody;
    nobody.voice = "nobody";
    EXPECT_EQ("refused -3", textOf(client.say("Hello.", fast).wait(kLong)));
    EXPECT_EQ("refused -9", textOf(client.say("Hello.", nobody).wait(kLong)));
    EXPECT_TRUE(service.spoken().empty());
}

TEST_F(AClient, UsesItsDefaultsWhereAnOptionIsNotSet) {
    Client client("test", options());
    Client other("other", options());
    SpeechOptions defaults;
    defaults.speed = 111;
    defaults.language = "fr";
    client.setDefaults(defaults);
    EXPECT_EQ(111U, client.defaults().speed);
    SpeechOptions own;
    own.speed = 222;
    client.say("One.");
    ASSERT_TRUE(client.say("Two.", own).wait(kLong));
    ASSERT_TRUE(other.say("Three.").wait(kLong));
    EXPECT_EQ((Lines{"register", "say 1 \"One.\" fr-FR speed 111", "say 2 \"Two.\" fr-FR speed 222",
                     "say 3 \"Three.\""}),
              service.requests());
}

TEST_F(AClient, StopsItsOwnSpeechAndNoOthers) {
    Notes notes;
    Client client("test", options());
    Client other("other", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    const Utterance behind = client.say("Behind.");
    const Utterance others = other.say("Other's.");
    client.stop();
    EXPECT_EQ("stopped by client", textOf(held.wait(kLong)));
    EXPECT_EQ("stopped by client", textOf(behind.wait(kLong)));
    service.goOn();
    EXPECT_EQ("finished", textOf(others.wait(kLong)));
    EXPECT_TRUE(client.say("After.").wait(kLong));
    EXPECT_EQ((Lines{"Other's.", "After."}), service.spoken());
}

TEST_F(AClient, SilencesEverybodyAndIsSaidToHaveDoneIt) {
    Notes notes;
    Client client("test", options());
    Client other("other", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    const Utterance waiting = client.say("Waiting.");
    const Utterance others = other.say("Other's.");
    EXPECT_TRUE(other.stopEverybody(kLong));
    EXPECT_EQ("stopped by process", textOf(held.wait(kLong)));
    EXPECT_EQ("stopped by process", textOf(waiting.wait(kLong)));
    EXPECT_EQ("stopped by client", textOf(others.wait(kLong)));
    service.goOn();
    EXPECT_TRUE(other.say("After.").wait(kLong));
    EXPECT_EQ(Lines{"After."}, service.spoken());
}

TEST_F(AClient, WaitsForAllItSaid) {
    Notes notes;
    Client client("test", options());
    Client other("other", options());
    client.onEvent(notes.taker());
    EXPECT_TRUE(client.waitForAll(0ms));
    speakAndHold(client, notes);
    EXPECT_EQ(Status::TimedOut, client.waitForAll(10ms).status());
    EXPECT_TRUE(other.waitForAll(0ms));
    service.goOn();
    EXPECT_TRUE(client.waitForAll(kLong));
}

TEST_F(AClient, ThatEndsLosesNothingThatTheServiceHas) {
    Utterance utterance;
    {
        service.hold();
        Client client("test", options());
        ASSERT_TRUE(client.waitUntilConnected(kLong));
        utterance = client.say("Left behind.");
    }
    EXPECT_EQ("lost -103", textOf(utterance.outcome()));
    service.goOn();
    EXPECT_TRUE(service.waitForSpoken(1, kLong));
    EXPECT_EQ(Lines{"Left behind."}, service.spoken());
}

TEST_F(AClient, ThatEndsWhileAnotherSilencesItLeavesNothingOpen) {
    constexpr int kSaid = 100'000;  // so many that their outcomes take a while
    service.hold();
    Client other("other", options());
    std::optional<Client> client(std::in_place, "test", options());
    std::vector<Utterance> said;
    for (int i = 0; i < kSaid; ++i) {
        said.push_back(client->say("Said."));
    }
    const auto silence = std::async(std::launch::async, [&] { return other.stopEverybody(kLong); });
    ASSERT_FALSE(said[100].wait(kLong).isPending());  // the first of those that waited
    client.reset();
    for (const Utterance& utterance : said) {
        ASSERT_FALSE(utterance.outcome().isPending());
    }
    service.goOn();
}

TEST_F(AClient, MovesAndIsReplaced) {
    Client client("test", options());
    const Utterance first = client.say("First.");
    Client moved(std::move(client));
    EXPECT_TRUE(first.wait(kLong));
    EXPECT_EQ(2U, moved.say("Second.").number());
    moved = Client("another", options());
    EXPECT_EQ(1U, moved.say("Third.").number());
    EXPECT_TRUE(moved.waitForAll(kLong));
}

// A service that dies and comes back.

TEST_F(AClient, WaitsForAServiceThatIsNotThereAndSpeaksThen) {
    service.die();
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance early = client.say("Early.");
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(Status::ServiceNotFound, client.waitUntilConnected(50ms).status());
    EXPECT_EQ(Status::ServiceNotFound, client.settings(50ms).status());
    EXPECT_TRUE(early.outcome().isPending());
    service.comeBack();
    EXPECT_TRUE(early.wait(kLong));
    EXPECT_TRUE(client.isConnected());
    EXPECT_TRUE(notes.waitFor(Kind::Connected));
}

TEST_F(AClient, ConnectsAgainAfterADeathAndHearsEventsAgain) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    ASSERT_TRUE(client.say("One.").wait(kLong));
    for (std::size_t deaths = 1; deaths <= 3; ++deaths) {
        service.die();
        ASSERT_TRUE(notes.waitFor(Kind::Disconnected, deaths));
        const Utterance meanwhile = client.say("Meanwhile.");
        service.comeBack();
        ASSERT_TRUE(meanwhile.wait(kLong));
        ASSERT_TRUE(notes.waitFor(Kind::Ended, deaths + 1));
        EXPECT_EQ("started, word 0/0, finished", notes.of(meanwhile));
    }
}

TEST_F(AClient, SaysAgainAfterADeathWhatWasNotHeardIfItShall) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes, "Held.", OnLoss::SayAgain);
    const Utterance report = client.say("Report.");
    SpeechOptions again;
    again.onLoss = OnLoss::SayAgain;
    const Utterance repeated = client.say("Again.", again);
    ASSERT_TRUE(eventually([&] { return service.requests().size() == 4; }));
    service.die();
    EXPECT_EQ("lost -5", textOf(held.wait(kLong)));
    EXPECT_TRUE(held.outcome().wasHeard());
    EXPECT_EQ("lost -5", textOf(report.wait(kLong)));
    EXPECT_FALSE(report.outcome().wasHeard());
    service.comeBack();
    EXPECT_EQ("finished", textOf(repeated.wait(kLong)));
    EXPECT_EQ(Lines{"Again."}, service.spoken());
}

TEST_F(AClient, SaysAgainWhatWasHalfHeardIfItShall) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes, "Held.", OnLoss::SayAgainWhatever);
    service.die();
    service.comeBack();
    EXPECT_EQ("finished", textOf(held.wait(kLong)));
    EXPECT_TRUE(notes.waitFor(Kind::Ended));
    EXPECT_EQ("started, word 0/0, finished", notes.of(held));
}

TEST_F(AClient, SaysAgainToTheNextServiceWhatOneThatWasEndedCutOff) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes, "Held.", OnLoss::SayAgainWhatever);
    service.shutDown();
    service.comeBack();
    EXPECT_EQ("finished", textOf(held.wait(kLong)));
}

// Settings.

TEST_F(AClient, ReadsBackWhatItChanged) {
    Client client("test", options());
    GlobalSettings settings;
    settings.language = "fr_FR";
    settings.voice = 2;
    settings.speed = 250;
    settings.pitch = 12.5F;
    settings.volume = 33.5F;
    settings.speechVolume = 44;
    settings.mediaVolume = 55;
    settings.verbosity = 1;
    ASSERT_TRUE(client.change(settings, kLong));
    const GlobalSettings found = client.settings(kLong).value();
    EXPECT_EQ("fr-FR", found.language);
    EXPECT_EQ(2U, found.voice);
    EXPECT_EQ(250U, found.speed);
    EXPECT_EQ(12.5F, found.pitch);
    EXPECT_EQ(33.5F, found.volume);
    EXPECT_EQ(44U, found.speechVolume);
    EXPECT_EQ(55U, found.mediaVolume);
    EXPECT_EQ(1, found.verbosity);
    ASSERT_TRUE(client.resetSettings(kLong));
    EXPECT_EQ(300U, client.settings(kLong)->speed);
    EXPECT_EQ("en-US", client.settings(kLong)->language);
}

TEST_F(AClient, ChangesSettingsUntilOneIsRefused) {
    Client client("test", options());
    GlobalSettings settings;
    settings.speed = 100;
    settings.pitch = -1.0F;
    settings.volume = 10.0F;
    EXPECT_EQ(Status::BadParameter, client.change(settings, kLong).status());
    EXPECT_EQ(100U, client.settings(kLong)->speed);
    EXPECT_EQ(100.0F, client.settings(kLong)->volume);
    settings = {};
    settings.language = "de";
    EXPECT_EQ(Status::NotSupported, client.change(settings, kLong).status());
}

TEST_F(AClient, TurnsEachSwitchAlone) {
    Client client("test", options());
    const Switch switches[] = {Switch::Speech,      Switch::Speed,  Switch::Pitch,
                               Switch::Voice,       Switch::Volume, Switch::MediaVolume,
                               Switch::SpeechVolume};
    for (const Switch which : switches) {
        ASSERT_TRUE(client.turn(which, false, kLong));
        for (const Switch each : switches) {
            EXPECT_EQ(each != which, client.isOn(each, kLong).value());
        }
        ASSERT_TRUE(client.turn(which, true, kLong));
    }
    ASSERT_TRUE(client.turn(Switch::Speed, false, kLong));
    GlobalSettings settings;
    settings.speed = 100;
    EXPECT_EQ(Status::NotSupported, client.change(settings, kLong).status());
}

TEST_F(AClient, HearsOfWhatAllClientsShare) {
    Notes notes;
    Client client("test", options());
    Client other("other", options());
    client.onEvent(notes.taker());
    GlobalSettings settings;
    settings.speed = 100;
    ASSERT_TRUE(other.change(settings, kLong));
    ASSERT_TRUE(notes.waitFor(Kind::Changed));
    EXPECT_EQ(Event::Setting::Speed, notes.all().back().setting);
    EXPECT_EQ(100U, notes.all().back().value);
    service.lockByAnother(4711);
    ASSERT_TRUE(notes.waitFor(Kind::Changed, 2));
    EXPECT_EQ(Event::Setting::Lock, notes.all().back().setting);
    EXPECT_EQ(4711U, notes.all().back().value);
}

TEST_F(AClient, TellsWhatTheServiceCanDo) {
    Client client("test", options());
    const Features features = client.features(kLong).value();
    EXPECT_EQ(900U, features.speed.most);
    EXPECT_EQ(5U, features.languages.size());
    EXPECT_EQ(10U, features.voices.size());
}

// The lock.

TEST_F(AClient, HoldsTheLockForAScope) {
    Client client("test", options());
    {
        const Result<Lock> lock = client.lock(kLong);
        ASSERT_TRUE(lock);
        EXPECT_TRUE(lock->isHeld());
        EXPECT_EQ(Status::Locked, client.lock(kLong).status());
        EXPECT_TRUE(client.say("Mine.").wait(kLong));
    }
    EXPECT_TRUE(client.lock(kLong));
}

TEST_F(AClient, GivesTheLockBackBeforeTheScopeEnds) {
    Client client("test", options());
    Result<Lock> lock = client.lock(kLong);
    Lock moved = std::move(*lock);
    EXPECT_TRUE(moved.isHeld());
    EXPECT_FALSE(lock->isHeld());
    moved.release();
    moved.release();
    EXPECT_FALSE(moved.isHeld());
    Client other("other", options());
    EXPECT_TRUE(other.lock(kLong));
}

TEST_F(AClient, DoesNotGetALockThatAnotherHas) {
    Client client("test", options());
    Client other("other", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.lockByAnother(4711);
    EXPECT_EQ(Status::Locked, client.lock(kLong).status());
    service.unlockByAnother();
    const Result<Lock> lock = client.lock(kLong);
    EXPECT_TRUE(lock);
    EXPECT_EQ(Status::Locked, other.lock(kLong).status());
}

TEST_F(AClient, LosesTheLockToWhoeverBreaksIt) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Result<Lock> lock = client.lock(kLong);
    ASSERT_TRUE(lock && notes.waitFor(Kind::Changed));
    service.lockByAnother(4711);
    ASSERT_TRUE(notes.waitFor(Kind::Changed, 2));
    EXPECT_FALSE(lock->isHeld());
}

TEST_F(AClient, LosesTheLockWithTheServiceThatGaveItAndMayTakeItAnew) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    Result<Lock> lock = client.lock(kLong);
    ASSERT_TRUE(lock);
    service.die();
    ASSERT_TRUE(notes.waitFor(Kind::Disconnected));
    EXPECT_FALSE(lock->isHeld());
    service.comeBack();
    Result<Lock> anew = client.lock(kLong);
    ASSERT_TRUE(anew) << anew.message();
    lock->release();
    EXPECT_TRUE(anew->isHeld()) << "the old one is no claim on it";
}

TEST_F(AClient, ThatEndsGivesItsLockBack) {
    Client other("other", options());
    auto client = std::make_unique<Client>("test", options());
    const Result<Lock> lock = client->lock(kLong);
    ASSERT_TRUE(lock);
    client.reset();
    EXPECT_FALSE(lock->isHeld());
    EXPECT_TRUE(other.lock(kLong));
}

TEST_F(AClient, AsksForTheSpeechOfAnotherProcessToBeStopped) {
    Client client("test", options());
    EXPECT_TRUE(client.stopProcess(4711));
    EXPECT_EQ("stop process 4711", service.requests().back());
}

}  // namespace
