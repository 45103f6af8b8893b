// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverTransport.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using android::kernel::DriverTransport;
using fake_driver::bytesOf;
using fake_driver::CountsDeaths;
using fake_driver::FakeDriver;
using fake_driver::kComplete;
using fake_driver::kNoop;
using fake_driver::Scripted;

class TheDriversTransport : public testing::Test {
protected:
    // The service manager answers the ping.
    sp<IBinder> contextThatAnswers() {
        mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, binder_transaction_data{}));
        return mTransport.contextObject();
    }
    android::status_t callDeadNode(const sp<IBinder>& proxy) {
        mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
        const Parcel data;
        return proxy->transact(1, data, nullptr);
    }
    binder_handle_cookie deathRequest() const {
        return mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    }

    FakeDriver mDriver;
    DriverTransport mTransport{mDriver, fake_driver::open(mDriver), "/dev/binder"};
};

// Calls to the first one were answered as if it did not exist.
TEST_F(TheDriversTransport, RefusesASecondManagerAndKeepsTheFirst) {
    int served = 0;
    const sp<Scripted> first = new Scripted([&served](const Parcel&, Parcel*) {
        ++served;
        return android::OK;
    });
    ASSERT_TRUE(mTransport.becomeContext(first));
    mDriver.contextError = EBUSY;
    EXPECT_FALSE(mTransport.becomeContext(new BBinder()));
    EXPECT_TRUE(mTransport.contextObject() == sp<IBinder>(first));
    binder_transaction_data toContext = {};
    toContext.code = 1;
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, toContext));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    mTransport.serveForever();
    EXPECT_EQ(1, served);
}

TEST_F(TheDriversTransport, CanBecomeTheManagerWhenThePlaceIsFreeAgain) {
    mDriver.contextError = EBUSY;
    EXPECT_FALSE(mTransport.becomeContext(new BBinder()));
    mDriver.contextError = 0;
    EXPECT_TRUE(mTransport.becomeContext(new BBinder()));
}

// A service that waited for the notice never registered with the next manager.
TEST_F(TheDriversTransport, TellsTheLinksToADeadManagerWhenItFindsTheNextOne) {
    const sp<IBinder> dead = contextThatAnswers();
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, dead->linkToDeath(recipient));
    const binder_uintptr_t cookie = deathRequest().cookie;
    EXPECT_EQ(android::DEAD_OBJECT, callDeadNode(dead));
    EXPECT_TRUE(contextThatAnswers() != dead);
    EXPECT_EQ(0, recipient->deaths()) << "the calling thread may hold the recipient's locks";
    mDriver.runThreads();
    EXPECT_EQ(1, recipient->deaths());
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie));
    mDriver.willRead(bytesOf(kNoop));
    mTransport.serveForever();
    EXPECT_EQ(1, recipient->deaths()) << "the driver's notice was on its way";
    EXPECT_EQ(1U, mDriver.count(BC_DEAD_BINDER_DONE));
}

TEST_F(TheDriversTransport, TellsALinkToAManagerThatItHasLetGoOfAsWell) {
    const sp<IBinder> dead = contextThatAnswers();
    EXPECT_EQ(android::DEAD_OBJECT, callDeadNode(dead));
    EXPECT_TRUE(contextThatAnswers() != dead);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    EXPECT_EQ(android::OK, dead->linkToDeath(recipient));
    mDriver.runThreads();
    EXPECT_EQ(1, recipient->deaths());
}

}  // namespace
