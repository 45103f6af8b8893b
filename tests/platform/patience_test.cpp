// SPDX-License-Identifier: Apache-2.0
#include "socket/Patience.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>

#include "socket/Message.h"

namespace {

using android::transport::hasHungUp;
using android::transport::makeSocketPair;
using android::transport::Obstacle;
using android::transport::Patience;
using android::transport::SocketPair;
using Clock = std::chrono::steady_clock;

TEST(ThePatienceOfACall, IsOneForAllItsWaits) {
    const SocketPair one = makeSocketPair();
    const SocketPair two = makeSocketPair();
    const auto begin = Clock::now();
    Patience patience;
    while (patience.wait({one.held.get(), POLLIN})) {
    }
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(100));
    EXPECT_FALSE(patience.wait({two.held.get(), POLLIN}));
    EXPECT_FALSE(patience.wait({one.held.get(), POLLRDHUP}));
}

TEST(ThePatienceOfACall, EndsAnAttemptThatNeverGetsOn) {
    const SocketPair pair = makeSocketPair();
    Patience patience;
    int attempts = 0;
    const auto attempt = [&](Obstacle& obstacle) {
        ++attempts;
        obstacle = {pair.held.get(), POLLRDHUP};
        return android::WOULD_BLOCK;
    };
    EXPECT_EQ(android::FAILED_TRANSACTION, android::transport::patiently(patience, attempt));
    EXPECT_GE(attempts, 2) << "a last one when the time is up";
    const int before = attempts;
    EXPECT_EQ(android::FAILED_TRANSACTION, android::transport::patiently(patience, attempt));
    EXPECT_EQ(before + 2, attempts) << "none of it is left";
}

TEST(ThePatienceOfACall, IsNotUsedUpWhenTheObstacleGoes) {
    SocketPair pair = makeSocketPair();
    Patience patience;
    const auto attempt = [&](Obstacle& obstacle) {
        obstacle = {pair.held.get(), POLLRDHUP};
        const bool gone = hasHungUp(pair.held);
        pair.served.reset();
        return gone ? android::DEAD_OBJECT : android::WOULD_BLOCK;
    };
    EXPECT_EQ(android::DEAD_OBJECT, android::transport::patiently(patience, attempt));
}

}  // namespace
