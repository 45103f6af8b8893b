// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

// What a broken or hostile peer can send. Meant to run under the address and undefined-behaviour
// sanitizers as well: buffers stand on the heap in their exact sizes.

namespace {

using android::Parcel;
using android::sp;
using support::Bytes;
using support::bytesOf;
using support::fromHex;
using support::hex;
using support::RecordingRemote;
using support::RecordingService;
using Calls = std::vector<std::string>;

/// A setGlobalConfig request for the language that claims `length` and holds `held` bytes of text.
Bytes languageRequest(int32_t length, size_t held) {
    Parcel parcel;
    for (const int32_t value : {1, 14, length}) {
        parcel.writeInt32(value);
    }
    const std::string text(held, 'x');
    parcel.write(text.data(), text.size());
    return bytesOf(parcel);
}

class ALanguageRequest : public testing::Test {
protected:
    int32_t statusOf(const Bytes& image) {
        Parcel request;
        support::fill(request, image);
        Parcel reply;
        EXPECT_EQ(android::NO_ERROR, service->onTransact(12, request, &reply, 0));
        EXPECT_EQ(4U, reply.dataSize());
        reply.setDataPosition(0);
        return reply.readInt32();
    }

    const sp<RecordingService> service = new RecordingService;
};

TEST_F(ALanguageRequest, IsTakenUpTo255Bytes) {
    EXPECT_EQ(0, statusOf(languageRequest(255, 255)));
    const std::string text(255, 'x');
    EXPECT_EQ(Calls{"setGlobalConfig(1, 14, " + support::quoted(text) + ")"}, service->calls());
}

TEST_F(ALanguageRequest, IsRefusedWithoutACallBeyond255Bytes) {
    EXPECT_EQ(-3, statusOf(languageRequest(256, 256)));
    EXPECT_EQ(-3, statusOf(languageRequest(100000, 100000)));
    EXPECT_EQ(-3, statusOf(languageRequest(2147483647, 8)));
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(ALanguageRequest, IsRefusedWithoutACallBelowZero) {
    EXPECT_EQ(-3, statusOf(languageRequest(-1, 8)));
    EXPECT_EQ(-3, statusOf(languageRequest(-2147483647 - 1, 8)));
    EXPECT_TRUE(service->calls().empty());
}

TEST_F(ALanguageRequest, IsEmptyWhenItClaimsMoreThanItHolds) {
    EXPECT_EQ(0, statusOf(languageRequest(9, 8)));
    EXPECT_EQ(0, statusOf(languageRequest(255, 0)));
    EXPECT_EQ((Calls{R"(setGlobalConfig(1, 14, ""))", R"(setGlobalConfig(1, 14, ""))"}),
              service->calls());
}

TEST(ATruncatedRequest, ReadsItsMissingValuesAsZeroForEveryCode) {
    for (uint32_t code = 2; code <= 28; ++code) {
        const sp<RecordingService> service = new RecordingService;
        Parcel request;
        Parcel reply;
        (void)service->onTransact(code, request, &reply, 0);
        for (const std::string& call : service->calls()) {
            EXPECT_EQ(std::string::npos, call.find_first_of("123456789", call.find('('))) << call;
        }
    }
}

/// Stores `stored` as the language, without a NUL of its own.
class StoringBytes : public RecordingService {
public:
    explicit StoringBytes(size_t count) : stored(count, 'y') {}

    int globalConfig(unsigned, VOXTRELAPI_GCONF, void* out) override {
        std::memcpy(out, stored.data(), stored.size());
        return 6;
    }

    std::string stored;
};

std::string languageReply(size_t stored) {
    const sp<StoringBytes> service = new StoringBytes(stored);
    Parcel request;
    support::fill(request, fromHex("01 00 00 00 0e 00 00 00"));
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR, service->onTransact(21, request, &reply, 0));
    return hex(bytesOf(reply));
}

TEST(AServiceThatStoresNoLanguage, SendsAnEmptyOneAndNoneOfItsStack) {
    EXPECT_EQ("00 00 00 00\n06 00 00 00\n", languageReply(0));
}

TEST(AServiceThatForgetsTheNul, SendsWhatItStored) {
    EXPECT_EQ("03 00 00 00\n79 79 79 00\n06 00 00 00\n", languageReply(3));
}

TEST(AServiceThatFillsTheWholeBuffer, SendsItsFirst255Bytes) {
    std::string expected = "ff 00 00 00\n";
    for (int i = 0; i < 63; ++i) {
        expected += "79 79 79 79\n";
    }
    EXPECT_EQ(expected + "79 79 79 00\n06 00 00 00\n", languageReply(256));
}

class ALanguageReply : public testing::Test {
protected:
    /// What a caller's 16 zeroed bytes hold after `reply`; the status is in `status`.
    std::string textOf(const Bytes& reply) {
        remote->answerWith(reply);
        const auto out = std::make_unique<char[]>(16);
        status = proxy->globalConfig(1, GCONF_LANGUAGE, out.get());
        return std::string(out.get(), 16);
    }

    /// A reply with `length` bytes of text, whatever `claimed` says, and status 6.
    static Bytes replyOf(int32_t claimed, size_t length) {
        Parcel parcel;
        parcel.writeInt32(claimed);
        const std::string text = std::string("abcdefghijklmnopqrstuvwxyz").substr(0, length) +
                                 std::string(length > 26 ? length - 26 : 0, '+');
        parcel.write(text.data(), text.size());
        parcel.writeInt32(6);
        return bytesOf(parcel);
    }

