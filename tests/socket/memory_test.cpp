// SPDX-License-Identifier: Apache-2.0
// Memory runs out while a thread serves what another process has sent.
#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "socket/Message.h"
#include "socket/Reactor.h"
#include "socket/ThreadPool.h"

namespace {

using namespace android::transport;

constexpr int kLongMs = 60000;

/// Has no memory the first time that it is served.
class StarvedHandler final : public EventHandler {
public:
    StarvedHandler(Reactor& reactor, Fd socket, bool paused)
        : EventHandler(std::move(socket)), mReactor(reactor), mPaused(paused) {}

    void onReady() override {
        if (++mTimes > 1) {
            return;
        }
        if (mPaused) {
            mReactor.pause(*this);  // as a thread does that stays on a busy socket
        }
        throw std::bad_alloc();
    }
    int times() const { return mTimes; }

private:
    Reactor& mReactor;
    const bool mPaused;
    int mTimes = 0;
};

void expectToBeServedAgain(bool paused) {
    Reactor reactor;
    ThreadPool pool(reactor);
    SocketPair pair = makeSocketPair();
    const auto handler = std::make_shared<StarvedHandler>(reactor, std::move(pair.served), paused);
    ASSERT_TRUE(reactor.add(handler));
    pair.held.reset();
    for (int times = 1; times <= 2; ++times) {
        const std::shared_ptr<EventHandler> ready = reactor.wait(kLongMs);
        ASSERT_EQ(handler, ready);
        pool.serve(*ready);
        EXPECT_EQ(times, handler->times());
    }
}

TEST(AHandlerWithoutMemory, IsServedAgain) {
    expectToBeServedAgain(false);
}

TEST(AHandlerWithoutMemory, IsServedAgainThoughItWasPaused) {
    expectToBeServedAgain(true);
}

TEST(AHandlerThatWasRemoved, IsNotServedAgainWhenMemoryRunsOut) {
    Reactor reactor;
    ThreadPool pool(reactor);
    SocketPair pair = makeSocketPair();
    const auto handler = std::make_shared<StarvedHandler>(reactor, std::move(pair.served), false);
    ASSERT_TRUE(reactor.add(handler));
    pair.held.reset();
    ASSERT_EQ(handler, reactor.wait(kLongMs));
    reactor.remove(*handler);
    pool.serve(*handler);
    EXPECT_EQ(nullptr, reactor.wait(0));
}

}  // namespace
