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

class AHandlerWithoutMemory : public testing::TestWithParam<bool> {
protected:
    void add(bool paused) {
        SocketPair pair = makeSocketPair();
        mHandler = std::make_shared<StarvedHandler>(mReactor, std::move(pair.served), paused);
        ASSERT_TRUE(mReactor.add(mHandler));
        pair.held.reset();
    }

    Reactor mReactor;
    ThreadPool mPool{mReactor};
    std::shared_ptr<StarvedHandler> mHandler;
};

TEST_P(AHandlerWithoutMemory, IsServedAgainThoughItMayHaveBeenPaused) {
    ASSERT_NO_FATAL_FAILURE(add(GetParam()));
    for (int times = 1; times <= 2; ++times) {
        const std::shared_ptr<EventHandler> ready = mReactor.wait(kLongMs);
        ASSERT_EQ(mHandler, ready);
        mPool.serve(*ready);
        EXPECT_EQ(times, mHandler->times());
    }
}

TEST_P(AHandlerWithoutMemory, IsNotServedAgainOnceItWasRemoved) {
    ASSERT_NO_FATAL_FAILURE(add(GetParam()));
    ASSERT_EQ(mHandler, mReactor.wait(kLongMs));
    mReactor.remove(*mHandler);
    mPool.serve(*mHandler);
    EXPECT_EQ(nullptr, mReactor.wait(0));
}

INSTANTIATE_TEST_SUITE_P(Paused, AHandlerWithoutMemory, testing::Bool());

}  // namespace
