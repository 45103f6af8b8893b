// SPDX-License-Identifier: Apache-2.0
// What proxy, stub and callback pass on as it comes, without a judgement of their own.
#include <gtest/gtest.h>

#include <cstring>

#include "ipc/BpCallback.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "ipc/Callback.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

namespace {

using android::Parcel;
using android::sp;
using support::fromHex;
using support::RecordingRemote;

/// Fills the reply and fails all the same, as a handler of the other side may.
void answerAndFail(RecordingRemote& remote, const char* reply) {
    remote.answerBy(
        [bytes = fromHex(reply)](const support::Transaction&, const Parcel&, Parcel& out) {
            support::fill(out, bytes);
            return android::FAILED_TRANSACTION;
        });
}

TEST(ATransactionThatFailsWithAReply, IsReadAllTheSame) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    answerAndFail(*remote, "01 00 00 00 2a 00 00 00");
    EXPECT_EQ(1, proxy->factoryReset(1));
    EXPECT_TRUE(proxy->enabled());
    bool flag = false;
    EXPECT_EQ(42, proxy->enabled2(1, GCONF_SPEED_ENABLE, &flag));
    EXPECT_TRUE(flag);
    const sp<TTS::BpCallback> callback = new TTS::BpCallback(remote);
    EXPECT_TRUE(callback->notify(1, 2, 3));
}

TEST(FetchedNumbers, KeepTheStorageOfTheirVectors) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    TTS::Capabilities caps;
    caps.languages.reserve(4096);
    caps.voicesNum.reserve(4096);
    const size_t flags = caps.languages.capacity();
    EXPECT_EQ(0, proxy->getCapabilities(caps));
    EXPECT_EQ(flags, caps.languages.capacity());
    EXPECT_EQ(4096U, caps.voicesNum.capacity());
}

TEST(ALongVoiceList, HasNoBoundOfItsOwnOnEitherSide) {
    constexpr size_t kVoices = 5000;
    const sp<support::RecordingService> service = new support::RecordingService;
    service->capabilities.languages.assign(5, true);
    service->capabilities.voicesNum.assign(5, 1000);
    service->capabilities.voices.resize(kVoices);
    service->capabilities.voices.back().id = 7;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(service);
    TTS::Capabilities caps;
    EXPECT_EQ(0, proxy->getCapabilities(caps));
    ASSERT_EQ(kVoices, caps.voices.size());
    EXPECT_EQ(7U, caps.voices.back().id);
}

unsigned lastType = 0;

TEST(ACallbackObject, HandsEveryEventTypeThrough) {
    const sp<TTS::Callback> callback =
        new TTS::Callback([](unsigned type, unsigned, unsigned) { lastType = type; });
    for (const unsigned type : {0U, 1U, 5U, 6U, 7U, 0xffffffffU}) {
        callback->notify(type, 0, 0);
        EXPECT_EQ(type, lastType);
    }
}

class WordFlag : public support::RecordingService {
public:
    int enabled2(unsigned, VOXTRELAPI_GCONF, void* out) override {
        const int32_t word = 0x102;
        std::memcpy(out, &word, sizeof word);
        return 3;
    }
};

TEST(AServiceThatStoresAWholeWord, SendsTheWord) {
    const sp<WordFlag> service = new WordFlag;
    Parcel request;
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR, service->onTransact(14, request, &reply, 0));
    EXPECT_EQ("02 01 00 00\n03 00 00 00\n", support::hex(support::bytesOf(reply)));
}

TEST(AVoiceOrSpeedReply, IsStoredEvenWithItsHighestBitSet) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    remote->answerWith(fromHex("fb ff ff ff"));
    unsigned voice = 0;
    unsigned speed = 0;
    EXPECT_EQ(0, proxy->voice(voice));
    EXPECT_EQ(0, proxy->speed(speed));
    EXPECT_EQ(4294967291U, voice);
    EXPECT_EQ(4294967291U, speed);
}

}  // namespace
