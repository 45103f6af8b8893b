// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "ipc/BpCallback.h"
#include "tests/service/Fakes.h"
#include "tests/support/Eventually.h"
#include "tests/support/RecordingRemote.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// A remote callback that has room only when the test says so.
class AnOutbox : public testing::Test {
protected:
    AnOutbox() {
        remote->answerBy(
            [this](const support::Transaction&, const android::Parcel&, android::Parcel&) {
                ++attempts;
                return status.load();
            });
    }
    bool waitForAttempts(int count) {
        const auto deadline = std::chrono::steady_clock::now() + kTimeout;
        while (attempts < count && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        return attempts >= count;
    }

    const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
    std::atomic<android::status_t> status{android::OK};
    std::atomic<int> attempts{0};
};

TEST_F(AnOutbox, SendsEventsOneWayInTheOrderInWhichTheyWerePosted) {
    EventOutbox outbox(new TTS::BpCallback(remote));
    for (uint32_t i = 0; i < 100; ++i) {
        ASSERT_TRUE(outbox.post(EVENT_WORD, 7, i));
    }
    ASSERT_TRUE(outbox.flush(kTimeout));
    const auto sent = remote->sent();
    ASSERT_EQ(100U, sent.size());
    for (uint8_t i = 0; i < 100; ++i) {
        EXPECT_EQ(1U, sent[i].code);
        EXPECT_EQ(1U, sent[i].flags);
        EXPECT_EQ((support::Bytes{4, 0, 0, 0, 7, 0, 0, 0, i, 0, 0, 0}), sent[i].request);
    }
}

TEST_F(AnOutbox, TriesAClientThatHasNoRoomAgainAndLosesNothing) {
    status = android::FAILED_TRANSACTION;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_STARTED, 1, 0));
    ASSERT_TRUE(outbox.post(EVENT_FINISHED, 1, 0));
    ASSERT_TRUE(waitForAttempts(3));
    EXPECT_FALSE(outbox.flush(std::chrono::milliseconds(1)));
    const size_t refused = remote->sent().size();
    status = android::OK;
    ASSERT_TRUE(outbox.flush(kTimeout));
    const auto sent = remote->sent();
    ASSERT_GE(sent.size(), refused + 1);
    EXPECT_EQ(EVENT_STARTED, sent[sent.size() - 2].request[0]);
    EXPECT_EQ(EVENT_FINISHED, sent.back().request[0]);
}

TEST_F(AnOutbox, DoesNotInsistOnAClientThatIsDead) {
    status = android::DEAD_OBJECT;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_STARTED, 1, 0));
    ASSERT_TRUE(outbox.flush(kTimeout));
    EXPECT_EQ(1, attempts);
}

TEST_F(AnOutbox, IsBoundedForAClientThatNeverLooks) {
    status = android::FAILED_TRANSACTION;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
    ASSERT_TRUE(waitForAttempts(1));
    for (size_t i = 1; i < EventOutbox::kMaxWaiting; ++i) {
        ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
    }
    EXPECT_FALSE(outbox.post(EVENT_WORD, 1, 0));
}

/// What the second callback is sent, as the third numbers of its events, while the first one's call
/// about the first of three events is under way and then gives `outcome`.
class ARedirectedOutbox : public AnOutbox {
protected:
    std::vector<uint8_t> sentAfterACallThatGives(android::status_t outcome, bool inTime = true) {
        Monitor gate;
        bool called = false;
        bool open = false;
        remote->answerBy([&](auto&, auto&, auto&) {
            gate.change([&] { called = true; });
            EXPECT_TRUE(gate.waitFor([&] { return open; }));
            return outcome;
        });
        const auto held = std::make_shared<int>();
        const std::chrono::milliseconds timeout = inTime ? kTimeout : std::chrono::seconds(0);
        EventOutbox outbox(new TTS::BpCallback(remote), held, timeout);
        for (const uint32_t number : {1U, 2U, 3U}) {
            EXPECT_TRUE(outbox.post(EVENT_WORD, 7, number));
        }
        EXPECT_TRUE(gate.waitFor([&] { return called; }));
        const android::sp<support::RecordingRemote> second = new support::RecordingRemote();
        outbox.redirect(new TTS::BpCallback(second));
        EXPECT_TRUE(outbox.post(EVENT_WORD, 7, 4));
        if (!inTime) {
            EXPECT_TRUE(outbox.flush(kTimeout));
        }
        gate.change([&] { open = true; });
        EXPECT_TRUE(voxtrel_test::eventually([&] { return held.use_count() == 1; }));
        EXPECT_TRUE(outbox.flush(kTimeout));
        EXPECT_EQ(1U, remote->sent().size());
        std::vector<uint8_t> thirds;
        for (const support::Transaction& each : second->sent()) {
            thirds.push_back(each.request[8]);
        }
        return thirds;
    }
    using Thirds = std::vector<uint8_t>;
};

TEST_F(ARedirectedOutbox, SendsTheRestToTheNewCallback) {
    EXPECT_EQ((Thirds{2, 3, 4}), sentAfterACallThatGives(android::OK));
}

TEST_F(ARedirectedOutbox, SendsWhatTheOldCallbackHadNoRoomForFirst) {
    EXPECT_EQ((Thirds{1, 2, 3, 4}), sentAfterACallThatGives(android::FAILED_TRANSACTION));
}

TEST_F(ARedirectedOutbox, SendsWhatTheOldCallbackWasTooDeadFor) {
    EXPECT_EQ((Thirds{1, 2, 3, 4}), sentAfterACallThatGives(android::DEAD_OBJECT));
}

TEST_F(ARedirectedOutbox, IsNotHeldUpByACallThatHangs) {
    EXPECT_EQ((Thirds{2, 3, 4}), sentAfterACallThatGives(android::OK, false));
}

TEST_F(ARedirectedOutbox, DoesNotSendTwiceWhenACallThatHungFailsAfterAll) {
    EXPECT_EQ((Thirds{2, 3, 4}), sentAfterACallThatGives(android::FAILED_TRANSACTION, false));
}

TEST_F(AnOutbox, KeepsWhatADeadCallbackDidNotTakeForTheNext) {
    status = android::DEAD_OBJECT;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_STARTED, 1, 0));
    ASSERT_TRUE(outbox.flush(kTimeout));
    ASSERT_TRUE(outbox.post(EVENT_FINISHED, 1, 0));
    const android::sp<support::RecordingRemote> second = new support::RecordingRemote();
    outbox.redirect(new TTS::BpCallback(second));
    ASSERT_TRUE(outbox.flush(kTimeout));
    const auto sent = second->sent();
    ASSERT_EQ(2U, sent.size());
    EXPECT_EQ(EVENT_STARTED, sent[0].request[0]);
    EXPECT_EQ(EVENT_FINISHED, sent[1].request[0]);
}

TEST_F(AnOutbox, DoesNotHoldUpWhoClosesIt) {
    status = android::FAILED_TRANSACTION;
    {
        EventOutbox outbox(new TTS::BpCallback(remote));
        ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
        ASSERT_TRUE(waitForAttempts(1));
    }
    // The thread may be in its last attempt; it lets go of the client soon.
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    while (remote->getStrongCount() > 1 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(1, remote->getStrongCount());
}

}  // namespace
}  // namespace voxtreld
