// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include <binder/Binder.h>
#include <binder/IPCThreadState.h>
#include <gtest/gtest.h>

#include <chrono>
#include <new>
#include <stdexcept>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BBinder;
using android::BpBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using android::kernel::DriverThread;
using android::kernel::toWord;
using fake_driver::bytesOf;
using fake_driver::Command;
using fake_driver::CountsDeaths;
using fake_driver::kComplete;
using fake_driver::kHandle;
using fake_driver::kNoop;
using fake_driver::Numbers;
using fake_driver::OverTheDriver;
using fake_driver::Scripted;

using ACallOverTheDriver = OverTheDriver;

TEST_F(ACallOverTheDriver, IsWrittenOnceAndItsReplysBufferFreedOnce) {
    const binder_transaction_data answer = delivered({6, 7});
    willReply(answer);
    Parcel reply;
    EXPECT_EQ(android::OK, call(&reply).status);
    EXPECT_EQ(6, reply.readInt32());
    EXPECT_EQ(7, reply.readInt32());
    mThread.flush();
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_FREE_BUFFER}), mDriver.numbers());
    const auto sent = mDriver.last(BC_TRANSACTION).as<binder_transaction_data>();
    EXPECT_EQ(kHandle, sent.target.handle);
    EXPECT_EQ(9U, sent.code);
    EXPECT_EQ(4U, sent.data_size);
    EXPECT_EQ(answer.data.ptr.buffer, mDriver.last(BC_FREE_BUFFER).as<binder_uintptr_t>());
}

// Sixteen idle threads with the buffer of such a reply each left no room for calls.
TEST_F(ACallOverTheDriver, FreesTheBufferOfALargeReplyAtOnceAndOfASmallOneWithTheNextCall) {
    constexpr size_t kPage = 4096 / sizeof(int32_t);
    for (const size_t size : {kPage, kPage - 1}) {
        mDriver.written.clear();
        willReply(delivered(std::vector<int32_t>(size)));
        Parcel reply;
        ASSERT_EQ(android::OK, call(&reply).status);
        EXPECT_EQ(size == kPage ? 1U : 0U, mDriver.count(BC_FREE_BUFFER));
    }
}

TEST_F(ACallOverTheDriver, GivesTheStatusOfAReplyThatIsOne) {
    willReply(delivered({-42}, TF_STATUS_CODE));
    Parcel reply;
    EXPECT_EQ(-42, call(&reply).status);
    EXPECT_EQ(0U, reply.dataSize());
    mThread.flush();
    EXPECT_EQ(1U, mDriver.count(BC_FREE_BUFFER));
}

TEST_F(ACallOverTheDriver, OfADeadNodeIsNotSent) {
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_DEAD_REPLY}));
    const DriverThread::Result result = call(nullptr);
    EXPECT_EQ(android::DEAD_OBJECT, result.status);
    EXPECT_TRUE(result.isDead);
    EXPECT_FALSE(result.wasSent);
}

TEST_F(ACallOverTheDriver, WhoseReplyIsLostWasSent) {
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_DEAD_REPLY}));
    const DriverThread::Result result = call(nullptr);
    EXPECT_TRUE(result.isDead);
    EXPECT_TRUE(result.wasSent);
}

TEST_F(ACallOverTheDriver, FailsWhenTheDriverRefusesIt) {
    for (const uint32_t refusal : {BR_FAILED_REPLY, BR_FROZEN_REPLY}) {
        mDriver.willRead(bytesOf(kNoop, refusal));
        const DriverThread::Result result = call(nullptr);
        EXPECT_EQ(android::FAILED_TRANSACTION, result.status);
        EXPECT_FALSE(result.isDead);
    }
}

