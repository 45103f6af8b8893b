// SPDX-License-Identifier: Apache-2.0
// What the queue makes of refusals, of what is lost, and of silence.
#include "tests/voxtrel/SpeechQueueTest.h"

namespace {

using namespace voxtrel;
using namespace std::chrono_literals;
using TheQueue = voxtrel_test::SpeechQueueTest;

constexpr auto kAMoment = 1ms;

// Refusals.

TEST_F(TheQueue, TellsOfARefusalWithItsReason) {
    say(a);
    say(a);
    send();
    stopped(2, Status::QueueFull);  // refusals do not wait for their turn
    EXPECT_EQ("a2 refused -12", news());
    speak(1);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, RefusesAtOnceWhatCannotBeSpoken) {
    const auto speech = say(a);
    mQueue.refuse(*mQueue.next(mNow), Status::NotSupported);
    EXPECT_EQ("a1 refused -9", news());
    EXPECT_FALSE(mQueue.isOpen(*a.mailbox));
    EXPECT_EQ(SpeechQueue::Clock::time_point::max(), mQueue.nextMoment());
}

TEST_F(TheQueue, RecallsThePiecesBehindOneThatIsRefused) {
    say(a, pieces(3));
    send();
    stopped(1, Status::QueueFull);
    EXPECT_EQ("a1 refused -12", news());
    EXPECT_TRUE(mQueue.takeFlush());
    EXPECT_FALSE(mQueue.takeFlush());
    drop(2);
    drop(3);
    EXPECT_EQ("", news());
    EXPECT_FALSE(mQueue.isAnythingInFlight());
}

TEST_F(TheQueue, CallsLostWhatIsRefusedAfterAPartOfItBegan) {
    say(a, pieces(3));
    send();
    speak(1);
    stopped(2, Status::QueueFull);
    EXPECT_EQ("a1 started, a1 lost -12 heard", news());
    EXPECT_TRUE(mQueue.takeFlush());
}

TEST_F(TheQueue, CallsLostWhatBreaksOffAndStoppedWhatIsSwitchedOff) {
    say(a);
    say(a);
    send();
    started(1);
    stopped(1, Status::AudioFailed);
    started(2);
    stopped(2, Status::Disabled);
    EXPECT_EQ("a1 started, a1 lost -13, a2 started, a2 stopped -1", news());
}

TEST_F(TheQueue, CountsAsHeardWhatWentOnForAWhileOrCameToAWord) {
    say(a);
    say(a);
    say(a);
    send();
    started(1);
    after(SpeechQueue::kInaudible + kAMoment);
    stopped(1);
    started(2);
    after(SpeechQueue::kInaudible);
    stopped(2);
    started(3);
    word(3, 0);
    stopped(3);
    EXPECT_EQ(
        "a1 started, a1 stopped by somebody heard, a2 started, a2 stopped by somebody, "
        "a3 started, a3 word 0/0, a3 stopped by somebody heard",
        news());
}

// The order of events shows a gap.

TEST_F(TheQueue, CallsLostWhatALaterOneOvertakes) {
    say(a);
    say(a);
    say(a);
    send();
    started(3);
    EXPECT_EQ("a1 lost -102, a2 lost -102, a3 started", news());
}

TEST_F(TheQueue, CallsHeardWhatBeganAndWhoseEndIsNotTold) {
    say(a);
    say(a);
    send();
    started(1);
    started(2);
    EXPECT_EQ("a1 started, a1 lost -102 heard, a2 started", news());
}

TEST_F(TheQueue, TakesAPieceThatBeganForSpokenWhenTheNextBegins) {
    say(a, pieces(2));
    send();
    started(1);
    speak(2);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, CallsATextLostOfWhichAPieceIsAndRecallsTheRest) {
    say(a, pieces(4));
    send();
    speak(1);
    started(3);
    EXPECT_EQ("a1 started, a1 lost -102 heard", news());
    EXPECT_TRUE(mQueue.takeFlush());
    stopped(3);
    drop(4);
    EXPECT_EQ("", news());
    EXPECT_FALSE(mQueue.isAnythingInFlight());
}

// A request to drop something that is lost.

TEST_F(TheQueue, AsksAgainForWhatGoesOnThoughItWasStopped) {
    say(a, "It goes on.");
    send();
    word(1, 0);
    stop(a);
    EXPECT_TRUE(mQueue.takeFlush());
    word(1, 3);
    after(SpeechQueue::kToDrop);
    word(1, 3);
    EXPECT_FALSE(mQueue.takeFlush()) << "it may just be ending";
    after(kAMoment);
    word(1, 8);
    EXPECT_TRUE(mQueue.takeFlush());
    word(1, 8);
    EXPECT_FALSE(mQueue.takeFlush());
    after(SpeechQueue::kToDrop + kAMoment);
    word(1, 8);
    EXPECT_TRUE(mQueue.takeFlush()) << "that may be lost, too";
}

TEST_F(TheQueue, DoesNotAskAgainWhereThatWouldDropWhatWasSaidSince) {
    say(a, "It goes on.");
    send();
    word(1, 0);
    stop(a);
    EXPECT_TRUE(mQueue.takeFlush());
    say(a, "Since.");
    EXPECT_EQ("2:a2", send());
    word(1, 3);
    after(SpeechQueue::kToDrop + kAMoment);
    word(1, 8);
    EXPECT_FALSE(mQueue.takeFlush());
}

TEST_F(TheQueue, KnowsWhetherWhatWasSilencedSounds) {
    say(a);
    say(a);
    send();
    EXPECT_FALSE(mQueue.isSilencedSounding());
    started(1);
    EXPECT_FALSE(mQueue.isSilencedSounding()) << "nobody is silenced";
    mQueue.attributeStop(*b.mailbox);
    EXPECT_TRUE(mQueue.isSilencedSounding());
    mQueue.revokeStop();
    EXPECT_FALSE(mQueue.isSilencedSounding());
    mQueue.attributeStop(*b.mailbox);
    stopped(1);
    EXPECT_FALSE(mQueue.isSilencedSounding()) << "the other one does not sound";
    drop(2);
    EXPECT_FALSE(mQueue.isSilencedSounding());
}

// Saying again.

TEST_F(TheQueue, SaysAgainWhatWasLostUnheardOnce) {
    say(a, "Hello.", kAgain);
    say(a);
    EXPECT_EQ("1:a1 2:a2", send());
    speak(2);
    EXPECT_EQ("a2 started, a2 finished", news());
    EXPECT_EQ("3:a1", send());
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 lost -5", news());
    EXPECT_EQ("", send());
}

TEST_F(TheQueue, SaysAgainInTheOrderInWhichItWasSaid) {
    say(a, "1", kAgain);
    say(a, "2");
    say(a, "3", kAgain);
    send();
    say(a, "4");
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a2 lost -5", news());
    EXPECT_EQ("4:a1 5:a3 6:a4", send());
}

TEST_F(TheQueue, TellsOfLossesInTheOrderInWhichItWasSaid) {
    say(a);
    say(a);
    say(a);
    send();
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 lost -5, a2 lost -5, a3 lost -5", news());
}

TEST_F(TheQueue, DoesNotSayAgainWhatWasHalfHeardUnlessAsked) {
    say(a, "1", kAgain);
    send();
    started(1);
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 started, a1 lost -5 heard", news());
    say(a, "2", kWhatever);
    EXPECT_EQ("2:a2", send());
    started(2);
    word(2, 0);
    mQueue.lose(Status::NoService);
    EXPECT_EQ("3:a2", send());
    speak(3);
    EXPECT_EQ("a2 started, a2 word 0/0, a2 finished", news()) << "it starts once";
}

TEST_F(TheQueue, SaysATextAgainFromItsBeginning) {
    say(a, pieces(70), kWhatever);
    EXPECT_EQ(64U, sendRequests().size());
    speak(1);
    mQueue.lose(Status::NoService);
    const auto sent = sendRequests();
    ASSERT_EQ(64U, sent.size());
    EXPECT_EQ(0U, sent.front().begin.bytes);
    for (std::uint32_t number = 65; number <= 128; ++number) {
        speak(number);
    }
    EXPECT_EQ(6U, sendRequests().size());
}

TEST_F(TheQueue, IsAtTheBeginningOfATextThatIsSaidAgain) {
    const SpeechPtr speech = say(a, "Hello again.", kWhatever);
    send();
    word(1, 6);
    EXPECT_EQ(6U, speech->state->position().bytes);
    mQueue.lose(Status::NoService);
    EXPECT_EQ(0U, speech->state->position().bytes);
}

TEST_F(TheQueue, DoesNotSayAgainWhatItsClientStopped) {
    say(a, "1", kAgain);
    send();
    stop(a);
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 stopped by client", news());
    EXPECT_EQ("", send());
}

TEST_F(TheQueue, KeepsWhatWaitsWhenTheServiceDies) {
    say(a);
    send();
    say(b);
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 lost -5", news());
    EXPECT_EQ("2:b1", send());
}

TEST_F(TheQueue, LosesATextBetweenItsPiecesWhenTheServiceDies) {
    say(a, pieces(70));
    send();
    for (std::uint32_t number = 1; number <= 64; ++number) {
        speak(number);
    }
    mQueue.lose(Status::NoService);
    EXPECT_EQ("a1 started, a1 lost -5 heard", news());
    EXPECT_EQ("", send());
}

TEST_F(TheQueue, DoesNotAskANewServiceToDropWhatTheOldOneHad) {
    say(a, pieces(3));
    send();
    stopped(1, Status::QueueFull);
    mQueue.lose(Status::NoService);
    EXPECT_FALSE(mQueue.takeFlush());
}

// A service that is ended.

TEST_F(TheQueue, CallsLostWhatAServiceCutsOffThatIsEnded) {
    say(a);
    say(a);
    send();
    started(1);
    word(1, 0);
    stopped(1, Status::Shutdown);
    stopped(2, Status::Shutdown);
    EXPECT_EQ("a1 started, a1 word 0/0, a1 lost -14 heard, a2 lost -14", news());
}

TEST_F(TheQueue, SaysNothingAgainToAServiceThatIsBeingEnded) {
    say(a, "1", kAgain);
    send();
    say(b);
    started(1);
    stopped(1, Status::Shutdown);
    EXPECT_EQ("", send());
    mQueue.lose(Status::NoService);
    EXPECT_EQ("2:b1", send());
    speak(2);
    EXPECT_EQ("3:a1", send());
}

TEST_F(TheQueue, SpeaksOnAfterAWhileIfTheServiceIsNotEnded) {
    say(a, "1", kAgain);
    send();
    stopped(1, Status::Shutdown);
    EXPECT_EQ("", send());
    EXPECT_EQ(mNow + SpeechQueue::kEnding, mQueue.nextMoment());
    after(SpeechQueue::kEnding);
    EXPECT_EQ("2:a1", send());
}

// Silence.

TEST_F(TheQueue, WaitsForNothingWhileNothingIsInFlight) {
    EXPECT_EQ(Clock::time_point::max(), mQueue.nextMoment());
    say(a);
    send();
    EXPECT_EQ(mNow + SpeechQueue::kQuiet, mQueue.nextMoment());
    speak(1);
    EXPECT_EQ(Clock::time_point::max(), mQueue.nextMoment());
}

TEST_F(TheQueue, ProbesAfterQuietAndSendsAFenceBehind) {
    say(a);
    send();
    after(SpeechQueue::kQuiet - kAMoment);
    EXPECT_EQ("", send());
    after(kAMoment);
    EXPECT_EQ("2:probe 3:fence", send());
}

TEST_F(TheQueue, FindsByAProbeThatTheLastOneWasLost) {
    say(a);
    send();
    after(SpeechQueue::kQuiet);
    send();
    stopped(3, Status::BadParameter);
    EXPECT_EQ("", news());
    started(2);
    EXPECT_EQ("a1 lost -102", news());
    EXPECT_FALSE(mQueue.isAnythingInFlight());
    finished(2);
    EXPECT_EQ("", news());
}

TEST_F(TheQueue, ProbesLaterAndLaterWhileTheServiceAnswersFences) {
    say(a);
    send();
    std::chrono::milliseconds quiet = SpeechQueue::kQuiet;
    std::uint32_t number = 1;
    for (const auto next : {15s, 30s, 60s, 120s, 240s, 480s, 480s, 480s}) {
        after(quiet - kAMoment);
        EXPECT_EQ("", send());
        after(kAMoment);
        EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
        EXPECT_EQ(2U, sendRequests().size());
        number += 2;
        stopped(number, Status::BadParameter);
        quiet = next;
    }
    speak(1);
    EXPECT_EQ("a1 started, a1 finished", news()) << "others had spoken for that long";
}

TEST_F(TheQueue, ProbesSoonAgainOnceSomethingBegins) {
    say(a);
    send();
    after(SpeechQueue::kQuiet);
    send();
    stopped(3, Status::BadParameter);
    started(1);
    EXPECT_EQ(mNow + SpeechQueue::kQuiet, mQueue.nextMoment());
}

TEST_F(TheQueue, ChecksWhetherAServiceLivesThatAnswersNoFence) {
    say(a);
    send();
    after(SpeechQueue::kQuiet);
    EXPECT_EQ("2:probe 3:fence", send());
    after(SpeechQueue::kFenceTimeout);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ("4:probe 5:fence", send());
    after(SpeechQueue::kFenceTimeout - kAMoment);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ(mNow + kAMoment, mQueue.nextMoment());
    after(kAMoment);
    EXPECT_TRUE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ("", send());
}

class ASilentService : public voxtrel_test::SpeechQueueTest {
protected:
    void SetUp() override {
        say(a);
        send();
        for (int probes = 0; probes < 2; ++probes) {
            after(SpeechQueue::kFenceTimeout);
            send();
        }
        after(SpeechQueue::kFenceTimeout);
        ASSERT_TRUE(mQueue.needsLivenessCheck(mNow));
    }
};

TEST_F(ASilentService, GetsOneMoreFenceWhenItAnswersSomethingElse) {
    EXPECT_TRUE(mQueue.askOnceMore());
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ("6:fence", send());
    after(SpeechQueue::kQuiet - kAMoment);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    after(kAMoment);
    EXPECT_TRUE(mQueue.needsLivenessCheck(mNow));
    EXPECT_FALSE(mQueue.askOnceMore());
    EXPECT_EQ("", news());
}

TEST_F(ASilentService, IsCheckedNoMoreOnceItTellsOfAnything) {
    EXPECT_TRUE(mQueue.askOnceMore());
    send();
    after(kAMoment);
    started(1);
    after(SpeechQueue::kQuiet);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ("7:probe 8:fence", send());
}

TEST_F(ASilentService, IsCheckedStillWhenMoreIsSaidToIt) {
    say(a);
    EXPECT_EQ("6:a2", send());
    EXPECT_TRUE(mQueue.needsLivenessCheck(mNow));
}

TEST_F(ASilentService, IsTrustedAgainWhenItIsAnother) {
    mQueue.lose(Status::NoService);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    say(a);
    EXPECT_EQ("6:a2", send());
    after(SpeechQueue::kFenceTimeout);
    EXPECT_FALSE(mQueue.needsLivenessCheck(mNow));
    EXPECT_EQ("7:probe 8:fence", send());
}

}  // namespace
