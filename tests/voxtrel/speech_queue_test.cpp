// SPDX-License-Identifier: Apache-2.0
// The course of speech where all goes well, and whose turn it is.
#include "tests/voxtrel/SpeechQueueTest.h"
#include "voxtrel/session/TextCutter.h"

namespace {

using namespace voxtrel;
using TheQueue = voxtrel_test::SpeechQueueTest;

TEST_F(TheQueue, SendsWhatIsSaidInOrderAndNumbersIt) {
    say(a);
    pause(a, 200);
    say(a);
    EXPECT_TRUE(mQueue.isWaiting(*a.mailbox));
    EXPECT_EQ("1:a1 2:a2 3:a3", send());
    EXPECT_FALSE(mQueue.isWaiting(*a.mailbox));
    EXPECT_TRUE(mQueue.isOpen(*a.mailbox));
    EXPECT_EQ("", news());
}

TEST_F(TheQueue, TellsOfStartWordsAndEnd) {
    const auto speech = say(a, "Hello world.");
    send();
    started(1);
    word(1, 0);
    word(1, 6);
    EXPECT_EQ("a1 started, a1 word 0/0, a1 word 6/6", news());
    EXPECT_EQ(6U, speech->state->position().bytes);
    EXPECT_TRUE(speech->state->outcome().isPending());
    finished(1);
    EXPECT_EQ("a1 finished", news());
    EXPECT_TRUE(speech->state->outcome().wasHeard());
    EXPECT_FALSE(mQueue.isOpen(*a.mailbox));
    EXPECT_FALSE(mQueue.isAnythingInFlight());
}

TEST_F(TheQueue, CountsWordsInCharactersAndBytes) {
    say(a, "\u00e7a \u20ac \U0001F600 b");
    send();
    started(1);
    word(1, 3);
    word(1, 5);
    word(1, 7);
    word(1, 3);  // once more
    word(1, 1000);
    EXPECT_EQ("a1 started, a1 word 3/4, a1 word 5/8, a1 word 7/13, a1 word 3/4, a1 word 8/14",
              news());
}

TEST_F(TheQueue, TellsOfMarksWhereTheLastWordWas) {
    say(a, "<speak>one <mark/>two</speak>");
    send();
    started(1);
    word(1, 7);
    mark(1, 3);
    EXPECT_EQ("a1 started, a1 word 7/7, a1 mark 3 7/7", news());
}

TEST_F(TheQueue, TakesAWordAsProofOfAStartThatWasNotTold) {
    say(a);
    send();
    word(1, 0);
    EXPECT_EQ("a1 started, a1 word 0/0", news());
    finished(1);
    EXPECT_EQ("a1 finished", news());
}

TEST_F(TheQueue, TakesAnEndAsProofOfAStartThatWasNotTold) {
    say(a);
    send();
    finished(1);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, CountsOnlyTheFirstEnd) {
    say(a);
    send();
    speak(1);
    news();
    finished(1);
    stopped(1);
    started(1);
    word(1, 0);
    EXPECT_EQ("", news());
}

TEST_F(TheQueue, LetsEventsOfNumbersPassThatItDoesNotKnow) {
    say(a);
    send();
    for (const std::uint32_t number : {0U, 2U, 99U, 0x80000001U, 0xFFFFFFFFU}) {
        started(number);
        word(number, 1);
        finished(number);
        stopped(number);
    }
    EXPECT_EQ("", news());
}

TEST_F(TheQueue, NumbersFrom1AgainBeyondTheLargest) {
    SpeechQueue queue([](Mailbox&, Event&&) {}, 0x7FFFFFFE);
    for (int n = 0; n < 3; ++n) {
        auto speech = std::make_shared<Speech>();
        speech->client = a.mailbox;
        speech->state = std::make_shared<UtteranceState>(n);
        queue.add(speech);
    }
    EXPECT_EQ(0x7FFFFFFFU, queue.next(mNow)->number);
    EXPECT_EQ(1U, queue.next(mNow)->number);
    EXPECT_EQ(2U, queue.next(mNow)->number);
    queue.onEvent(2, 0x7FFFFFFF, 0, mNow);
    queue.onEvent(1, 2, 0, mNow);
    EXPECT_TRUE(queue.isOpen(*a.mailbox));
    queue.onEvent(2, 2, 0, mNow);
    EXPECT_FALSE(queue.isOpen(*a.mailbox));
}

// Pieces.

TEST_F(TheQueue, SendsALongTextInPieces) {
    const auto speech = say(a, pieces(3));
    const auto sent = sendRequests();
    ASSERT_EQ(3U, sent.size());
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_EQ(speech, sent[n].speech);
        EXPECT_EQ(n * kPieceBytes, sent[n].begin.bytes);
        EXPECT_EQ(n * kPieceBytes, sent[n].begin.characters);
        EXPECT_EQ(kPieceBytes, sent[n].bytes);
    }
    for (std::uint32_t number = 1; number <= 3; ++number) {
        speak(number);
    }
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, CountsWordsOverAllPieces) {
    std::string text;
    while (text.size() < 1500) {
        text += "\u00e9t\u00e9. ";  // 5 characters, 7 bytes
    }
    say(a, text);
    const auto sent = sendRequests();
    ASSERT_EQ(2U, sent.size());
    EXPECT_EQ(1022U, sent[1].begin.bytes);
    EXPECT_EQ(730U, sent[1].begin.characters);
    speak(1);
    started(2);
    word(2, 0);
    word(2, 5);
    EXPECT_EQ("a1 started, a1 word 730/1022, a1 word 735/1029", news());
}

