// SPDX-License-Identifier: Apache-2.0
#include "socket/Deadline.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>

#include "socket/Message.h"

namespace {

using android::transport::Deadline;
using android::transport::hasHungUp;
using android::transport::makeSocketPair;
using android::transport::PollTarget;
using android::transport::SocketPair;
using Clock = std::chrono::steady_clock;

TEST(TheDeadlineOfACall, IsOneForAllItsWaits) {
    const SocketPair one = makeSocketPair();
    const SocketPair two = makeSocketPair();
    const auto begin = Clock::now();
    Deadline deadline;
    while (deadline.wait({one.held.get(), POLLIN})) {
    }
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(100));
    EXPECT_FALSE(deadline.wait({two.held.get(), POLLIN}));
    EXPECT_FALSE(deadline.wait({one.held.get(), POLLRDHUP}));
}

TEST(TheDeadlineOfACall, EndsAnAttemptThatNeverGetsOn) {
    const SocketPair pair = makeSocketPair();
    Deadline deadline;
    int attempts = 0;
    const auto attempt = [&](PollTarget& target) {
        ++attempts;
        target = {pair.held.get(), POLLRDHUP};
        return android::WOULD_BLOCK;
    };
    EXPECT_EQ(android::FAILED_TRANSACTION, android::transport::retryUntil(deadline, attempt));
    EXPECT_GE(attempts, 2) << "a last one when the time is up";
    const int before = attempts;
    EXPECT_EQ(android::FAILED_TRANSACTION, android::transport::retryUntil(deadline, attempt));
    EXPECT_EQ(before + 2, attempts) << "none of it is left";
}

TEST(TheDeadlineOfACall, IsNotUsedUpWhenTheTargetIsReady) {
    SocketPair pair = makeSocketPair();
    Deadline deadline;
    const auto attempt = [&](PollTarget& target) {
        target = {pair.held.get(), POLLRDHUP};
        const bool gone = hasHungUp(pair.held);
        pair.served.reset();
        return gone ? android::DEAD_OBJECT : android::WOULD_BLOCK;
    };
    EXPECT_EQ(android::DEAD_OBJECT, android::transport::retryUntil(deadline, attempt));
}

}  // namespace
