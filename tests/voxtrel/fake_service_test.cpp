// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using AFakeService = ClientTest;
using Lines = std::vector<std::string>;

TEST_F(AFakeService, SpeaksWhatIsSaid) {
    Client client("test", options());
    client.say("One.");
    client.pause(300ms);
    const Utterance last = client.say("Two.");
    EXPECT_TRUE(last.wait(kLong));
    EXPECT_TRUE(service.waitForSpoken(3, 0ms));
    EXPECT_FALSE(service.waitForSpoken(4, 0ms));
    EXPECT_EQ((Lines{"One.", "(pause 300 ms)", "Two."}), service.spoken());
}

TEST_F(AFakeService, TellsWhatItWasAsked) {
    {
        Client client("test", options());
        SpeechOptions speech;
        speech.language = "fr";
        speech.voice = "2";
        speech.speed = 250;
        speech.pitch = 1.5F;
        speech.volume = 50;
        speech.speechVolume = 60;
        speech.mediaVolume = 70;
        client.say("Hello.");
        client.say("Bonjour.", speech);
        EXPECT_TRUE(client.pause(5ms).wait(kLong));
        GlobalSettings settings;
        settings.speed = 100;
        settings.language = "es";
        settings.verbosity = 1;
        EXPECT_TRUE(client.change(settings));
        EXPECT_TRUE(client.turn(Switch::Pitch, false));
        EXPECT_TRUE(client.turn(Switch::Speech, true));
        EXPECT_TRUE(client.resetSettings());
        EXPECT_TRUE(client.lock(kLong));
    }
    EXPECT_EQ(
        (Lines{"register", "say 1 \"Hello.\"",
               "say 2 \"Bonjour.\" fr-FR voice 2 speed 250 pitch 1.5 volume 50 "
               "speech-volume 60 media-volume 70",
               "pause 3 5", "set language es-ES", "set speed 100", "set verbosity 1",
               "switch pitch off", "switch speech on", "reset", "lock", "unlock", "unregister"}),
        service.requests());
}

TEST_F(AFakeService, HoldsSpeechUntilItGoesOn) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes, "One two.");
    EXPECT_EQ("started", notes.of(held));
    EXPECT_TRUE(service.spoken().empty());
    service.goOn();
    EXPECT_TRUE(held.wait(kLong));
    EXPECT_TRUE(notes.waitFor(Event::Kind::Ended));
    EXPECT_EQ("started, word 0/0, word 4/4, finished", notes.of(held));
}

TEST_F(AFakeService, RefusesTheNext) {
    Client client("test", options());
    service.refuseNext(Status::QueueFull);
    EXPECT_EQ("refused -12", textOf(client.say("One.").wait(kLong)));
    EXPECT_EQ("finished", textOf(client.say("Two.").wait(kLong)));
}

TEST_F(AFakeService, RefusesPausesOfMoreThanAMinute) {
    Client client("test", options());
    EXPECT_EQ("refused -3", textOf(client.pause(60001ms).wait(kLong)));
    EXPECT_EQ("finished", textOf(client.pause(60000ms).wait(kLong)));
}

TEST_F(AFakeService, TakesTheSettingsThatItHas) {
    Client client("test", options());
    const GlobalSettings settings = client.settings().value();
    EXPECT_EQ(0U, settings.voice);
    EXPECT_TRUE(client.change(settings));
}

TEST_F(AFakeService, LosesTheNextRequest) {
    Client client("test", options());
    service.loseNextRequest();
    const Utterance lost = client.say("One.");
    EXPECT_TRUE(client.say("Two.").wait(kLong));
    EXPECT_EQ("lost -102", textOf(lost.outcome()));
    EXPECT_FALSE(lost.outcome().wasHeard());
    EXPECT_EQ(Lines{"Two."}, service.spoken());
}