    static std::string padded(std::string text) {
        text.resize(16);
        return text;
    }

    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    int status = -1;
};

TEST_F(ALanguageReply, IsStoredWholeUpTo16Bytes) {
    for (const int32_t length : {1, 4, 5, 15, 16}) {
        const auto size = static_cast<size_t>(length);
        EXPECT_EQ(padded(std::string("abcdefghijklmnop").substr(0, size)),
                  textOf(replyOf(length, size)));
        EXPECT_EQ(6, status) << length;
    }
}

TEST_F(ALanguageReply, IsCutAt16BytesAndItsStatusStillRead) {
    for (const int32_t length : {17, 18, 19, 20, 21, 63, 79, 80, 81, 255, 256, 100000}) {
        EXPECT_EQ("abcdefghijklmnop", textOf(replyOf(length, static_cast<size_t>(length))));
        EXPECT_EQ(6, status) << length;
    }
}

TEST_F(ALanguageReply, LeavesTheBufferAloneWhenItIsEmptyOrNegative) {
    for (const char* length : {"00 00 00 00", "ff ff ff ff", "00 00 00 80"}) {
        const std::string status6 = " 06 00 00 00";
        const std::string more = " 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61 61";
        EXPECT_EQ(padded(""), textOf(fromHex(length + status6 + more)));
        EXPECT_EQ(6, status) << length;
    }
}

TEST_F(ALanguageReply, StoresNothingOfATextThatItDoesNotHold) {
    EXPECT_EQ(padded(""), textOf(fromHex("10 00 00 00 61 62 63 64")));
    EXPECT_EQ(padded(""), textOf(fromHex("ff ff ff 7f 61 62 63 64")));
    EXPECT_EQ(padded(""), textOf(fromHex("05 00 00 00")));
    EXPECT_EQ(0, status);
}

/// The reply of getCapabilities up to the voices: 21 words, then `count` and `held` bytes.
Bytes capabilitiesReply(int32_t count, size_t held) {
    Parcel parcel;
    for (int i = 0; i < 21; ++i) {
        parcel.writeInt32(1);
    }
    parcel.writeInt32(count);
    const Bytes voices(held, 'v');
    parcel.write(voices.data(), voices.size());
    return bytesOf(parcel);
}

TEST(AVoiceList, EndsWhereTheDataEndsWhateverItsCount) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    const struct {
        int32_t count;
        size_t held;
        size_t expected;
    } rows[] = {
        {2147483647, 0, 0}, {2147483647, 144, 2}, {3, 144, 2},  {2, 140, 1},
        {1, 68, 0},         {1, 144, 1},          {-1, 144, 0}, {2, 144, 2},
    };
    for (const auto& row : rows) {
        TTS::Capabilities caps;
        remote->answerWith(capabilitiesReply(row.count, row.held));
        EXPECT_EQ(0, proxy->getCapabilities(caps));
        EXPECT_EQ(row.expected, caps.voices.size()) << row.count << ' ' << row.held;
        EXPECT_LE(caps.voices.capacity(), 4U) << row.count;
        EXPECT_TRUE(caps.permitted);
    }
}

TEST(ANullPointer, IsRefusedByTheProxyAndSendsNothing) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    for (const VOXTRELAPI_GCONF key :
         {GCONF_SPEED, GCONF_PITCH, GCONF_LANGUAGE, GCONF_SPEED_ENABLE}) {
        EXPECT_EQ(-3, proxy->setGlobalConfig(1, key, nullptr)) << key;
    }
    for (const VOXTRELAPI_GCONF key : {GCONF_SPEED, GCONF_PITCH, GCONF_LANGUAGE}) {
        EXPECT_EQ(-3, proxy->globalConfig(1, key, nullptr)) << key;
    }
    EXPECT_EQ(-3, proxy->enabled2(1, GCONF_SPEED_ENABLE, nullptr));
    EXPECT_TRUE(remote->sent().empty());
    const sp<TTS::BpTextToSpeechFestival> alone = new TTS::BpTextToSpeechFestival(nullptr);
    EXPECT_EQ(-5, alone->setGlobalConfig(1, GCONF_SPEED, nullptr));
    EXPECT_EQ(-5, alone->globalConfig(1, GCONF_SPEED, nullptr));
    EXPECT_EQ(-5, alone->enabled2(1, GCONF_SPEED_ENABLE, nullptr));
}

TEST(ANullPointer, IsNoReasonToKeepARefusedKeyFromTheService) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    remote->answerWith(fromHex("fd ff ff ff"));
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    EXPECT_EQ(-3, proxy->globalConfig(1, GCONF_SPEED_ENABLE, nullptr));
    ASSERT_EQ(1U, remote->sent().size());
    EXPECT_EQ(21U, remote->sent()[0].code);
}

TEST(AnUnalignedValue, IsSentAndStoredByItsBytes) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    std::vector<char> storage(1 + sizeof(float));
    char* const odd = storage.data() + 1;
    const float pitch = 1.5F;
    std::memcpy(odd, &pitch, sizeof pitch);
    remote->answerWith(fromHex("00 00 00 00"));
    EXPECT_EQ(0, proxy->setGlobalConfig(1, GCONF_PITCH, odd));
    ASSERT_EQ(1U, remote->sent().size());
    EXPECT_EQ(fromHex("01 00 00 00  04 00 00 00  00 00 c0 3f"), remote->sent()[0].request);

    remote->answerWith(fromHex("00 00 20 40  00 00 00 00"));
    EXPECT_EQ(0, proxy->globalConfig(1, GCONF_VOLUME, odd));
    float volume = 0.0F;
    std::memcpy(&volume, odd, sizeof volume);
    EXPECT_EQ(2.5F, volume);

    remote->answerWith(fromHex("04 03 02 01  00 00 00 00"));
    EXPECT_EQ(0, proxy->globalConfig(1, GCONF_SPEED, odd));
    EXPECT_EQ(fromHex("04 03 02 01"), support::Bytes(odd, odd + 4));
}

}  // namespace
