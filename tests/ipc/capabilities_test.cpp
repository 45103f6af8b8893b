// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/Bytes.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

namespace {

using android::Parcel;
using android::sp;
using support::Bytes;
using support::bytesOf;
using support::fromHex;
using support::RecordingRemote;
using support::RecordingService;

/// The bytes of `words`, each the lowest byte of a word.
Bytes words(const std::vector<uint8_t>& low) {
    Bytes bytes;
    for (const uint8_t each : low) {
        bytes.insert(bytes.end(), {each, 0, 0, 0});
    }
    return bytes;
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

const Bytes kControls = words({1, 0, 0, 1, 0, 0, 1, 2, 3, 1, 1});

class FetchedCapabilities : public testing::Test {
protected:
    const TTS::Capabilities& fetch(const Bytes& reply) {
        remote->answerWith(reply);
        EXPECT_EQ(0, proxy->getCapabilities(caps));
        return caps;
    }

    TTS::Capabilities caps;
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
};

TEST_F(FetchedCapabilities, TakeOnlyOneAsASpokenLanguage) {
    fetch(kControls + words({2, 1, 255, 0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ((std::vector<bool>{false, true, false, false, true}), caps.languages);
}

TEST_F(FetchedCapabilities, TakeAnyNonZeroControlFlagAsTrue) {
    fetch(words({2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 6}));
    EXPECT_TRUE(caps.pitchSupported && caps.volumeSupported && caps.speedSupported);
    EXPECT_TRUE(caps.ready && caps.permitted);
}

TEST_F(FetchedCapabilities, ReplaceWhatTheRecordHeld) {
    const TTS::VoiceInfo old{};
    caps.languages = {true, true, true, true, true};
    caps.voicesNum = {9, 9, 9, 9, 9};
    caps.voices = {old, old, old};
    fetch(kControls + words({0, 1, 0, 0, 0, 4, 5, 6, 7, 8, 1}) + Bytes(72, 'v'));
    EXPECT_EQ((std::vector<bool>{false, true, false, false, false}), caps.languages);
    EXPECT_EQ((std::vector<int32_t>{4, 5, 6, 7, 8}), caps.voicesNum);
    ASSERT_EQ(1U, caps.voices.size());
    EXPECT_EQ(0x76767676U, caps.voices[0].id);
    EXPECT_EQ('v', caps.voices[0].name[63]);
}

TEST_F(FetchedCapabilities, KeepTheStorageOfTheVectors) {
    caps.voices.reserve(40);
    const TTS::VoiceInfo* storage = caps.voices.data();
    fetch(kControls + words({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}) + Bytes(72, 'v'));
    EXPECT_EQ(40U, caps.voices.capacity());
    EXPECT_EQ(storage, caps.voices.data());
}

TEST_F(FetchedCapabilities, HaveNoVoiceForACountOfZeroOrLess) {
    const Bytes lists = words({1, 0, 0, 0, 0, 3, 0, 0, 0, 0});
    for (const char* count : {"00 00 00 00", "ff ff ff ff", "00 00 00 80"}) {
        fetch(kControls + lists + fromHex(count) + Bytes(72, 'v'));
        EXPECT_TRUE(caps.voices.empty()) << count;
        EXPECT_EQ(3, caps.voicesNum.at(0)) << count;
        EXPECT_TRUE(caps.languages.at(0) && caps.permitted) << count;
    }
}

TEST_F(FetchedCapabilities, AreReadFiveByFiveWhateverTheServiceWrote) {
    // Six languages and no counts: the sixth language is taken for the first count, and so on.
    fetch(kControls + words({1, 1, 1, 1, 1, 9}));
    EXPECT_EQ((std::vector<bool>{true, true, true, true, true}), caps.languages);
    EXPECT_EQ((std::vector<int32_t>{9, 0, 0, 0, 0}), caps.voicesNum);
}

TEST(ServedCapabilities, CarryTheVectorsInTheirRealSizes) {
    const sp<RecordingService> service = new RecordingService;
    service->capabilities.languages = {true, false, true, true, false, true, true};
    service->capabilities.voicesNum = {7, 8};
    service->capabilities.voices.resize(2);
    Parcel request;
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR, service->onTransact(28, request, &reply, 0));
    const Bytes expected = words({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}) +
                           words({1, 0, 1, 1, 0, 1, 1, 7, 8, 2}) + Bytes(144, 0);
    EXPECT_EQ(support::hex(expected), support::hex(bytesOf(reply)));
}

TEST(ServedCapabilities, AreZeroWhereTheServiceFillsNothing) {
    const sp<RecordingService> service = new RecordingService;
    service->status = -1;
    Parcel request;
    Parcel reply;
    EXPECT_EQ(android::NO_ERROR, service->onTransact(28, request, &reply, 0));
    EXPECT_EQ(support::hex(Bytes(size_t{12} * 4, 0)), support::hex(bytesOf(reply)));
}

/// Expects the record that the stub hands out to be fresh, then leaves things in it.
class Checking : public RecordingService {
public:
    int getCapabilities(TTS::Capabilities& caps) override {
        fresh = !caps.ready && !caps.permitted && caps.speedMax == 0 && caps.languages.empty() &&
                caps.voicesNum.empty() && caps.voices.empty();
        caps.ready = true;
        caps.speedMax = 3;
        caps.languages.push_back(true);
        caps.voicesNum.push_back(1);
        caps.voices.resize(3);
        return 0;
    }

    bool fresh = false;
};

TEST(ServedCapabilities, AreAskedForWithAFreshRecordEachTime) {
    const sp<Checking> service = new Checking;
    for (int i = 0; i < 2; ++i) {
        Parcel request;
        Parcel reply;
        service->onTransact(28, request, &reply, 0);
        EXPECT_TRUE(service->fresh) << i;
    }
}

}  // namespace