TEST_F(ACallOverTheDriver, ThatFailsIsLoggedAsNotSentOrAsWithoutReply) {
    const auto isLogged = [this](const std::string& line) {
        testing::internal::CaptureStderr();
        (void)call(nullptr);
        return testing::internal::GetCapturedStderr().find(line) != std::string::npos;
    };
    // The log has room for a few lines a second.
    const auto comes = [&](const fake_driver::Bytes& answer, const std::string& line) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        do {
            mDriver.willRead(answer);
            if (isLogged(line)) {
                return true;
            }
        } while (std::chrono::steady_clock::now() < deadline);
        return false;
    };
    EXPECT_TRUE(comes(bytesOf(kNoop, uint32_t{BR_FAILED_REPLY}),
                      "call 9 with 4 bytes is not sent: the receiver has no room for it, or the "
                      "driver refuses it\n"));
    EXPECT_TRUE(comes(bytesOf(kNoop, kComplete, uint32_t{BR_FAILED_REPLY}),
                      "call 9 with 4 bytes has no reply: this process has no room for it, or the "
                      "driver refuses it\n"));
}

TEST_F(ACallOverTheDriver, WaitsForNoReplyWhenItIsOneWay) {
    constexpr uint32_t kPendingFrozen = 0x7214;  // _IO('r', 20)
    for (const uint32_t taken :
         {uint32_t{BR_TRANSACTION_COMPLETE}, uint32_t{BR_ONEWAY_SPAM_SUSPECT}, kPendingFrozen}) {
        mDriver.willRead(bytesOf(kNoop, taken));
        EXPECT_EQ(android::OK, call(nullptr, IBinder::FLAG_ONEWAY).status);
    }
    EXPECT_TRUE(mDriver.reads.empty());
    EXPECT_EQ(uint32_t{TF_ONE_WAY},
              mDriver.last(BC_TRANSACTION).as<binder_transaction_data>().flags);
}

TEST_F(ACallOverTheDriver, SurvivesASignal) {
    mDriver.interruptions = 2;
    willReply(delivered({1}));
    Parcel reply;
    EXPECT_EQ(android::OK, call(&reply).status);
    EXPECT_EQ(1, reply.readInt32());
    EXPECT_EQ(1U, mDriver.count(BC_TRANSACTION));
}

// The thread went on to wait for what had ended, and never again carried out a release.
TEST_F(ACallOverTheDriver, ThatEndsWithAnExceptionIsWaitedForNoLonger) {
    mDriver.reads.emplace_back([]() -> fake_driver::Bytes { throw std::bad_alloc(); });
    EXPECT_THROW(call(nullptr), std::bad_alloc);
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    const binder_ptr_cookie words = {toWord(node->getWeakRefs()), toWord(node.get())};
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, words, uint32_t{BR_ACQUIRE}, words));
    mDriver.reads.emplace_back([&node, words] {
        node.clear();
        return bytesOf(kNoop, kComplete, uint32_t{BR_RELEASE}, words, uint32_t{BR_DECREFS}, words);
    });
    EXPECT_EQ(android::OK, call(nullptr, IBinder::FLAG_ONEWAY).status);
    EXPECT_TRUE(watched.promote() == nullptr);
}

TEST_F(ACallOverTheDriver, ServesACallThatComesBackWhileItWaits) {
    const sp<Scripted> node = new Scripted(
        [](const Parcel& data, Parcel* reply) { return reply->writeInt32(data.readInt32() + 1); });
    mDriver.willRead(bytesOf(kNoop, kComplete));
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({10}))));
    int32_t answered = 0;
    mDriver.reads.emplace_back([this, &answered] {
        const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
        answered = *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer);
        return bytesOf(kNoop, kComplete);
    });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_REPLY}, delivered({5})));
    Parcel reply;
    EXPECT_EQ(android::OK, call(&reply).status);
    EXPECT_EQ(5, reply.readInt32());
    EXPECT_EQ(11, answered);
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_FREE_BUFFER, BC_REPLY}), mDriver.numbers());
}

