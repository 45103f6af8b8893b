// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ipc/BpCallback.h"
#include "ipc/Callback.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

namespace {

using android::Parcel;
using android::sp;
using android::status_t;
using support::bytesOf;
using support::fromHex;
using support::hex;
using support::RecordingRemote;
using support::RecordingService;
using Calls = std::vector<std::string>;

class AStub : public testing::Test {
protected:
    /// Sends the request in `hexText`; gives the reply's image.
    std::string transact(uint32_t code, const std::string& hexText) {
        Parcel reply;
        support::fill(request, fromHex(hexText));
        status = service->onTransact(code, request, &reply, 0);
        return hex(bytesOf(reply));
    }

    const sp<RecordingService> service = new RecordingService;
    Parcel request;
    status_t status = -1;
};

TEST_F(AStub, LeavesUnassignedAndUnservedCodesToTheBinderBase) {
    for (const uint32_t code : {0U, 4U, 6U, 7U, 8U, 9U, 15U, 16U, 17U, 18U, 29U, 1000U}) {
        EXPECT_EQ("", transact(code, "01 00 00 00 01 00 00 00")) << code;
        EXPECT_EQ(android::UNKNOWN_TRANSACTION, status) << code;
    }
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(AStub, AnswersTheInterfaceQueryOfTheBinderBase) {
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR,
              service->onTransact(android::IBinder::INTERFACE_TRANSACTION, request, &reply, 0));
    reply.setDataPosition(0);
    EXPECT_EQ(android::String16("tavix.ITextToSpeechFestival"), reply.readString16());
}

TEST_F(AStub, IsReachedThroughTheBinderToo) {
    service->status = 5;
    request.writeInt32(1000);
    Parcel reply;
    const sp<android::IBinder> binder =
        android::IInterface::asBinder(sp<TTS::ITextToSpeechFestival>(service));
    EXPECT_EQ(android::NO_ERROR, binder->transact(25, request, &reply, 0));
    EXPECT_EQ(5, reply.readInt32());
    EXPECT_EQ(Calls{"lock(1000)"}, service->calls());
}

TEST_F(AStub, PutsANegativeResultIntoTheReplyAndReturnsSuccess) {
    service->status = -9;
    EXPECT_EQ("f7 ff ff ff\n", transact(11, "01 00 00 00 02 00 00 00"));
    EXPECT_EQ(android::NO_ERROR, status);
}

TEST_F(AStub, ReadsEveryCodeFiveRequestAsSettingAFlag) {
    transact(5, "e8 03 00 00 01 00 00 00");
    request.freeData();
    transact(5, "e8 03 00 00 00 00 00 00");
    request.freeData();
    transact(5, "e8 03 00 00 0d 00 00 00 00 01 00 00");
    EXPECT_EQ(
        (Calls{"setEnable2(1000, 1, 0)", "setEnable2(1000, 0, 0)", "setEnable2(1000, 13, 1)"}),
        service->calls());
}

TEST_F(AStub, ReadsMissingValuesAsZero) {
    transact(2, "e8 03 00 00");
    transact(24, "");
    EXPECT_EQ((Calls{"silence(1000, 0, 0, 0)", "deregisterCallback(1000)"}), service->calls());
}

constexpr int32_t kValuelessKeys[] = {0,
                                      3,
                                      5,
                                      7,
                                      9,
                                      11,
                                      13,
                                      15,
                                      1000,
                                      -1,
                                      std::numeric_limits<int32_t>::max(),
                                      std::numeric_limits<int32_t>::min()};

TEST_F(AStub, RefusesKeysWithoutAValueBeforeReadingOne) {
    for (const int32_t key : kValuelessKeys) {
        Parcel set;
        for (const int32_t value : {1000, key, 99}) {
            set.writeInt32(value);
        }
        set.setDataPosition(0);
        Parcel reply;
        EXPECT_EQ(android::NO_ERROR, service->onTransact(12, set, &reply, 0)) << key;
        EXPECT_EQ("fd ff ff ff\n", hex(bytesOf(reply))) << key;
        EXPECT_EQ(8U, set.dataPosition()) << key;
    }
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(AStub, RefusesToReadKeysWithoutAValue) {
    for (const int32_t key : kValuelessKeys) {
        Parcel get;
        get.writeInt32(1000);
        get.writeInt32(key);
        get.setDataPosition(0);
        Parcel reply;
        EXPECT_EQ(android::NO_ERROR, service->onTransact(21, get, &reply, 0)) << key;
        EXPECT_EQ("fd ff ff ff\n", hex(bytesOf(reply))) << key;
    }
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(AStub, CarriesEveryIntegerKeyBothWays) {
    service->number = 0x89abcdefU;
    service->status = -8;
    for (const int32_t key : {1, 2, 6, 10, 12}) {
        Parcel set;
        for (const int32_t value : {1000, key, -2}) {
            set.writeInt32(value);
        }
        set.setDataPosition(0);
        Parcel answer;
        service->onTransact(12, set, &answer, 0);
        EXPECT_EQ(support::callLine("setGlobalConfig", 1000, key, 4294967294U),
                  service->calls().back());
        set.setDataPosition(0);
        Parcel reply;
        service->onTransact(21, set, &reply, 0);
        EXPECT_EQ("ef cd ab 89\nf8 ff ff ff\n", hex(bytesOf(reply))) << key;
    }
}

TEST_F(AStub, CarriesEveryFloatKeyBothWays) {
    service->real = -2.0F;
    service->status = -8;
    for (const char* key : {"04", "08"}) {
        const std::string start = std::string("01 00 00 00 ") + key + " 00 00 00 ";
        request.freeData();
        EXPECT_EQ("f8 ff ff ff\n", transact(12, start + "00 00 c0 3f"));
        EXPECT_EQ(", 1.5)", service->calls().back().substr(20)) << key;
        request.setDataPosition(0);
        Parcel reply;
        service->onTransact(21, request, &reply, 0);
        EXPECT_EQ("00 00 00 c0\nf8 ff ff ff\n", hex(bytesOf(reply))) << key;
    }
}

TEST_F(AStub, TerminatesALanguageAtItsLength) {
    transact(12, "01 00 00 00 0e 00 00 00 02 00 00 00 65 6e 5f 55");
    EXPECT_EQ(R"(setGlobalConfig(1, 14, "en"))", service->calls().back());
}

/// Stores nothing when asked for a value.
class Silent : public RecordingService {
public:
    int globalConfig(unsigned, VOXTRELAPI_GCONF, void*) override { return -4; }
    int enabled2(unsigned, VOXTRELAPI_GCONF, void*) override { return -4; }
};

TEST(AServiceThatStoresNothing, SendsAZeroedValue) {
    const sp<Silent> service = new Silent;
    for (const char* request : {"01 00 00 00 02 00 00 00", "01 00 00 00 04 00 00 00"}) {
        Parcel get;
        support::fill(get, fromHex(request));
        Parcel reply;
        service->onTransact(21, get, &reply, 0);
        EXPECT_EQ("00 00 00 00\nfc ff ff ff\n", hex(bytesOf(reply)));
    }
    Parcel get;
    Parcel reply;
    service->onTransact(14, get, &reply, 0);
    EXPECT_EQ("00 00 00 00\nfc ff ff ff\n", hex(bytesOf(reply)));
}

TEST_F(AStub, AnswersASwitchedOffFlagAsZero) {
    service->status = 3;
    EXPECT_EQ("00 00 00 00\n03 00 00 00\n", transact(14, "01 00 00 00 03 00 00 00"));
    EXPECT_EQ("00 00 00 00\n", transact(13, ""));
    EXPECT_EQ("00 00 00 00\n", transact(27, ""));
}

TEST_F(AStub, ThrowsOnARequestWithoutAText) {
    Parcel reply;
    request.writeInt32(1000);
    request.writeInt32(7);
    request.setDataPosition(0);
    try {
        service->onTransact(1, request, &reply, 1);
        ADD_FAILURE() << "nothing is thrown";
    } catch (const std::logic_error& error) {
        // Its own: a string made of a null pointer ends the process with some standard libraries.
        EXPECT_STREQ("say: the request holds no text", error.what());
    }
    EXPECT_TRUE(service->calls().empty());
    EXPECT_EQ(0U, reply.dataSize());
}

TEST_F(AStub, TakesAnEmptyText) {
    transact(1, "01 00 00 00 02 00 00 00 00 00 00 00");
    EXPECT_EQ(R"(say(1, 2, "", 0, 0, 0, 0, 0, 0, 0))", service->calls().back());
}

TEST_F(AStub, ServesWithoutAPlaceForTheReply) {
    support::fill(request, fromHex("e8 03 00 00"));
    EXPECT_EQ(android::NO_ERROR, service->onTransact(25, request, nullptr, 1));
    EXPECT_EQ(android::NO_ERROR, service->onTransact(28, request, nullptr, 1));
    EXPECT_EQ((Calls{"lock(1000)", "getCapabilities()"}), service->calls());
}

void ignore(unsigned, unsigned, unsigned) {}

TEST_F(AStub, HandsOverALocalCallbackAsItself) {
    const sp<TTS::ICallback> callback = new TTS::Callback(ignore);
    request.writeInt32(1000);
    request.writeStrongBinder(android::IInterface::asBinder(callback));
    request.setDataPosition(0);
    Parcel reply;
    service->onTransact(23, request, &reply, 0);
    EXPECT_EQ(Calls{"registerCallback(1000, a callback)"}, service->calls());
    EXPECT_EQ(callback, service->callback);
}

TEST_F(AStub, HandsOverARemoteCallbackAsAProxyOfIt) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    request.writeInt32(1000);
    request.writeStrongBinder(remote);
    request.setDataPosition(0);
    Parcel reply;
    service->onTransact(23, request, &reply, 0);
    ASSERT_NE(nullptr, dynamic_cast<TTS::BpCallback*>(service->callback.get()));
    service->callback->notify(1, 2, 3);
    EXPECT_EQ(1U, remote->sent().size());
}

TEST_F(AStub, HandsOverANullBinderAsNoCallback) {
    request.writeInt32(1000);
    request.writeStrongBinder(nullptr);
    request.setDataPosition(0);
    service->callback = new TTS::Callback(ignore);
    Parcel reply;
    service->onTransact(23, request, &reply, 0);
    EXPECT_EQ(Calls{"registerCallback(1000, null)"}, service->calls());
    EXPECT_EQ(nullptr, service->callback);
}

TEST_F(AStub, KeepsNoReferenceToACallback) {
    sp<TTS::ICallback> callback = new TTS::Callback(ignore);
    const android::wp<TTS::ICallback> seen = callback;
    {
        Parcel own;
        own.writeInt32(1000);
        own.writeStrongBinder(android::IInterface::asBinder(callback));
        own.setDataPosition(0);
        Parcel reply;
        service->onTransact(23, own, &reply, 0);
    }
    callback.clear();
    EXPECT_NE(nullptr, seen.promote());  // the implementation stored it
    service->callback.clear();
    EXPECT_EQ(nullptr, seen.promote());
}

TEST_F(AStub, ServesSeveralThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int round = 0; round < 100; ++round) {
                Parcel own;
                own.writeInt32(1000);
                own.setDataPosition(0);
                Parcel reply;
                service->onTransact(22, own, &reply, 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(Calls(400, "factoryReset(1000)"), service->calls());
}

}  // namespace
