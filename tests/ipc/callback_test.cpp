// SPDX-License-Identifier: Apache-2.0
#include "ipc/Callback.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "ipc/BpCallback.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"

namespace {

using android::IBinder;
using android::Parcel;
using android::sp;
using android::String16;
using support::bytesOf;
using support::fromHex;
using support::hex;
using support::RecordingRemote;
using TTS::ICallback;
using Event = std::array<unsigned, 3>;

std::vector<Event> events;

void keep(unsigned a, unsigned b, unsigned c) {
    events.push_back({a, b, c});
}

/// Answers `notify` with what the test has set, to show the result on the wire.
class Answering : public TTS::BnCallback {
public:
    explicit Answering(bool result) : mResult(result) {}
    bool notify(unsigned, unsigned, unsigned) override { return mResult; }

private:
    const bool mResult;
};

class ACallback : public testing::Test {
protected:
    ACallback() { events.clear(); }

    const sp<TTS::Callback> callback = new TTS::Callback(keep);
    const sp<IBinder> binder = android::IInterface::asBinder(sp<ICallback>(callback));
    Parcel request;
    Parcel reply;
};

TEST_F(ACallback, CallsTheFunctionOnceAndReturnsTrue) {
    EXPECT_TRUE(callback->notify(7, 0, 0xffffffffU));
    EXPECT_EQ((std::vector<Event>{{7, 0, 0xffffffffU}}), events);
}

TEST_F(ACallback, DeliversATransactionAndAnswersOne) {
    support::fill(request, fromHex("07 00 00 00 08 00 00 00 ff ff ff ff"));
    EXPECT_EQ(android::NO_ERROR, callback->onTransact(1, request, &reply, 1));
    EXPECT_EQ((std::vector<Event>{{7, 8, 0xffffffffU}}), events);
    EXPECT_EQ("01 00 00 00\n", hex(bytesOf(reply)));
}

TEST_F(ACallback, DeliversATransactionThroughItsBinder) {
    support::fill(request, fromHex("07 00 00 00 08 00 00 00 09 00 00 00"));
    EXPECT_EQ(android::NO_ERROR, binder->transact(1, request, &reply, 0));
    EXPECT_EQ((std::vector<Event>{{7, 8, 9}}), events);
    EXPECT_EQ(1, reply.readInt32());
}

TEST_F(ACallback, IsReachedThroughProxyParcelAndStub) {
    const sp<TTS::BpCallback> proxy = new TTS::BpCallback(binder);
    EXPECT_TRUE(proxy->notify(7, 0x80000000U, 0xffffffffU));
    EXPECT_EQ((std::vector<Event>{{7, 0x80000000U, 0xffffffffU}}), events);
}

TEST_F(ACallback, DeliversARequestThatIsTooShort) {
    support::fill(request, fromHex("07 00 00 00 08 00 00 00"));
    EXPECT_EQ(android::NO_ERROR, callback->onTransact(1, request, &reply, 1));
    EXPECT_EQ((std::vector<Event>{{7, 8, 0}}), events);
}

TEST_F(ACallback, DeliversWithoutAPlaceForTheReply) {
    EXPECT_EQ(android::NO_ERROR, callback->onTransact(1, request, nullptr, 1));
    EXPECT_EQ((std::vector<Event>{{0, 0, 0}}), events);
}

TEST_F(ACallback, LeavesEveryOtherCodeToTheBinderBase) {
    for (const uint32_t code : {0U, 2U, 28U}) {
        EXPECT_EQ(android::UNKNOWN_TRANSACTION, callback->onTransact(code, request, &reply, 0));
        EXPECT_EQ(0U, reply.dataSize());
    }
    EXPECT_EQ(android::NO_ERROR,
              callback->onTransact(IBinder::INTERFACE_TRANSACTION, request, &reply, 0));
    reply.setDataPosition(0);
    EXPECT_EQ(String16("tavix.ICallback"), reply.readString16());
    EXPECT_TRUE(events.empty());
}

TEST_F(ACallback, IsFoundBehindItsOwnBinder) {
    EXPECT_EQ(sp<ICallback>(callback), ICallback::asInterface(binder));
    EXPECT_TRUE(ICallback::asInterface(binder)->notify(1, 2, 3));
    EXPECT_EQ((std::vector<Event>{{1, 2, 3}}), events);
}

TEST(ACallbackInterface, IsNamedByItsDescriptor) {
    EXPECT_EQ(String16("tavix.ICallback"), ICallback::descriptor);
    const sp<ICallback> callback = new TTS::Callback(keep);
    EXPECT_EQ(&ICallback::descriptor, &callback->getInterfaceDescriptor());
}

TEST(ACallbackInterface, IsNothingForNoBinder) {
    EXPECT_EQ(nullptr, ICallback::asInterface(nullptr));
}

TEST(ACallbackInterface, IsAProxyForARemoteBinder) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<ICallback> made = ICallback::asInterface(remote);
    EXPECT_NE(nullptr, dynamic_cast<TTS::BpCallback*>(made.get()));
    EXPECT_EQ(sp<IBinder>(remote), android::IInterface::asBinder(made));
}

TEST(ACallbackStub, AnswersFalseAsZero) {
    const sp<TTS::BnCallback> refusing = new Answering(false);
    Parcel request;
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR, refusing->onTransact(1, request, &reply, 1));
    EXPECT_EQ("00 00 00 00\n", hex(bytesOf(reply)));
}

class ACallbackProxy : public testing::Test {
protected:
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpCallback> proxy = new TTS::BpCallback(remote);
};

TEST_F(ACallbackProxy, SendsThreeWordsOneWay) {
    EXPECT_FALSE(proxy->notify(7, 0x01020304U, 0xfffffffeU));
    ASSERT_EQ(1U, remote->sent().size());
    const support::Transaction sent = remote->sent().front();
    EXPECT_EQ(1U, sent.code);
    EXPECT_EQ(1U, sent.flags);
    EXPECT_EQ("07 00 00 00\n04 03 02 01\nfe ff ff ff\n", hex(sent.request));
}

TEST_F(ACallbackProxy, ReturnsWhetherTheReplyIsNonZero) {
    remote->answerWith(fromHex("00 01 00 00"));
    EXPECT_TRUE(proxy->notify(1, 2, 3));
    remote->answerWith(fromHex("00 00 00 00"));
    EXPECT_FALSE(proxy->notify(1, 2, 3));
}

TEST_F(ACallbackProxy, IgnoresThatTheClientIsGone) {
    remote->die();
    EXPECT_FALSE(proxy->notify(1, 2, 3));
}

TEST_F(ACallbackProxy, ReturnsFalseWithoutARemote) {
    const sp<TTS::BpCallback> alone = new TTS::BpCallback(nullptr);
    EXPECT_FALSE(alone->notify(1, 2, 3));
}

std::atomic<unsigned> delivered{0};

TEST(ACallbackOnSeveralThreads, DeliversEveryEvent) {
    const sp<TTS::Callback> callback =
        new TTS::Callback([](unsigned a, unsigned, unsigned) { delivered += a; });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&callback] {
            for (int round = 0; round < 100; ++round) {
                Parcel request;
                request.writeInt32(1);
                request.setDataPosition(0);
                Parcel reply;
                callback->onTransact(1, request, &reply, 1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(400U, delivered.load());
}

}  // namespace
