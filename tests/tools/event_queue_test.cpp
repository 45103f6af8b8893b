// SPDX-License-Identifier: Apache-2.0
#include "tools/EventQueue.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <thread>

using namespace voxtrelctl;
using Source = Notice::Source;

namespace {

constexpr auto kSoon = std::chrono::milliseconds(50);

EventQueue& queue() {
    return EventQueue::instance();
}

bool any(const Notice&) {
    return true;
}

bool isDeath(const Notice& notice) {
    return notice.source == Source::ServiceDied;
}

/// There is one queue in the process, so what a test left in it is taken out first.
class TheQueue : public ::testing::Test {
protected:
    void SetUp() override {
        while (queue().next(EventQueue::Clock::now(), &any).source != Source::TimedOut) {
        }
    }
};

class ASignal : public TheQueue {};

TEST_F(TheQueue, GivesNoticesInTheirOrder) {
    EventQueue::onEvent(1, 2, 3);
    queue().post({Source::Connected, {}, -8});
    const Notice first = queue().next();
    EXPECT_EQ(first.source, Source::Service);
    EXPECT_EQ(first.event.first, 1U);
    EXPECT_EQ(first.event.second, 2U);
    EXPECT_EQ(first.event.third, 3U);
    const Notice second = queue().next();
    EXPECT_EQ(second.source, Source::Connected);
    EXPECT_EQ(second.status, -8);
}

TEST_F(TheQueue, KeepsWhatIsNotWantedYet) {
    EventQueue::onEvent(1, 0, 0);
    queue().post({Source::ServiceDied, {}, 0});
    EXPECT_EQ(queue().next(EventQueue::Clock::time_point::max(), &isDeath).source,
              Source::ServiceDied);
    EXPECT_EQ(queue().next().source, Source::Service);
}

TEST_F(TheQueue, GivesUpAtItsDeadline) {
    const auto begin = EventQueue::Clock::now();
    EventQueue::onEvent(1, 0, 0);
    EXPECT_EQ(queue().next(begin + kSoon, &isDeath).source, Source::TimedOut);
    EXPECT_GE(EventQueue::Clock::now(), begin + kSoon);
}

TEST_F(TheQueue, SleepsWhileThereIsNothingItWants) {
    for (int i = 0; i < 100; ++i) {
        EventQueue::onEvent(1, 0, 0);
    }
    const std::clock_t before = std::clock();
    (void)queue().next(EventQueue::Clock::now() + std::chrono::milliseconds(500), &isDeath);
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 5);
}

TEST_F(TheQueue, IsWokenByAnotherThread) {
    std::thread poster([] { EventQueue::onEvent(2, 5, 0); });
    EXPECT_EQ(queue().next().event.second, 5U);
    poster.join();
}

TEST_F(TheQueue, LosesNothingOfManyThreads) {
    constexpr unsigned kThreads = 8;
    constexpr unsigned kEach = 1000;
    std::vector<std::thread> posters;
    for (unsigned n = 0; n < kThreads; ++n) {
        posters.emplace_back([n] {
            for (unsigned i = 0; i < kEach; ++i) {
                EventQueue::onEvent(4, n, i);
            }
        });
    }
    std::vector<unsigned> expected(kThreads);
    for (unsigned i = 0; i < kThreads * kEach; ++i) {
        const Event event = queue().next().event;
        EXPECT_EQ(event.third, expected.at(event.second)++);
    }
    for (std::thread& poster : posters) {
        poster.join();
    }
}

TEST_F(ASignal, IsANoticeThatNothingHoldsBack) {
    EventQueue::onEvent(1, 0, 0);  // the queue takes the signals over here
    raise(SIGTERM);
    const Notice notice = queue().next(EventQueue::Clock::time_point::max(), &any);
    EXPECT_EQ(notice.source, Source::Interrupted);
    EXPECT_EQ(notice.status, SIGTERM);
}

}  // namespace