TEST_F(ACallOverTheDriver, FailsWithTheProcessWhoseNestedCallItServed) {
    const sp<Scripted> node = new Scripted([](const Parcel&, Parcel*) { return android::OK; });
    mDriver.willRead(
        bytesOf(kNoop, kComplete, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_DEAD_REPLY}));
    EXPECT_EQ(android::DEAD_OBJECT, call(nullptr).status);
    EXPECT_TRUE(mDriver.reads.empty());
}

// A binder that is neither a node nor a proxy.
class Neither : public IBinder {
public:
    const android::String16& getInterfaceDescriptor() const override {
        static const android::String16 none;
        return none;
    }
    bool isBinderAlive() const override { return true; }
    status_t pingBinder() override { return android::OK; }
    status_t transact(uint32_t, const Parcel&, Parcel*, uint32_t) override { return android::OK; }
    status_t linkToDeath(const sp<DeathRecipient>&, void*, uint32_t) override {
        return android::INVALID_OPERATION;
    }
    status_t unlinkToDeath(const android::wp<DeathRecipient>&, void*, uint32_t,
                           android::wp<DeathRecipient>*) override {
        return android::INVALID_OPERATION;
    }
};

// The process ended.
TEST_F(ACallOverTheDriver, RefusesABinderThatIsNeitherANodeNorAProxy) {
    Parcel data;
    data.writeStrongBinder(new Neither());
    EXPECT_EQ(android::BAD_TYPE, mThread.transact(kHandle, 9, data, nullptr, 0).status);
    EXPECT_EQ(Numbers{}, mDriver.numbers());
}

TEST_F(ACallOverTheDriver, AnswersBadTypeForSuchABinderInAReply) {
    const sp<Scripted> node = new Scripted(
        [](const Parcel&, Parcel* reply) { return reply->writeStrongBinder(new Neither()); });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_TRANSACTION}, callTo(*node, delivered({}))));
    mDriver.reads.emplace_back([this] {
        const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
        EXPECT_EQ(uint32_t{TF_STATUS_CODE}, sent.flags);
        EXPECT_EQ(android::BAD_TYPE,
                  *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer));
        return bytesOf(kNoop, kComplete);
    });
    serve();
    EXPECT_TRUE(mDriver.reads.empty());
}

using AHandle = OverTheDriver;

TEST_F(AHandle, IsAcquiredBeforeTheBufferThatBroughtItIsFreedAndReleasedWithItsProxy) {
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    Parcel reply;
    ASSERT_EQ(android::OK, call(&reply).status);
    sp<IBinder> proxy = reply.readStrongBinder();
    ASSERT_TRUE(proxy != nullptr);
    EXPECT_EQ(3U, android::kernel::handleOf(*proxy->remoteBinder()));
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_INCREFS, BC_ACQUIRE, BC_FREE_BUFFER}), mDriver.numbers());
    mDriver.written.clear();
    reply.freeData();
    proxy.clear();
    EXPECT_EQ((Numbers{BC_RELEASE, BC_DECREFS}), mDriver.numbers());
    EXPECT_EQ(3U, mDriver.last(BC_RELEASE).as<uint32_t>());
}

TEST_F(AHandle, ThatComesTwiceIsTheSameProxyAndAcquiredOnce) {
    Parcel first;
    Parcel second;
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    ASSERT_EQ(android::OK, call(&first).status);
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    ASSERT_EQ(android::OK, call(&second).status);
    EXPECT_TRUE(first.readStrongBinder() == second.readStrongBinder());
    EXPECT_EQ(1U, mDriver.count(BC_ACQUIRE));
}