TEST_F(AFakeService, LosesTheNextEventOfAKind) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    service.loseNextEvent(Event::Kind::Word);
    const Utterance one = client.say("One two.");
    EXPECT_TRUE(one.wait(kLong));
    service.loseNextEvent(Event::Kind::Started);
    const Utterance two = client.say("Two.");
    EXPECT_TRUE(two.wait(kLong));
    service.loseNextEvent();
    const Utterance three = client.say("Three.");
    EXPECT_TRUE(client.say("Four.").wait(kLong));
    EXPECT_TRUE(notes.waitFor(Event::Kind::Ended, 4));
    EXPECT_EQ("started, word 4/4, finished", notes.of(one));
    EXPECT_EQ("started, word 0/0, finished", notes.of(two));
    EXPECT_EQ("started, word 0/0, lost -102", notes.of(three));
    EXPECT_TRUE(three.outcome().wasHeard());
}

TEST_F(AFakeService, TakesItsTimeToAnswer) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.answerAfter(50ms);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(client.turn(Switch::Speed, true, kLong));
    EXPECT_LE(50ms, std::chrono::steady_clock::now() - before);
}

TEST_F(AFakeService, DiesWithoutAWordAndComesBackAsDelivered) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    GlobalSettings settings;
    settings.speed = 100;
    ASSERT_TRUE(client.change(settings, kLong));
    const Utterance held = speakAndHold(client, notes);
    service.die();
    service.die();
    EXPECT_EQ("lost -5", textOf(held.wait(kLong)));
    EXPECT_FALSE(client.isConnected());
    service.comeBack();
    service.comeBack();
    EXPECT_EQ(300U, client.settings(kLong)->speed);
    EXPECT_TRUE(client.say("Back.").wait(kLong)) << "nothing is held";
}

TEST_F(AFakeService, TellsWhatItCutsOffThatItIsBeingEnded) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    const Utterance waiting = client.say("Waiting.");
    ASSERT_TRUE(eventually([&] { return service.requests().size() == 3; }));
    service.freeze();
    service.shutDown();
    EXPECT_EQ("lost -14", textOf(held.wait(kLong)));
    EXPECT_EQ("lost -14", textOf(waiting.wait(kLong)));
    service.shutDown();
}

TEST_F(AFakeService, IsStoppedByAnother) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    service.stopByAnother();
    EXPECT_EQ("stopped by somebody", textOf(held.wait(kLong)));
}

TEST_F(AFakeService, LockedByAnotherRefusesWhatWouldChangeSomething) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.lockByAnother(4711);
    EXPECT_EQ("refused -7", textOf(client.say("One.").wait(kLong)));
    EXPECT_EQ(Status::Locked, client.turn(Switch::Speed, false, kLong).status());
    EXPECT_EQ(Status::Locked, client.resetSettings(kLong).status());
    EXPECT_EQ(Status::Locked, client.stopEverybody(kLong).status());
    EXPECT_TRUE(client.isOn(Switch::Speed, kLong).value());
    service.unlockByAnother();
    EXPECT_EQ("finished", textOf(client.say("Two.").wait(kLong)));
}

TEST_F(AFakeService, SwitchedOffRefusesSpeech) {
    Client client("test", options());
    ASSERT_TRUE(client.turn(Switch::Speech, false, kLong));
    EXPECT_EQ("refused -1", textOf(client.say("One.").wait(kLong)));
    ASSERT_TRUE(client.turn(Switch::Speech, true, kLong));
    EXPECT_EQ("finished", textOf(client.say("Two.").wait(kLong)));
}

TEST_F(AFakeService, HasNothingToDoWithAnother) {
    voxtrel::testing::FakeService other;
    ClientOptions ofOther = options();
    ofOther.fake = &other;
    Client client("test", options());
    Client clientOfOther("test", ofOther);
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    ASSERT_TRUE(clientOfOther.waitUntilConnected(kLong));
    service.die();
    EXPECT_TRUE(clientOfOther.say("Other.").wait(kLong));
    EXPECT_EQ(Lines{"Other."}, other.spoken());
    EXPECT_FALSE(client.isConnected());
}

}  // namespace
