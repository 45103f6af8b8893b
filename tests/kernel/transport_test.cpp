// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverTransport.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <thread>
#include <utility>

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
using fake_driver::Numbers;
using fake_driver::Scripted;

class TheDriversTransport : public testing::Test {
protected:
    // The service manager answers the ping.
    sp<IBinder> contextThatAnswers() {
        mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, binder_transaction_data{}));
        return mTransport.contextObject();
    }
    // What else was written; when a small buffer is freed matters to nobody.
    Numbers withoutFrees() const {
        Numbers numbers = mDriver.numbers();
        numbers.erase(std::remove(numbers.begin(), numbers.end(), uint32_t{BC_FREE_BUFFER}),
                      numbers.end());
        return numbers;
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

using TheLoopersOfTheDriver = TheDriversTransport;

TEST_F(TheLoopersOfTheDriver, AreOneAndThoseThatTheDriverAsksFor) {
    mTransport.startThreads();
    mTransport.startThreads();
    ASSERT_EQ(1U, mDriver.threads.size());
    mDriver.willRead(bytesOf(uint32_t{BR_SPAWN_LOOPER}));
    mDriver.runThreads();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER}), mDriver.numbers());
    ASSERT_EQ(1U, mDriver.threads.size());
    mDriver.runThreads();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_REGISTER_LOOPER}), mDriver.numbers());
}

// Beside the first, for which the driver does not ask.
TEST_F(TheLoopersOfTheDriver, AreFifteenMoreAtMostUnlessSetOtherwise) {
    const std::unique_ptr<android::transport::Transport> transport(
        DriverTransport::open(mDriver, "/dev/binder"));
    EXPECT_EQ(15U, mDriver.maxThreads);
    for (const auto& [threads, requested] :
         std::map<size_t, uint32_t>{{0, 0}, {1, 0}, {2, 1}, {15, 14}, {256, 255}, {5000, 255}}) {
        transport->setMaxThreads(threads);
        EXPECT_EQ(requested, mDriver.maxThreads) << threads;
    }
}

// The driver asked for no other, and the pool never grew again.
TEST_F(TheLoopersOfTheDriver, AreStartedLaterWhenThereIsNoRoomForAThread) {
    mTransport.startThreads();
    mDriver.reads.emplace_back([this] {
        mDriver.threadError = EAGAIN;
        return bytesOf(uint32_t{BR_SPAWN_LOOPER});
    });
    mDriver.reads.emplace_back([this] {
        EXPECT_EQ(0U, mDriver.threads.size());
        mDriver.threadError = 0;
        return bytesOf(kNoop);
    });
    mDriver.reads.emplace_back([this] {
        EXPECT_EQ(1U, mDriver.threads.size());
        return bytesOf(kNoop);
    });
    mDriver.runThreads();
    EXPECT_EQ(1U, mDriver.threads.size());
    EXPECT_TRUE(mDriver.reads.empty());
}

TEST_F(TheLoopersOfTheDriver, EndWhenTheDriverServesTheProcessNoLonger) {
    mTransport.startThreads();
    mDriver.runThreads();
    EXPECT_EQ(0U, mDriver.threads.size()) << "another one would end, too";
}

TEST_F(TheLoopersOfTheDriver, BeginWithOneThatIsTriedAgain) {
    mDriver.threadError = EAGAIN;
    mTransport.startThreads();
    mDriver.threadError = 0;
    mTransport.startThreads();
    EXPECT_EQ(1U, mDriver.threads.size());
}

// The node's next one-way call waits until the buffer is freed.
TEST_F(TheLoopersOfTheDriver, AreReplacedWhenAnImplementationEndsItsThreadInACall) {
    ASSERT_TRUE(mTransport.becomeContext(
        new Scripted([](const Parcel&, Parcel*) -> android::status_t { pthread_exit(nullptr); })));
    mTransport.startThreads();
    ASSERT_EQ(1U, mDriver.threads.size());
    binder_transaction_data toContext = {};
    toContext.code = 1;
    toContext.flags = TF_ONE_WAY;
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, toContext));
    const auto looper = std::exchange(mDriver.threads, {}).front();
    std::thread(looper).join();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_FREE_BUFFER}), mDriver.numbers());
    EXPECT_EQ(1, mDriver.threadExits);
    ASSERT_EQ(1U, mDriver.threads.size());
    mDriver.runThreads();
    EXPECT_EQ(uint32_t{BC_ENTER_LOOPER}, mDriver.numbers().back());
}

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
    EXPECT_EQ(uint32_t{BC_ENTER_LOOPER}, mDriver.numbers().front());
}

