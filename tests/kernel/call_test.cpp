// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include <binder/Binder.h>
#include <gtest/gtest.h>

#include <chrono>
#include <new>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BBinder;
using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using android::kernel::DriverThread;
using fake_driver::bytesOf;
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
        mDriver.willRead(bytesOf(kNoop));
        const DriverThread::Result result = call(nullptr);
        EXPECT_EQ(android::FAILED_TRANSACTION, result.status);
        EXPECT_FALSE(result.isDead);
        EXPECT_EQ(1U, mDriver.reads.size()) << "there is nothing more to wait for";
        mDriver.reads.clear();
    }
}

TEST_F(ACallOverTheDriver, EndsWithTheErrorThatTheDriverGives) {
    mDriver.willRead(bytesOf(kNoop, uint32_t{BR_ERROR}, int32_t{-22}));
    EXPECT_EQ(-22, call(nullptr).status);
}

TEST_F(ACallOverTheDriver, GivesAnUnknownErrorForAStatusThatIsNotThere) {
    willReply(delivered({}, TF_STATUS_CODE));
    EXPECT_EQ(android::UNKNOWN_ERROR, call(nullptr).status);
}

// Its data has gone by then.
TEST_F(ACallOverTheDriver, ThatTheDriverDoesNotTakeIsNotWrittenLater) {
    mDriver.commandsAWrite = 0;
    EXPECT_EQ(android::FAILED_TRANSACTION, call(nullptr).status);
    mDriver.commandsAWrite.reset();
    mThread.flush();
    EXPECT_EQ(Numbers{}, mDriver.numbers());
}

TEST_F(ACallOverTheDriver, SetsNoneOfTheRuntimesOwnFlags) {
    willReply(delivered({}));
    ASSERT_EQ(android::OK, call(nullptr, TF_STATUS_CODE | TF_ACCEPT_FDS | TF_ROOT_OBJECT).status);
    EXPECT_EQ(0U, mDriver.last(BC_TRANSACTION).as<binder_transaction_data>().flags);
}

TEST_F(ACallOverTheDriver, GivesNoBinderForAnObjectOfAnotherKind) {
    flat_binder_object object = android::kernel::flatHandle(3);
    for (const uint32_t type : {BINDER_TYPE_WEAK_HANDLE, BINDER_TYPE_FD}) {
        object.hdr.type = type;
        willReply(deliveredBinder(object));
        Parcel reply;
        ASSERT_EQ(android::OK, call(&reply).status);
        EXPECT_TRUE(reply.readStrongBinder() == nullptr);
    }
    EXPECT_EQ(0U, mDriver.count(BC_ACQUIRE));
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

TEST_F(ACallOverTheDriver, IsSentOnceWhenTheDriverTakesOnlyWhatStandsBeforeIt) {
    willReply(delivered({1}));
    ASSERT_EQ(android::OK, call(nullptr).status);  // its buffer is freed with the next call
    mDriver.written.clear();
    mDriver.commandsAWrite = 1;
    mDriver.reads.emplace_back([this] {
        EXPECT_EQ((Numbers{BC_FREE_BUFFER}), mDriver.numbers());
        return bytesOf(kNoop);
    });
    willReply(delivered({2}));
    Parcel reply;
    EXPECT_EQ(android::OK, call(&reply).status);
    EXPECT_EQ(2, reply.readInt32());
    EXPECT_EQ((Numbers{BC_FREE_BUFFER, BC_TRANSACTION}), mDriver.numbers());
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
    willHoldAndLetGo(node);
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

}  // namespace