TEST_F(AHandle, IsSentAsAFlatObjectWithItsPlace) {
    Parcel data;
    data.writeInt32(1);
    data.writeStrongBinder(mThread.proxyOf(3));
    data.writeStrongBinder(nullptr);
    mDriver.reads.emplace_back([this, &data] {
        const auto sent = mDriver.last(BC_TRANSACTION).as<binder_transaction_data>();
        const auto* image = android::kernel::toPointer<const uint8_t>(sent.data.ptr.buffer);
        EXPECT_EQ(data.dataSize(), sent.data_size);
        EXPECT_EQ(sizeof(binder_size_t), sent.offsets_size) << "a null binder is not translated";
        EXPECT_EQ(4U, *android::kernel::toPointer<const binder_size_t>(sent.data.ptr.offsets));
        flat_binder_object object = {};
        std::memcpy(&object, image + 4, sizeof(object));
        EXPECT_EQ(uint32_t{BINDER_TYPE_HANDLE}, object.hdr.type);
        EXPECT_EQ(3U, object.handle);
        std::memcpy(&object, image + 28, sizeof(object));
        EXPECT_EQ(uint32_t{BINDER_TYPE_BINDER}, object.hdr.type);
        EXPECT_EQ(0U, object.binder);
        EXPECT_EQ(0U, object.cookie);
        return bytesOf(kNoop, kComplete);
    });
    EXPECT_EQ(android::OK,
              mThread.transact(kHandle, 1, data, nullptr, IBinder::FLAG_ONEWAY).status);
}

using ANodeOfThisProcess = OverTheDriver;

binder_ptr_cookie wordsOf(BBinder& node) {
    return {toWord(node.getWeakRefs()), toWord(&node)};
}

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
    const binder_ptr_cookie words = wordsOf(*node);
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, words, uint32_t{BR_ACQUIRE}, words));
    mDriver.reads.emplace_back([&node, words] {
        node.clear();
        return bytesOf(kNoop, kComplete, uint32_t{BR_RELEASE}, words, uint32_t{BR_DECREFS}, words);
    });
    mDriver.reads.emplace_back([this, &watched] {
        EXPECT_TRUE(watched.promote() != nullptr);
        return bytesOf(kNoop, uint32_t{BR_REPLY}, delivered({}));
    });
    EXPECT_EQ(android::OK, call(nullptr).status);
    EXPECT_TRUE(watched.promote() == nullptr);
}

TEST_F(ANodeOfThisProcess, IsLetGoBeforeTheCallThatWasReadBehindIt) {
    sp<BBinder> node = new BBinder();
    const android::wp<BBinder> watched(node);
    const binder_ptr_cookie words = wordsOf(*node);
    bool wasThere = true;
    const sp<Scripted> called = new Scripted([&](const Parcel&, Parcel*) {
        wasThere = watched.promote() != nullptr;
        return android::OK;
    });
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, words, uint32_t{BR_ACQUIRE}, words));
    mDriver.reads.emplace_back([&] {
        node.clear();
        return bytesOf(kNoop, uint32_t{BR_RELEASE}, words, uint32_t{BR_DECREFS}, words,
                       uint32_t{BR_TRANSACTION}, callTo(*called, delivered({})));
    });
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
    mDriver.reads.emplace_back([this] {
        const auto sent = mDriver.last(BC_REPLY).as<binder_transaction_data>();
        EXPECT_EQ(0U, sent.flags);
        EXPECT_EQ(8, *android::kernel::toPointer<const int32_t>(sent.data.ptr.buffer));
        return bytesOf(kNoop, kComplete);
    });
    serve();
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER, BC_FREE_BUFFER, BC_REPLY}), mDriver.numbers());
    EXPECT_TRUE(watched.promote() == nullptr);
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

using ALooper = OverTheDriver;

TEST_F(ALooper, StartsAnotherWhenTheDriverAsksForOne) {
    mDriver.willRead(bytesOf(uint32_t{BR_SPAWN_LOOPER}));
    serve();
    EXPECT_EQ(1, mSpawned);
    EXPECT_EQ((Numbers{BC_ENTER_LOOPER}), mDriver.numbers());
}

}  // namespace