TEST_F(TheDriversTransport, CallsNoManagerThatWasRefused) {
    int served = 0;
    mDriver.contextError = EBUSY;
    EXPECT_FALSE(mTransport.becomeContext(new Scripted([&served](const Parcel&, Parcel*) {
        ++served;
        return android::OK;
    })));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, binder_transaction_data{}));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    mTransport.serveForever();
    EXPECT_EQ(0, served);
    EXPECT_EQ(uint32_t{TF_STATUS_CODE}, mDriver.last(BC_REPLY).as<binder_transaction_data>().flags);
}

TEST_F(TheDriversTransport, CanBecomeTheManagerWhenThePlaceIsFreeAgain) {
    mDriver.contextError = EBUSY;
    EXPECT_FALSE(mTransport.becomeContext(new BBinder()));
    mDriver.contextError = 0;
    EXPECT_TRUE(mTransport.becomeContext(new BBinder()));
}

TEST_F(TheDriversTransport, GivesNoManagerWhereNoneAnswers) {
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
    EXPECT_TRUE(mTransport.contextObject() == nullptr);
    EXPECT_EQ((Numbers{BC_TRANSACTION}), mDriver.numbers());
}

TEST_F(TheDriversTransport, GivesNoManagerThatThePingDoesNotReach) {
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_FAILED_REPLY}));
    EXPECT_TRUE(mTransport.contextObject() == nullptr);
}

TEST_F(TheDriversTransport, GivesAManagerThatDoesNotKnowThePing) {
    const int32_t status = android::PERMISSION_DENIED;
    binder_transaction_data reply = {};
    reply.flags = TF_STATUS_CODE;
    reply.data_size = sizeof(status);
    reply.data.ptr.buffer = android::kernel::toWord(&status);
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, reply));
    EXPECT_TRUE(mTransport.contextObject() != nullptr);
}

TEST_F(TheDriversTransport, AsksForTheManagerOnce) {
    const sp<IBinder> context = contextThatAnswers();
    ASSERT_TRUE(context != nullptr);
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_INCREFS, BC_ACQUIRE, BC_REQUEST_DEATH_NOTIFICATION}),
              withoutFrees());
    EXPECT_EQ(0U, mDriver.last(BC_ACQUIRE).as<uint32_t>());
    mDriver.written.clear();
    EXPECT_TRUE(mTransport.contextObject() == context);
    EXPECT_EQ(Numbers{}, mDriver.numbers());
}

TEST_F(TheDriversTransport, GivesThreadsThatAskTogetherTheSameProxy) {
    sp<IBinder> other;
    mDriver.reads.emplace_back([this, &other] {
        std::thread([this, &other] { other = contextThatAnswers(); }).join();
        return bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, binder_transaction_data{});
    });
    EXPECT_TRUE(mTransport.contextObject() == other);
    EXPECT_EQ(1U, mDriver.count(BC_ACQUIRE));
}

TEST_F(TheDriversTransport, GivesTheManagerThatThisProcessBecameMeanwhile) {
    const sp<BBinder> manager = new BBinder();
    mDriver.reads.emplace_back([this, &manager] {
        EXPECT_TRUE(mTransport.becomeContext(manager));
        return bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, binder_transaction_data{});
    });
    EXPECT_TRUE(mTransport.contextObject() == sp<IBinder>(manager));
}

