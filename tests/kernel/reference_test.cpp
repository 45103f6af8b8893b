// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverReference.h"

#include <binder/BpBinder.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BpBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using fake_driver::bytesOf;
using fake_driver::CountsDeaths;
using fake_driver::kComplete;
using fake_driver::kHandle;
using fake_driver::kNoop;
using fake_driver::Numbers;
using fake_driver::OverTheDriver;

class AReferenceOverTheDriver : public OverTheDriver {
protected:
    void SetUp() override {
        mProxy = mThread.proxyOf(kHandle);
        mThread.flush();
        mDriver.written.clear();
    }
    status_t callProxy(Parcel* reply, uint32_t flags = 0) {
        Parcel data;
        data.writeInt32(42);
        return mProxy->transact(9, data, reply, flags);
    }

    sp<BpBinder> mProxy;
};

TEST_F(AReferenceOverTheDriver, CallsItsHandle) {
    willReply(delivered({7}));
    Parcel reply;
    EXPECT_EQ(android::OK, callProxy(&reply));
    EXPECT_EQ(7, reply.readInt32());
    const auto sent = mDriver.last(BC_TRANSACTION).as<binder_transaction_data>();
    EXPECT_EQ(kHandle, sent.target.handle);
    EXPECT_EQ(9U, sent.code);
    EXPECT_FALSE(mProxy->nodeHasEnded());
}

TEST_F(AReferenceOverTheDriver, HasEndedWhenTheDriverTakesNoCall) {
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
    EXPECT_EQ(android::DEAD_OBJECT, callProxy(nullptr));
    EXPECT_TRUE(mProxy->nodeHasEnded());
    EXPECT_FALSE(mProxy->isBinderAlive());
    EXPECT_EQ((Numbers{BC_TRANSACTION}), mDriver.numbers());
}

// The driver would keep its record of the thread until the process ends.
TEST_F(AReferenceOverTheDriver, TellsOfTheEndOfAThreadThatOnlyLinkedOrLetGo) {
    const sp<CountsDeaths> recipient = new CountsDeaths();
    std::thread([&] { mProxy->linkToDeath(recipient); }).join();
    EXPECT_EQ(1, mDriver.threadExits);
    std::thread([&] { mProxy.clear(); }).join();
    EXPECT_EQ(2, mDriver.threadExits);
    EXPECT_EQ(uint32_t{BC_DECREFS}, mDriver.numbers().back());
}

TEST_F(AReferenceOverTheDriver, FreesTheBufferOfAReplyAtTheLatestWhenTheThreadEnds) {
    willReply(delivered({1}));
    std::thread([this] { EXPECT_EQ(android::OK, callProxy(nullptr)); }).join();
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_FREE_BUFFER}), mDriver.numbers());
}

// Only the thread that served the call has ended.
TEST_F(AReferenceOverTheDriver, GoesOnWhenAReplyIsLostAndAPingIsTaken) {
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_DEAD_REPLY}));
    mDriver.reads.emplace_back([this] {
        const auto ping = mDriver.last(BC_TRANSACTION).as<binder_transaction_data>();
        EXPECT_EQ(uint32_t{IBinder::PING_TRANSACTION}, ping.code);
        EXPECT_EQ(uint32_t{TF_ONE_WAY}, ping.flags);
        return bytesOf(kNoop, kComplete);
    });
    EXPECT_EQ(android::DEAD_OBJECT, callProxy(nullptr));
    EXPECT_TRUE(mProxy->isBinderAlive());
    willReply(delivered({}));
    EXPECT_EQ(android::OK, callProxy(nullptr));
}

TEST_F(AReferenceOverTheDriver, HasEndedWhenAReplyIsLostAndNoPingIsTaken) {
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_DEAD_REPLY}));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
    EXPECT_EQ(android::DEAD_OBJECT, callProxy(nullptr));
    EXPECT_FALSE(mProxy->isBinderAlive());
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_TRANSACTION}), mDriver.numbers());
}

TEST_F(AReferenceOverTheDriver, GoesOnWhenTheNodeItselfAnswersDeadObject) {
    willReply(delivered({android::DEAD_OBJECT}, TF_STATUS_CODE));
    EXPECT_EQ(android::DEAD_OBJECT, callProxy(nullptr));
    EXPECT_TRUE(mProxy->isBinderAlive());
}

TEST_F(AReferenceOverTheDriver, RequestsOneDeathForAllItsLinksAndClearsItWithTheLast) {
    const sp<IBinder::DeathRecipient> first = new fake_driver::CountsDeaths();
    const sp<IBinder::DeathRecipient> second = new fake_driver::CountsDeaths();
    ASSERT_EQ(android::OK, mProxy->linkToDeath(first));
    ASSERT_EQ(android::OK, mProxy->linkToDeath(second));
    EXPECT_EQ((Numbers{BC_REQUEST_DEATH_NOTIFICATION}), mDriver.numbers());
    ASSERT_EQ(android::OK, mProxy->unlinkToDeath(first));
    EXPECT_EQ(1U, mDriver.written.size());
    ASSERT_EQ(android::OK, mProxy->unlinkToDeath(second));
    EXPECT_EQ((Numbers{BC_REQUEST_DEATH_NOTIFICATION, BC_CLEAR_DEATH_NOTIFICATION}),
              mDriver.numbers());
}

TEST_F(AReferenceOverTheDriver, RequestsItsDeathAnewAfterTheLastLinkHasGone) {
    const sp<IBinder::DeathRecipient> recipient = new fake_driver::CountsDeaths();
    for (int round = 0; round < 2; ++round) {
        mDriver.written.clear();
        ASSERT_EQ(android::OK, mProxy->linkToDeath(recipient));
        ASSERT_EQ(android::OK, mProxy->unlinkToDeath(recipient));
        EXPECT_EQ((Numbers{BC_REQUEST_DEATH_NOTIFICATION, BC_CLEAR_DEATH_NOTIFICATION}),
                  mDriver.numbers());
    }
    mDriver.written.clear();
    mProxy.clear();
    EXPECT_EQ((Numbers{BC_RELEASE, BC_DECREFS}), mDriver.numbers()) << "there is nothing to clear";
}

}  // namespace
