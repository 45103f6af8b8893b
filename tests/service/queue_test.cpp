// SPDX-License-Identifier: Apache-2.0
#include "service/SpeechQueue.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

Utterance utteranceOf(uint32_t pid, uint32_t id, const std::string& text = "text") {
    Utterance utterance;
    utterance.pid = pid;
    utterance.id = id;
    utterance.text = text;
    return utterance;
}

QueueLimits limitsOf(size_t perClient, size_t clients = 8) {
    QueueLimits limits;
    limits.utterancesPerClient = perClient;
    limits.clients = clients;
    return limits;
}

/// Pushes one utterance each, as (process, number).
void pushAll(SpeechQueue& queue, const std::vector<std::pair<uint32_t, uint32_t>>& all) {
    for (const auto& [pid, id] : all) {
        ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(pid, id)));
    }
}

/// Takes the next utterance and ends it. @return its number; 0 if there is none.
uint32_t takeNext(SpeechQueue& queue) {
    SpeechQueue::Work work;
    const bool isThere = queue.waiting() > 0 && queue.wait(work) && work.next.has_value();
    (void)queue.finish();
    return isThere ? work.next->id : 0;
}

std::vector<uint32_t> takeAll(SpeechQueue& queue) {
    std::vector<uint32_t> ids;
    for (uint32_t id = takeNext(queue); id != 0; id = takeNext(queue)) {
        ids.push_back(id);
    }
    return ids;
}

using Ids = std::vector<uint32_t>;

TEST(AClientsUtterances, AreHeardInTheOrderOfAcceptance) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 12}, {1, 10}, {1, 11}});
    EXPECT_EQ((Ids{12, 10, 11}), takeAll(queue));
}

TEST(Clients, TakeTurnsWhateverTheOrderOfAcceptance) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 10}, {1, 11}, {1, 12}, {2, 20}, {2, 21}, {3, 30}});
    EXPECT_EQ((Ids{10, 20, 30, 11, 21, 12}), takeAll(queue));
}

TEST(AClientThatComes, IsNextHoweverMuchOfOthersWaits) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 10}, {2, 20}, {3, 30}, {1, 11}, {2, 21}, {3, 31}, {1, 12}});
    EXPECT_EQ(10U, takeNext(queue));
    EXPECT_EQ(20U, takeNext(queue));
    pushAll(queue, {{4, 40}});
    EXPECT_EQ(30U, takeNext(queue)) << "it has not been heard either, and came before";
    EXPECT_EQ((Ids{40, 11, 21, 31, 12}), takeAll(queue));
}

TEST(AClientThatComes, IsNextAfterTheUtteranceThatSounds) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 10}, {2, 20}, {1, 11}, {2, 21}, {1, 12}, {2, 22}});
    EXPECT_EQ(10U, takeNext(queue));
    EXPECT_EQ(20U, takeNext(queue));
    SpeechQueue::Work work;
    ASSERT_TRUE(queue.wait(work));  // what sounds now
    pushAll(queue, {{3, 30}});
    (void)queue.finish();
    EXPECT_EQ((Ids{30, 21, 12, 22}), takeAll(queue));
}

TEST(AClientWithOneWaitingAtATime, HasNoMoreThanItsTurns) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 10}, {2, 20}, {1, 10}, {2, 20}, {1, 10}, {2, 20}});
    Ids heard;
    for (int i = 0; i < 7; ++i) {
        if (i == 0 || heard.back() == 30) {
            pushAll(queue, {{3, 30}});  // its next, as soon as it has been heard
        }
        heard.push_back(takeNext(queue));
    }
    EXPECT_EQ((Ids{10, 20, 30, 10, 20, 30, 10}), heard);
}

TEST(AClientThatWaits, IsNotPassedOverForEverByOthersThatCome) {
    SpeechQueue queue{QueueLimits{}};
    pushAll(queue, {{1, 1}, {1, 2}});
    ASSERT_EQ(1U, takeNext(queue));
    uint32_t passedOver = 0;
    for (uint32_t pid = 10; passedOver < 1000; ++pid, ++passedOver) {
        pushAll(queue, {{pid, pid}, {pid + 10'000, pid}});
        if (takeNext(queue) == 2) {
            break;
        }
    }
    EXPECT_EQ(SpeechQueue::kRememberedTurns, passedOver);
}

TEST(AFullShare, RefusesItsClientOnly) {
    SpeechQueue queue(limitsOf(2));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2)));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(1, 3)));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(2, 1)));
}

