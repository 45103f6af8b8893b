// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BpBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using fake_driver::bytesOf;
using fake_driver::CountsDeaths;
using fake_driver::kComplete;
using fake_driver::kHandle;
using fake_driver::kNoop;
using fake_driver::Numbers;
using fake_driver::OverTheDriver;
using fake_driver::Scripted;

using ADeathOverTheDriver = OverTheDriver;

TEST_F(ADeathOverTheDriver, IsToldOnceAndAnswered) {
    const sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    const auto request = mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    EXPECT_EQ(kHandle, request.handle);
    const binder_uintptr_t cookie = request.cookie;
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie));
    mDriver.willRead(bytesOf(kNoop));
    serve();
    EXPECT_EQ(1, recipient->deaths());
    EXPECT_EQ(2U, mDriver.count(BC_DEAD_BINDER_DONE));
    EXPECT_EQ(cookie, mDriver.last(BC_DEAD_BINDER_DONE).as<binder_uintptr_t>());
    EXPECT_FALSE(proxy->isBinderAlive());
}

TEST_F(ADeathOverTheDriver, IsOnlyAnsweredWhenItsRequestWasCleared) {
    const sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    const auto first = mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    const binder_uintptr_t cookie = first.cookie;
    ASSERT_EQ(android::OK, proxy->unlinkToDeath(recipient));
    const auto cleared = mDriver.last(BC_CLEAR_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    EXPECT_EQ(uint64_t{cookie}, uint64_t{cleared.cookie});
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie,
                             uint32_t{BR_CLEAR_DEATH_NOTIFICATION_DONE}, cookie));
    mDriver.willRead(bytesOf(kNoop));
    serve();
    EXPECT_EQ(0, recipient->deaths());
    EXPECT_EQ(1U, mDriver.count(BC_DEAD_BINDER_DONE));
}

TEST_F(ADeathOverTheDriver, IsRememberedUntilItIsTaken) {
    const sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    const binder_uintptr_t cookie = mProcess.deaths.add(proxy);
    EXPECT_TRUE(mProcess.deaths.take(cookie) == proxy);
    EXPECT_TRUE(mProcess.deaths.take(cookie) == nullptr);
}

// The implementation may hold a lock that the recipient wants.
TEST_F(ADeathOverTheDriver, IsToldWhenTheCallThatTheThreadServesIsOver) {
    const sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    const auto request = mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    const binder_uintptr_t cookie = request.cookie;
    int deathsInCall = -1;
    const sp<Scripted> node = new Scripted([&](const Parcel&, Parcel*) {
        mDriver.reads.emplace_front(
            [cookie] { return bytesOf(kNoop, kComplete, uint32_t{BR_DEAD_BINDER}, cookie); });
        EXPECT_EQ(android::OK, call(nullptr, IBinder::FLAG_ONEWAY).status);
        deathsInCall = recipient->deaths();
        return android::OK;
    });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    serve();
    EXPECT_EQ(0, deathsInCall);
    EXPECT_EQ(1, recipient->deaths());
}

// Ends with the last link to it, within the destructor of the proxy.
class ActsAtItsEnd : public IBinder::DeathRecipient {
public:
    explicit ActsAtItsEnd(std::function<void()> act) : mAct(std::move(act)) {
        extendObjectLifetime(OBJECT_LIFETIME_WEAK);
    }
    void binderDied(const android::wp<IBinder>&) override {}

protected:
    ~ActsAtItsEnd() override { mAct(); }

private:
    const std::function<void()> mAct;
};

// The new proxy's death was never told.
TEST_F(ADeathOverTheDriver, IsRequestedAnewWhileTheProxyThatHadTheRequestIsDestroyed) {
    sp<BpBinder> old = mThread.proxyOf(kHandle);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    sp<BpBinder> remade;
    ASSERT_EQ(android::OK, old->linkToDeath(new ActsAtItsEnd([&] {
        remade = mThread.proxyOf(kHandle);
        mThread.flush();
        EXPECT_EQ(android::OK, remade->linkToDeath(recipient));
    })));
    mThread.flush();
    mDriver.written.clear();
    old.clear();
    ASSERT_TRUE(remade != nullptr);
    EXPECT_EQ((Numbers{BC_CLEAR_DEATH_NOTIFICATION, BC_INCREFS, BC_ACQUIRE,
                       BC_REQUEST_DEATH_NOTIFICATION, BC_RELEASE, BC_DECREFS}),
              mDriver.numbers());
    const auto request = mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    const binder_uintptr_t cookie = request.cookie;
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie));
    mDriver.willRead(bytesOf(kNoop));
    serve();
    EXPECT_EQ(1, recipient->deaths());
}

}  // namespace