TEST_F(TheQueue, DoesNotCountAWordBeyondItsPiece) {
    say(a, pieces(2));
    send();
    started(1);
    word(1, 5000);
    EXPECT_EQ("a1 started, a1 word 1024/1024", news());
}

TEST_F(TheQueue, DoesNotCutMarkedUpText) {
    say(a, "<speak>" + pieces(3) + "</speak>");
    EXPECT_EQ("1:a1", send());
}

TEST_F(TheQueue, HasNoMoreThan64PiecesOnTheirWay) {
    for (int n = 0; n < 70; ++n) {
        say(a);
    }
    EXPECT_EQ(64U, sendRequests().size());
    speak(1);
    EXPECT_EQ("65:a65", send());
    speak(2);
    speak(3);
    EXPECT_EQ("66:a66 67:a67", send());
}

TEST_F(TheQueue, HasNoMoreThan64KibOnTheirWay) {
    say(a, "<speak>" + std::string(65536 - 7 - 512, ' '));
    say(a, std::string(513, 'a'));
    say(a, "b");
    EXPECT_EQ("1:a1", send());
    speak(1);
    EXPECT_EQ("2:a2 3:a3", send());
}

TEST_F(TheQueue, SendsOneThatIsLargerThanAllThatMayBeWhenNothingElseIsInFlight) {
    say(a);
    say(a, "<speak>" + std::string(200000, ' '));
    say(a);
    EXPECT_EQ("1:a1", send());
    speak(1);
    EXPECT_EQ("2:a2", send());
    speak(2);
    EXPECT_EQ("3:a3", send());
}

TEST_F(TheQueue, FeedsATextOfAnyLengthAsItIsSpoken) {
    say(a, pieces(300));
    std::size_t pieces = 0;
    std::uint32_t number = 0;
    for (auto sent = sendRequests(); !sent.empty(); sent = sendRequests()) {
        pieces += sent.size();
        EXPECT_GE(64U, pieces - number);
        speak(++number);
    }
    while (number < pieces) {
        speak(++number);
    }
    EXPECT_EQ(300U, pieces);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, SendsNothingBehindPiecesThatMayHaveToBeRecalled) {
    say(a, pieces(3));
    say(a);
    EXPECT_EQ("1:a1 2:a1 3:a1", send());
    speak(1);
    EXPECT_EQ("", send());
    speak(2);
    EXPECT_EQ("4:a2", send());
}

// Turns.

TEST_F(TheQueue, LetsClientsTakeTurnsByUtterance) {
    say(a);
    say(a);
    say(a);
    say(b);
    say(b);
    EXPECT_EQ("1:a1", send());
    speak(1);
    EXPECT_EQ("2:b1", send());
    speak(2);
    EXPECT_EQ("3:a2", send());
    speak(3);
    EXPECT_EQ("4:b2", send());
    speak(4);
    EXPECT_EQ("5:a3", send());
}

TEST_F(TheQueue, HasNothingOfOneClientOnItsWayBesideWhatAnotherSaid) {
    say(a);
    say(a);
    EXPECT_EQ("1:a1 2:a2", send());
    say(b);
    EXPECT_EQ("", send());
    say(a);
    EXPECT_EQ("", send());
    speak(1);
    EXPECT_EQ("", send());
    speak(2);
    EXPECT_EQ("3:b1", send());
}

// Stopping.

TEST_F(TheQueue, StopsWhatOneClientSaidAndNotWhatOthersSaid) {
    say(a);
    say(a);
    EXPECT_EQ("1:a1 2:a2", send());
    say(b);
    say(a);
    stop(a);
    EXPECT_TRUE(mQueue.takeFlush());
    EXPECT_EQ("a3 stopped by client", news());
    drop(1);
    drop(2);
    EXPECT_EQ("a1 started, a1 stopped by client, a2 started, a2 stopped by client", news());
    EXPECT_EQ("3:b1", send());
    stop(a);
    EXPECT_FALSE(mQueue.takeFlush());
    speak(3);
    EXPECT_EQ("b1 started, b1 finished", news());
}

TEST_F(TheQueue, StopsWhatWaitsWithoutAskingTheService) {
    say(a);
    send();
    say(b);
    say(b);
    stop(b);
    EXPECT_FALSE(mQueue.takeFlush());
    EXPECT_EQ("b1 stopped by client, b2 stopped by client", news());
}