TEST(AFullShare, HasRoomAgainWhenAnUtteranceGetsItsTurn) {
    SpeechQueue queue(limitsOf(1));
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(1, 2)));
    ASSERT_TRUE(queue.wait(work));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 3)));
}

TEST(AFullQueue, RefusesEveryone) {
    SpeechQueue queue(limitsOf(2, 1));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(2, 1)));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(3, 1)));
}

TEST(AFullQueue, IsFullOfTextToo) {
    QueueLimits limits = limitsOf(100, 2);
    limits.textPerClient = 10;
    SpeechQueue queue(limits);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1, "12345678")));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(2, 1, "12345678")));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(3, 1, "12345")));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(3, 2, "1234")));
    queue.drop(1, 0);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(3, 3, "123456"))) << "dropped text leaves room";
    SpeechQueue::Work work;
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(2U, work.next->pid);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(4, 1, "1234567890")))
        << "so does text that has its turn";
}

TEST(AShare, IsBoundedInTextToo) {
    QueueLimits limits;
    limits.textPerClient = 10;
    SpeechQueue queue(limits);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1, "123456")));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(1, 2, "12345")));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 3, "1234")));
    queue.drop(1, 0);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 4, "1234567890")));
}

TEST(AShare, OfAClientThatWasHeardHasAllOfItsRoomAgain) {
    QueueLimits limits;
    limits.textPerClient = 10;
    SpeechQueue queue(limits);
    pushAll(queue, {{1, 1}});
    ASSERT_EQ(1U, takeNext(queue));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2, "1234567890")));
    queue.drop(1, 0);
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 3, "1234567890")));
}

TEST(DroppingAClient, GivesBackItsUtterancesWithTheReasonAndKeepsTheOthers) {
    SpeechQueue queue{QueueLimits{}};
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(2, 7)));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2)));
    queue.drop(1, -1);
    SpeechQueue::Work work;
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(2U, work.dropped.size());
    EXPECT_EQ(1U, work.dropped[0].id);
    EXPECT_EQ(2U, work.dropped[1].id);
    EXPECT_EQ(-1, work.dropped[1].status);
    EXPECT_EQ(7U, work.next->id);
}

TEST(Dropping, CancelsTheUtteranceThatSounds) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_TRUE(queue.wait(work));
    queue.drop(2, 0);
    EXPECT_FALSE(queue.cancelled());
    queue.drop(std::nullopt, -1);
    EXPECT_TRUE(queue.cancelled());
    queue.drop(1, 0);  // the first reason counts
    EXPECT_EQ(-1, queue.finish());
}

TEST(ACancelledUtterance, DoesNotTaintTheNext) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_TRUE(queue.wait(work));
    queue.drop(1, 0);
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2)));
    queue.finish();
    ASSERT_TRUE(queue.wait(work));
    EXPECT_FALSE(queue.cancelled());
    EXPECT_EQ(std::nullopt, queue.finish());
}

TEST(WhatIsPushedAsDropped, ComesOutInItsOrderAndIsNeverNext) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    EXPECT_EQ(STATUS_OK, queue.pushDropped(utteranceOf(1, 1), -1));
    EXPECT_EQ(STATUS_OK, queue.pushDropped(utteranceOf(1, 2), -1));
    EXPECT_EQ(0U, queue.waiting());
    ASSERT_TRUE(queue.wait(work));
    EXPECT_FALSE(work.next.has_value());
    ASSERT_EQ(2U, work.dropped.size());
    EXPECT_EQ(2U, work.dropped[1].id);
    EXPECT_EQ(-1, work.dropped[1].status);
}

