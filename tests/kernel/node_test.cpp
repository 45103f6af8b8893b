// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include <binder/Binder.h>
#include <binder/IPCThreadState.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using fake_driver::bytesOf;
using fake_driver::Command;
using fake_driver::kComplete;
using fake_driver::kNoop;
using fake_driver::Numbers;
using fake_driver::OverTheDriver;
using fake_driver::Scripted;

using ANodeOfThisProcess = OverTheDriver;

TEST_F(ANodeOfThisProcess, ComesHomeAsItself) {
    const sp<BBinder> node = new BBinder();
    willReply(deliveredBinder(android::kernel::flatNode(*node)));
    Parcel reply;
    ASSERT_EQ(android::OK, call(&reply).status);
    EXPECT_TRUE(reply.readStrongBinder() == sp<IBinder>(node));
    EXPECT_EQ(1U, mDriver.count(BC_FREE_BUFFER)) << "the buffer holds the node";
}

TEST_F(ANodeOfThisProcess, IsHeldAndLetGoAsTheDriverSaysAndEachHoldIsAnswered) {
    const sp<BBinder> node = new BBinder();
    const binder_ptr_cookie words = wordsOf(*node);
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, words, uint32_t{BR_ACQUIRE}, words));
    mDriver.reads.emplace_back([this, &node, words] {
        EXPECT_EQ(2, node->getStrongCount());
        EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_INCREFS_DONE, BC_ACQUIRE_DONE}), mDriver.numbers());
        EXPECT_EQ(words.cookie, mDriver.last(BC_ACQUIRE_DONE).as<binder_ptr_cookie>().cookie);
        return bytesOf(kNoop, uint32_t{BR_RELEASE}, words, uint32_t{BR_DECREFS}, words);
    });
    serve();
    EXPECT_EQ(1, node->getStrongCount());
    EXPECT_EQ(1, node->getWeakRefs()->getWeakCount());
}

// What its destructor called failed.
TEST_F(ANodeOfThisProcess, IsLetGoOnlyWhenTheReplyIsThere) {
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    willHoldAndLetGo(node);
    mDriver.reads.emplace_back([this, &watched] {
        EXPECT_TRUE(watched.promote() != nullptr);
        return bytesOf(kNoop, uint32_t{BR_REPLY}, delivered({}));
    });
    EXPECT_EQ(android::OK, call(nullptr).status);
    EXPECT_TRUE(watched.promote() == nullptr);
}

// The driver would refuse what its destructor calls.
TEST_F(ANodeOfThisProcess, IsNotLetGoInANestedCallEither) {
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    const sp<Scripted> nested = new Scripted([&](const Parcel&, Parcel*) {
        EXPECT_TRUE(watched.promote() != nullptr);
        EXPECT_EQ(android::OK, call(nullptr, IBinder::FLAG_ONEWAY).status);
        EXPECT_TRUE(watched.promote() != nullptr);
        return android::OK;
    });
    willHoldAndLetGo(node, bytesOf(kNoop, kComplete),
                     bytesOf(uint32_t{BR_TRANSACTION}, callTo(*nested, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, delivered({})));
    EXPECT_EQ(android::OK, call(nullptr).status);
    EXPECT_TRUE(mDriver.reads.empty());
    EXPECT_TRUE(watched.promote() == nullptr);
}

TEST_F(ANodeOfThisProcess, IsLetGoByAThreadThatServesNoLonger) {
    serve();
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    willHoldAndLetGo(node);
    EXPECT_EQ(android::OK, call(nullptr, IBinder::FLAG_ONEWAY).status);
    EXPECT_TRUE(watched.promote() == nullptr);
}

TEST_F(ANodeOfThisProcess, ThatIsTheManagersHasNoAddressAndIsAnsweredAllTheSame) {
    const binder_ptr_cookie none = {0, 0};
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, none, uint32_t{BR_ACQUIRE}, none));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_RELEASE}, none, uint32_t{BR_DECREFS}, none));
    serve();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_INCREFS_DONE, BC_ACQUIRE_DONE}), mDriver.numbers());
}

TEST_F(ANodeOfThisProcess, IsNotCalledWhenItIsBeingDestroyed) {
    sp<Scripted> node = new Scripted([](const Parcel&, Parcel*) { return android::OK; });
    const android::wp<Scripted> watched(node);  // as the driver, which has a weak count yet
    const binder_transaction_data late = callTo(*node, delivered({}));
    node.clear();
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, late));
    mDriver.reads.emplace_back([this] {
        const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
        EXPECT_EQ(uint32_t{TF_STATUS_CODE}, sent.flags);
        EXPECT_EQ(android::UNKNOWN_TRANSACTION,
                  *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer));
        return bytesOf(kNoop, kComplete);
    });
    serve();
    EXPECT_TRUE(mDriver.reads.empty());
}