TEST_F(TheQueue, SendsNoMorePiecesOfWhatIsStopped) {
    say(a, pieces(100));
    EXPECT_EQ(64U, sendRequests().size());
    stop(a);
    EXPECT_TRUE(mQueue.takeFlush());
    speak(1);
    EXPECT_EQ("", send());
    drop(2);
    EXPECT_EQ("a1 started, a1 stopped by client heard", news());
}

TEST_F(TheQueue, StopsATextBetweenItsPieces) {
    say(a, pieces(70));
    send();
    for (std::uint32_t number = 1; number <= 64; ++number) {
        speak(number);
    }
    stop(a);
    EXPECT_FALSE(mQueue.takeFlush());
    EXPECT_EQ("a1 started, a1 stopped by client heard", news());
    EXPECT_EQ("", send());
}

TEST_F(TheQueue, CallsStoppedWhatEndsWithPiecesMissingThoughTheServiceSpokeAllItHad) {
    say(a, pieces(70));
    send();
    stop(a);
    for (std::uint32_t number = 1; number <= 64; ++number) {
        speak(number);
    }
    EXPECT_EQ("a1 started, a1 stopped by client heard", news());
}

TEST_F(TheQueue, CallsFinishedWhatTheStopCameTooLateFor) {
    say(a);
    send();
    stop(a);
    speak(1);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, PutsAStopThatNobodyHereAskedForDownToSomebody) {
    say(a);
    send();
    drop(1);
    EXPECT_EQ("a1 started, a1 stopped by somebody", news());
}

TEST_F(TheQueue, CallsStoppedWhatIsDroppedThoughItsStartWasNotTold) {
    say(a);
    send();
    stopped(1);
    EXPECT_EQ("a1 stopped by somebody", news());
}

TEST_F(TheQueue, BlamesWhoSilencesEverybody) {
    say(a);
    say(a);
    send();
    mQueue.attributeStop(*b.mailbox);
    drop(1);
    EXPECT_EQ("a1 started, a1 stopped by process", news());
    mQueue.attributeStop(*a.mailbox);
    drop(2);
    EXPECT_EQ("a2 started, a2 stopped by client", news());
}

TEST_F(TheQueue, DropsWhatWaitsWhoeverSaidIt) {
    say(a);
    send();
    say(a);
    say(b);
    dropWaiting(b);
    EXPECT_EQ("a2 stopped by process, b1 stopped by client", news());
    speak(1);
    EXPECT_EQ("a1 started, a1 finished", news());
}

TEST_F(TheQueue, DropsTheRestOfATextBetweenItsPieces) {
    say(a, pieces(70));
    send();
    for (std::uint32_t number = 1; number <= 64; ++number) {
        speak(number);
    }
    dropWaiting(b);
    EXPECT_EQ("a1 started, a1 stopped by process heard", news());
    EXPECT_EQ("", send());
}

// The end of a client.

TEST_F(TheQueue, GivesAllThatAClientSaidItsOutcomeWhenItEnds) {
    say(a);
    say(a);
    send();
    say(b);
    say(a);
    started(1);
    news();
    close(a);
    EXPECT_EQ("a1 lost -103, a2 lost -103, a3 lost -103", news());
    EXPECT_FALSE(mQueue.isOpen(*a.mailbox));
    EXPECT_TRUE(mQueue.isOpen(*b.mailbox));
}

TEST_F(TheQueue, LetsTheServiceSpeakWhatItHasOfAClientThatEnded) {
    say(a);
    say(a, pieces(2));
    send();
    say(b);
    close(a);
    news();
    EXPECT_FALSE(mQueue.takeFlush());
    EXPECT_EQ("", send()) << "b could not be stopped without stopping that";
    stop(b);
    EXPECT_FALSE(mQueue.takeFlush());
    say(b);
    speak(1);
    speak(2);
    EXPECT_EQ("", send());
    speak(3);
    EXPECT_EQ("4:b2", send());
    EXPECT_EQ("b1 stopped by client", news());
}

TEST_F(TheQueue, DoesNotKeepAClientThatEnded) {
    say(a);
    send();
    speak(1);
    close(a);
    EXPECT_EQ(1, a.mailbox.use_count());
}

// Much of it.

TEST_F(TheQueue, LeavesWhatIsDroppedToBeEndedWithoutItsLock) {
    const SpeechPtr waiting = say(a);
    DroppedSpeech dropped = mQueue.stop(*a.mailbox);
    EXPECT_EQ("", send());
    EXPECT_FALSE(mQueue.isOpen(*a.mailbox));
    EXPECT_TRUE(waiting->state->outcome().isPending());
    say(a);
    dropped.end([](Mailbox&, Event&&) {});
    EXPECT_EQ(Outcome::Kind::Stopped, waiting->state->outcome().kind());
    EXPECT_TRUE(dropped.isEmpty());
    EXPECT_EQ("1:a2", send()) << "was said after the stop";
}

}  // namespace