TEST(WhatIsPushedAsDropped, FillsItsClientsShareUntilItIsReported) {
    SpeechQueue queue(limitsOf(2));
    SpeechQueue::Work work;
    EXPECT_EQ(STATUS_OK, queue.pushDropped(utteranceOf(1, 1), -1));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2)));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.pushDropped(utteranceOf(1, 3), -1));
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(1, 3)));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(2, 1)));
    ASSERT_TRUE(queue.wait(work));
    EXPECT_EQ(STATUS_OK, queue.pushDropped(utteranceOf(1, 3), -1));
}

TEST(WhatIsDropped, FillsItsClientsShareUntilItIsReported) {
    SpeechQueue queue(limitsOf(2));
    SpeechQueue::Work work;
    pushAll(queue, {{1, 1}, {1, 2}});
    queue.drop(1, 0);
    EXPECT_EQ(STATUS_QUEUE_FULL, queue.push(utteranceOf(1, 3)));
    ASSERT_TRUE(queue.wait(work));
    pushAll(queue, {{1, 3}, {1, 4}});
}

TEST(WhatIsDroppedWhileAnotherSounds, ComesOutMeanwhileAndGivesBackItsRoom) {
    SpeechQueue queue(limitsOf(2));
    SpeechQueue::Work work;
    pushAll(queue, {{1, 10}, {1, 11}, {2, 20}, {2, 21}});
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(1U, work.next->pid);
    EXPECT_TRUE(queue.takeDropped().empty());
    queue.drop(std::nullopt, -1);
    const auto dropped = queue.takeDropped();
    ASSERT_EQ(2U, dropped.size());
    EXPECT_EQ(20U, dropped[0].id);
    EXPECT_EQ(21U, dropped[1].id);
    EXPECT_EQ(-1, dropped[1].status);
    pushAll(queue, {{2, 22}, {2, 23}});
    EXPECT_EQ(-1, queue.finish());
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(1U, work.dropped.size()) << "those of the client that sounds come after its end";
    EXPECT_EQ(11U, work.dropped[0].id);
}

TEST(AClientThatDropsWhatItSaysAgainAndAgain, LeavesTheOthersTheirShares) {
    SpeechQueue queue(limitsOf(2, 2));
    for (uint32_t round = 0; round < 8; ++round) {
        (void)queue.push(utteranceOf(1, 2 * round));  // refused when its share is full
        (void)queue.push(utteranceOf(1, 2 * round + 1));
        queue.drop(1, 0);
    }
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(2, 1)));
    EXPECT_EQ(STATUS_OK, queue.push(utteranceOf(2, 2)));
}

TEST(AClosedQueue, CancelsWhatSoundsWithAStatusOfItsOwn) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_TRUE(queue.wait(work));
    queue.close();
    EXPECT_TRUE(queue.cancelled());
    EXPECT_EQ(STATUS_SHUTDOWN, queue.finish());
}

TEST(AForgottenClient, LeavesNothingToReport) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 2)));
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(2, 3)));
    queue.forget(1);
    EXPECT_TRUE(queue.cancelled());
    queue.finish();
    ASSERT_TRUE(queue.wait(work));
    EXPECT_TRUE(work.dropped.empty());
    EXPECT_EQ(3U, work.next->id);
    EXPECT_EQ(0U, queue.waiting());
}

TEST(AClosedQueue, GivesWhatWasWaitingAsDroppedAndThenEnds) {
    SpeechQueue queue{QueueLimits{}};
    SpeechQueue::Work work;
    ASSERT_EQ(STATUS_OK, queue.push(utteranceOf(1, 1)));
    queue.close();
    EXPECT_EQ(STATUS_SHUTDOWN, queue.push(utteranceOf(1, 2)));
    EXPECT_EQ(STATUS_SHUTDOWN, queue.pushDropped(utteranceOf(1, 2), -1));
    ASSERT_TRUE(queue.wait(work));
    ASSERT_EQ(1U, work.dropped.size());
    EXPECT_EQ(STATUS_SHUTDOWN, work.dropped[0].status);
    EXPECT_FALSE(work.next.has_value());
    EXPECT_FALSE(queue.wait(work));
}

}  // namespace
}  // namespace voxtreld
