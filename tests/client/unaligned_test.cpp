// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "tests/client/ClientTest.h"

namespace {

/// A value at an odd address, where a plain read of it faults on some ARM cores; the sanitizer for
/// undefined behaviour finds it on any machine.
template <typename T>
class Odd {
public:
    explicit Odd(T value) { std::memcpy(address(), &value, sizeof value); }
    void* address() { return mBytes + 1; }
    T value() {
        T value;
        std::memcpy(&value, address(), sizeof value);
        return value;
    }

private:
    alignas(T) char mBytes[sizeof(T) + 1] = {};
};

class AnOddAddress : public support::JoinedClientTest {
protected:
    AnOddAddress() { client.mSetting.mLang = "en_US"; }
    Odd<uint32_t> number{100};
    Odd<float> real{100.0F};
};

TEST_F(AnOddAddress, IsReadByEverySetter) {
    Odd<uint32_t> voice{1};
    EXPECT_EQ(0, client.setSpeed(number.address()));
    EXPECT_EQ(0, client.setBgVolume(number.address()));
    EXPECT_EQ(0, client.setTtsVolume(number.address()));
    EXPECT_EQ(0, client.setPitch(real.address()));
    EXPECT_EQ(0, client.setVolume(real.address()));
    EXPECT_EQ(0, client.setVoice(voice.address()));
    EXPECT_EQ(100U, client.mSetting.mSpeed);
    EXPECT_EQ(100.0F, client.mSetting.mPitch);
    EXPECT_EQ(1U, client.mSetting.mVoice);
}

TEST_F(AnOddAddress, IsWrittenByEveryGetter) {
    client.speed(number.address());
    EXPECT_EQ(65535U, number.value());
    client.pitch(real.address());
    EXPECT_EQ(65535.0F, real.value());
}

TEST_F(AnOddAddress, IsReadAndWrittenByGlobalConfiguration) {
    service.language = "en_US";
    EXPECT_EQ(0, client.setGlobalConfig(GCONF_SPEED, number.address()));
    EXPECT_EQ(0, client.setGlobalConfig(GCONF_PITCH, real.address()));
    Odd<uint32_t> voice{2};
    EXPECT_EQ(0, client.setGlobalConfig(GCONF_VOICE, voice.address()));
    service.number = 42;
    EXPECT_EQ(0, client.globalConfig(GCONF_SPEED, number.address()));
    EXPECT_EQ(42U, number.value());
}

TEST_F(AnOddAddress, HoldsAVoiceForTheFilterAndReceivesTheVoiceTable) {
    Odd<TTS::VoiceInfo> anna{support::voiceOf(LANG_EN_US, 1, "Anna")};
    bool listed = true;
    EXPECT_EQ(0, client.supportVoiceByFilter(anna.address(), &listed));
    Odd<TTS::VoiceInfo**> voices{nullptr};
    EXPECT_EQ(0, client.supportVoicesInfo(voices.address()));
    EXPECT_STREQ("Anna", voices.value()[0]->name);
}

}  // namespace
