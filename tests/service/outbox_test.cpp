// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "ipc/BpCallback.h"
#include "tests/service/Fakes.h"
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
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
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
    ASSERT_TRUE(outbox.flush(kPatience));
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
    ASSERT_TRUE(outbox.flush(kPatience));
    const auto sent = remote->sent();
    ASSERT_GE(sent.size(), refused + 1);
    EXPECT_EQ(EVENT_STARTED, sent[sent.size() - 2].request[0]);
    EXPECT_EQ(EVENT_FINISHED, sent.back().request[0]);
}

TEST_F(AnOutbox, DoesNotInsistOnAClientThatIsDead) {
    status = android::DEAD_OBJECT;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_STARTED, 1, 0));
    ASSERT_TRUE(outbox.flush(kPatience));
    EXPECT_EQ(1, attempts);
}

TEST_F(AnOutbox, IsBoundedForAClientThatNeverLooks) {
    status = android::FAILED_TRANSACTION;
    EventOutbox outbox(new TTS::BpCallback(remote));
    ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
    ASSERT_TRUE(waitForAttempts(1));
    for (size_t i = 0; i < EventOutbox::kMostWaiting; ++i) {
        ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
    }
    EXPECT_FALSE(outbox.post(EVENT_WORD, 1, 0));
}

TEST_F(AnOutbox, DoesNotHoldUpWhoClosesIt) {
    status = android::FAILED_TRANSACTION;
    {
        EventOutbox outbox(new TTS::BpCallback(remote));
        ASSERT_TRUE(outbox.post(EVENT_WORD, 1, 0));
        ASSERT_TRUE(waitForAttempts(1));
    }
    // The thread may be in its last attempt; it lets go of the client soon.
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (remote->getStrongCount() > 1 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(1, remote->getStrongCount());
}

}  // namespace
}  // namespace voxtreld