// Where nobody had called the dead one it was given out for good.
TEST_F(TheDriversTransport, LooksForAnotherManagerWhenItHasReadOfTheDeath) {
    const sp<IBinder> dead = contextThatAnswers();
    ASSERT_TRUE(dead != nullptr);
    const binder_uintptr_t cookie = deathRequest().cookie;
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie));
    mDriver.willRead(bytesOf(kNoop));
    mTransport.serveForever();
    mDriver.written.clear();
    const sp<IBinder> next = contextThatAnswers();
    EXPECT_TRUE(next != nullptr && next != dead);
    EXPECT_EQ((Numbers{BC_CLEAR_DEATH_NOTIFICATION, BC_RELEASE, BC_DECREFS, BC_TRANSACTION,
                       BC_INCREFS, BC_ACQUIRE, BC_REQUEST_DEATH_NOTIFICATION}),
              withoutFrees());
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

TEST_F(TheDriversTransport, TellsADeathForWhichThereWasNoThreadWhenItIsAskedAgain) {
    const sp<IBinder> dead = contextThatAnswers();
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, dead->linkToDeath(recipient));
    EXPECT_EQ(android::DEAD_OBJECT, callDeadNode(dead));
    mDriver.threadError = EAGAIN;
    EXPECT_TRUE(contextThatAnswers() != dead);
    EXPECT_EQ(0U, mDriver.threads.size());
    mDriver.threadError = 0;
    EXPECT_TRUE(mTransport.contextObject() != nullptr);
    mDriver.runThreads();
    EXPECT_EQ(1, recipient->deaths());
}

// It would have reached the next manager, whose handle is the same.
TEST_F(TheDriversTransport, TakesNoCallToAManagerThatItHasReleased) {
    const sp<IBinder> dead = contextThatAnswers();
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
    EXPECT_EQ(0U, dead->getInterfaceDescriptor().size());
    EXPECT_TRUE(contextThatAnswers() != dead);
    mDriver.written.clear();
    const Parcel data;
    EXPECT_EQ(android::DEAD_OBJECT, dead->transact(1, data, nullptr));
    EXPECT_EQ(0U, mDriver.count(BC_TRANSACTION));
    mDriver.runThreads();
}

// That would have taken the count on the next manager, whose handle is the same.
TEST_F(TheDriversTransport, ReleasesADeadManagerOnce) {
    sp<IBinder> dead = contextThatAnswers();
    EXPECT_EQ(android::DEAD_OBJECT, callDeadNode(dead));
    const sp<IBinder> next = contextThatAnswers();
    EXPECT_TRUE(next != dead);
    EXPECT_EQ(1U, mDriver.count(BC_RELEASE));
    mDriver.runThreads();
    dead.clear();
    EXPECT_EQ(1U, mDriver.count(BC_RELEASE));
}

TEST_F(TheDriversTransport, WritesWhatIsQueuedWhenItIsFlushed) {
    const sp<IBinder> context = contextThatAnswers();
    mTransport.flush();
    mDriver.written.clear();
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, binder_transaction_data{}));
    ASSERT_EQ(android::OK, context->pingBinder());
    EXPECT_EQ((Numbers{BC_TRANSACTION}), mDriver.numbers());
    mTransport.flush();
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_FREE_BUFFER}), mDriver.numbers());
}

TEST_F(TheDriversTransport, AsksNoNextManagerForTheInterfaceOfOneOfWhoseDeathItHasRead) {
    const sp<IBinder> dead = contextThatAnswers();
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, deathRequest().cookie));
    mDriver.willRead(bytesOf(kNoop));
    mTransport.serveForever();
    EXPECT_TRUE(contextThatAnswers() != dead);
    mDriver.written.clear();
    EXPECT_EQ(0U, dead->getInterfaceDescriptor().size());
    EXPECT_EQ(0U, mDriver.count(BC_TRANSACTION));
}

TEST_F(TheDriversTransport, TellsALinkToAManagerThatItHasReleasedAsWell) {
    const sp<IBinder> dead = contextThatAnswers();
    EXPECT_EQ(android::DEAD_OBJECT, callDeadNode(dead));
    EXPECT_TRUE(contextThatAnswers() != dead);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    EXPECT_EQ(android::OK, dead->linkToDeath(recipient));
    mDriver.runThreads();
    EXPECT_EQ(1, recipient->deaths());
}

}  // namespace