TEST_F(ANodeOfThisProcess, IsLetGoBeforeTheCallThatWasReadBehindIt) {
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    bool wasThere = true;
    const sp<Scripted> called = new Scripted([&](const Parcel&, Parcel*) {
        wasThere = watched.promote() != nullptr;
        return android::OK;
    });
    willHoldAndLetGo(node, bytesOf(kNoop),
                     bytesOf(uint32_t{BR_TRANSACTION}, callTo(*called, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    serve();
    EXPECT_FALSE(wasThere);
}

TEST_F(ANodeOfThisProcess, KnowsItsCallerByTheDriversWord) {
    int32_t pid = 0;
    uid_t uid = 0;
    const sp<Scripted> node = new Scripted([&](const Parcel&, Parcel*) {
        pid = android::IPCThreadState::self()->getCallingPid();
        uid = android::IPCThreadState::self()->getCallingUid();
        return android::OK;
    });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    serve();
    EXPECT_EQ(77, pid);
    EXPECT_EQ(88U, uid);
    EXPECT_EQ(getpid(), android::IPCThreadState::self()->getCallingPid());
    EXPECT_EQ(getuid(), android::IPCThreadState::self()->getCallingUid());
}

TEST_F(ANodeOfThisProcess, KnowsItsCallerAfterANestedCallAsWell) {
    const sp<Scripted> nested = new Scripted([](const Parcel&, Parcel*) {
        EXPECT_EQ(99, android::IPCThreadState::self()->getCallingPid());
        return android::OK;
    });
    binder_transaction_data fromAnother = callTo(*nested, delivered({}));
    fromAnother.sender_pid = 99;
    const sp<Scripted> node = new Scripted([this](const Parcel&, Parcel*) {
        EXPECT_EQ(android::OK, call(nullptr).status);
        EXPECT_EQ(77, android::IPCThreadState::self()->getCallingPid());
        EXPECT_EQ(88U, android::IPCThreadState::self()->getCallingUid());
        return android::OK;
    });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_TRANSACTION}, fromAnother));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_REPLY}, delivered({})));
    mDriver.willRead(bytesOf(kNoop, kComplete));
    serve();
    EXPECT_TRUE(mDriver.reads.empty());
}

TEST_F(ANodeOfThisProcess, HasTheBufferOfAOneWayCallUntilItIsDone) {
    const sp<Scripted> node = new Scripted([this](const Parcel&, Parcel*) {
        mThread.flush();
        EXPECT_EQ(0U, mDriver.count(BC_FREE_BUFFER));
        return android::OK;
    });
    mDriver.willRead(
        bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({1}, TF_ONE_WAY))));
    mDriver.willRead(bytesOf(kNoop));
    serve();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_FREE_BUFFER}), mDriver.numbers());
}

// Its object was looked at when another thread had destroyed it.
TEST_F(ANodeOfThisProcess, IsHeldInACallWhoseBufferHasBeenFreed) {
    sp<Scripted> node =
        new Scripted([](const Parcel&, Parcel* reply) { return reply->writeInt32(8); });
    const android::wp<Scripted> watched(node);
    mDriver.onWrite = [&node](const Command& command) {
        if (command.number == BC_FREE_BUFFER) {
            node.clear();  // as when the driver has let go of it
        }
    };
    const std::vector<int32_t> large(64 * 1024);
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered(large))));
    mDriver.reads.emplace_back([this, &watched] {
        const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
        EXPECT_TRUE(watched.promote() == nullptr);
        EXPECT_EQ(0U, sent.flags);
        EXPECT_EQ(8, *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer));
        return bytesOf(kNoop, kComplete);
    });
    serve();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_FREE_BUFFER, BC_REPLY}), mDriver.numbers());
    EXPECT_TRUE(watched.promote() == nullptr);
}

// Their nodes would outlive the call in the caller's sight.
TEST_F(ANodeOfThisProcess, LetsGoOfTheBindersOfItsRequestBeforeItAnswers) {
    const sp<Scripted> node = new Scripted([](const Parcel&, Parcel*) { return android::OK; });
    const auto transaction = deliveredBinder(android::kernel::flatHandle(3));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, transaction)));
    mDriver.onWrite = [this](const Command& command) {
        if (command.number == BC_REPLY) {
            EXPECT_EQ(1U, mDriver.count(BC_RELEASE));
        }
    };
    mDriver.willRead(bytesOf(kNoop, kComplete));
    serve();
    EXPECT_EQ(1U, mDriver.count(BC_REPLY));
}

TEST_F(ANodeOfThisProcess, AnswersWithAStatusWhenItFails) {
    const sp<Scripted> node = new Scripted([](const Parcel& data, Parcel*) -> status_t {
        if (data.dataSize() == 0) {
            throw std::runtime_error("on purpose");
        }
        return -7;
    });
    status_t answered = 0;
    const auto willAnswer = [this, &answered] {
        mDriver.reads.emplace_back([this, &answered] {
            const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
            EXPECT_EQ(uint32_t{TF_STATUS_CODE}, sent.flags);
            answered = *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer);
            return bytesOf(kNoop, kComplete);
        });
    };
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({1}))));
    willAnswer();
    serve();
    EXPECT_EQ(-7, answered);
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    willAnswer();
    serve();
    EXPECT_EQ(android::UNKNOWN_ERROR, answered);
}

}  // namespace
