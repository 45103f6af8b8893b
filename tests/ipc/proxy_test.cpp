// SPDX-License-Identifier: Apache-2.0
#include "ipc/BpTextToSpeechFestival.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "ipc/Callback.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"

namespace {

using android::Parcel;
using android::sp;
using support::bytesOf;
using support::fromHex;
using support::hex;
using support::RecordingRemote;
using support::Transaction;

VOXTRELAPI_GCONF keyOf(int32_t key) {
    return static_cast<VOXTRELAPI_GCONF>(key);
}

class AProxy : public testing::Test {
protected:
    std::string lastRequest() const { return hex(remote->sent().back().request); }

    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
};

TEST_F(AProxy, SendsTheWordBehindThePointerForEveryIntegerKey) {
    for (const int32_t key : {1, 2, 6, 10, 12}) {
        uint32_t value = 0x89abcdefU;
        remote->answerWith(fromHex("f8 ff ff ff"));
        EXPECT_EQ(-8, proxy->setGlobalConfig(1, keyOf(key), &value)) << key;
        Parcel expected;
        expected.writeInt32(1);
        expected.writeInt32(key);
        EXPECT_EQ(hex(bytesOf(expected)) + "ef cd ab 89\n", lastRequest()) << key;
    }
}

TEST_F(AProxy, SendsTheFloatBehindThePointerForEveryFloatKey) {
    float value = -2.0F;
    EXPECT_EQ(0, proxy->setGlobalConfig(1, GCONF_PITCH, &value));
    EXPECT_EQ("01 00 00 00\n04 00 00 00\n00 00 00 c0\n", lastRequest());
    EXPECT_EQ(0, proxy->setGlobalConfig(1, GCONF_VOLUME, &value));
    EXPECT_EQ("01 00 00 00\n08 00 00 00\n00 00 00 c0\n", lastRequest());
}

TEST_F(AProxy, SendsALanguageOfAnyLengthWithoutItsNul) {
    char empty[] = "";
    proxy->setGlobalConfig(1, GCONF_LANGUAGE, empty);
    EXPECT_EQ("01 00 00 00\n0e 00 00 00\n00 00 00 00\n", lastRequest());
    char four[] = "abcd";
    proxy->setGlobalConfig(1, GCONF_LANGUAGE, four);
    EXPECT_EQ("01 00 00 00\n0e 00 00 00\n04 00 00 00\n61 62 63 64\n", lastRequest());
}

constexpr int32_t kValuelessKeys[] = {0,
                                      3,
                                      5,
                                      7,
                                      9,
                                      11,
                                      13,
                                      15,
                                      16,
                                      1000,
                                      -1,
                                      std::numeric_limits<int32_t>::max(),
                                      std::numeric_limits<int32_t>::min()};

TEST_F(AProxy, RefusesToSetAKeyWithoutAValueAndSendsNothing) {
    for (const int32_t key : kValuelessKeys) {
        uint32_t value = 1;
        EXPECT_EQ(-3, proxy->setGlobalConfig(1, keyOf(key), &value)) << key;
    }
    EXPECT_TRUE(remote->sent().empty());
}

TEST_F(AProxy, AsksForAKeyWithoutAValueAndReadsOnlyTheStatus) {
    remote->answerWith(fromHex("fd ff ff ff 2a 00 00 00"));
    for (const int32_t key : kValuelessKeys) {
        uint32_t value = 77;
        EXPECT_EQ(-3, proxy->globalConfig(1, keyOf(key), &value)) << key;
        EXPECT_EQ(77U, value) << key;
    }
    EXPECT_EQ(std::size(kValuelessKeys), remote->sent().size());
}

TEST_F(AProxy, ReadsAWordForEveryIntegerKey) {
    remote->answerWith(fromHex("ef cd ab 89 f8 ff ff ff"));
    for (const int32_t key : {1, 2, 6, 10, 12}) {
        uint32_t value = 0;
        EXPECT_EQ(-8, proxy->globalConfig(1, keyOf(key), &value)) << key;
        EXPECT_EQ(0x89abcdefU, value) << key;
    }
}

TEST_F(AProxy, ReadsAFloatForEveryFloatKey) {
    remote->answerWith(fromHex("00 00 00 c0 f8 ff ff ff"));
    for (const int32_t key : {4, 8}) {
        float value = 0.0F;
        EXPECT_EQ(-8, proxy->globalConfig(1, keyOf(key), &value)) << key;
        EXPECT_EQ(-2.0F, value) << key;
    }
}

TEST_F(AProxy, SendsSwitchingOffAsZero) {
    proxy->setEnable(1, false);
    EXPECT_EQ("01 00 00 00\n00 00 00 00\n", lastRequest());
    proxy->setEnable2(1, GCONF_SPEED_ENABLE, false);
    EXPECT_EQ("01 00 00 00\n03 00 00 00\n00 00 00 00\n", lastRequest());
}

TEST_F(AProxy, SendsTheTextAsItsBytesAndANul) {
    proxy->say(1, 2, "", 0, 0.0F, 0, 0, 0, 0.0F, LANG_NA);
    EXPECT_EQ("01 00 00 00\n02 00 00 00\n00 00 00 00\n", lastRequest().substr(0, 36));
    EXPECT_EQ(4U * 10, remote->sent().back().request.size());
    proxy->say(1, 2, "\xea\xb0\x80", 0, 0.0F, 0, 0, 0, 0.0F, LANG_NA);
    EXPECT_EQ("ea b0 80 00\n", lastRequest().substr(24, 12));
    EXPECT_EQ(4U * 10, remote->sent().back().request.size());
}

TEST_F(AProxy, CutsTheTextAtItsFirstNul) {
    proxy->say(1, 2, std::string("ab\0cd", 5), 0, 0.0F, 0, 0, 0, 0.0F, LANG_NA);
    EXPECT_EQ("61 62 00 00\n", lastRequest().substr(24, 12));
    EXPECT_EQ(4U * 10, remote->sent().back().request.size());
}

TEST_F(AProxy, SendsEveryFieldOfSayUnderItsOwnName) {
    proxy->say(1, 2, "", 65535, 65535.0F, 65535, 65535, 65535, 65535.0F, LANG_NA);
    EXPECT_EQ(
        "01 00 00 00\n02 00 00 00\n00 00 00 00\nff ff 00 00\n00 ff 7f 47\nff ff 00 00\n"
        "ff ff 00 00\nff ff 00 00\n00 ff 7f 47\n05 00 00 00\n",
        lastRequest());
}

TEST_F(AProxy, TakesAnyNonZeroFlagAsTrue) {
    remote->answerWith(fromHex("00 01 00 00"));
    EXPECT_TRUE(proxy->enabled());
    EXPECT_TRUE(proxy->locked());
    bool flag = false;
    proxy->enabled2(1, GCONF_SPEED_ENABLE, &flag);
    EXPECT_TRUE(flag);
}

TEST_F(AProxy, StoresAFlagInOneByte) {
    remote->answerWith(fromHex("ff ff ff ff 00 00 00 00"));
    unsigned char bytes[4] = {0x55, 0x55, 0x55, 0x55};
    EXPECT_EQ(0, proxy->enabled2(1, GCONF_SPEED_ENABLE, bytes));
    EXPECT_EQ("01 55 55 55\n", hex(support::Bytes(bytes, bytes + 4)));
}

void ignore(unsigned, unsigned, unsigned) {}

TEST_F(AProxy, SendsTheBinderOfACallback) {
    const sp<TTS::ICallback> callback = new TTS::Callback(ignore);
    sp<android::IBinder> received;
    remote->answerBy([&received](const Transaction&, const Parcel& request, Parcel&) {
        EXPECT_EQ(1000, request.readInt32());
        received = request.readStrongBinder();
        EXPECT_EQ(0U, request.dataAvail());
        return android::NO_ERROR;
    });
    EXPECT_EQ(0, proxy->registerCallback(1000, callback));
    EXPECT_EQ(android::IInterface::asBinder(callback), received);
}

TEST_F(AProxy, SendsANullBinderForNoCallback) {
    sp<android::IBinder> received = remote;
    remote->answerBy([&received](const Transaction&, const Parcel& request, Parcel&) {
        (void)request.readInt32();
        EXPECT_NE(0U, request.dataAvail());
        received = request.readStrongBinder();
        return android::NO_ERROR;
    });
    EXPECT_EQ(0, proxy->registerCallback(1000, nullptr));
    EXPECT_EQ(nullptr, received);
}

TEST_F(AProxy, HoldsItsRemoteUntilItGoes) {
    sp<RecordingRemote> held = new RecordingRemote;
    const android::wp<android::IBinder> seen = sp<android::IBinder>(held);
    sp<TTS::ITextToSpeechFestival> holder = new TTS::BpTextToSpeechFestival(held);
    held.clear();
    EXPECT_NE(nullptr, seen.promote());
    holder.clear();
    EXPECT_EQ(nullptr, seen.promote());
}

TEST_F(AProxy, IsTheBinderOfItsRemote) {
    EXPECT_EQ(sp<android::IBinder>(remote),
              android::IInterface::asBinder(sp<TTS::ITextToSpeechFestival>(proxy)));
}

TEST_F(AProxy, ServesSeveralThreadsAtOnce) {
    remote->answerBy([](const Transaction&, const Parcel& request, Parcel& reply) {
        reply.writeInt32(request.readInt32());
        return android::NO_ERROR;
    });
    std::vector<std::thread> threads;
    for (int32_t pid = 1; pid <= 4; ++pid) {
        threads.emplace_back([this, pid] {
            for (int i = 0; i < 200; ++i) {
                EXPECT_EQ(pid, proxy->factoryReset(static_cast<unsigned>(pid)));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(800U, remote->sent().size());
}

}  // namespace
