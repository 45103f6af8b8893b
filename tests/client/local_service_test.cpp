// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"
#include "tests/support/RecordingService.h"

// What only a service of this process can show: no proxy stands between it and the client, so it
// sees the very addresses that the client hands over, and may leave them alone or fill them up.

namespace {

using platform::logged;
using support::keyLine;
using support::Lines;
using support::notSupportedLine;
using support::takeNotes;

/// A service that keeps the addresses it is given, and stores what the test says.
class StandIn : public support::RecordingService {
public:
    bool storesFlags = true;
    std::string code;               ///< stored for the language, all of it and nothing more
    const void* address = nullptr;  ///< what `setGlobalConfig` was given last

    int enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) override {
        return storesFlags ? RecordingService::enabled2(pid, key, out) : status;
    }

    int setGlobalConfig(unsigned /*pid*/, VOXTRELAPI_GCONF /*key*/, void* value) override {
        address = value;
        return status;
    }

    int globalConfig(unsigned /*pid*/, VOXTRELAPI_GCONF /*key*/, void* out) override {
        std::memcpy(out, code.data(), code.size());
        return status;
    }
};

class AServiceOfThisProcess : public support::ClientTest {
protected:
    AServiceOfThisProcess() {
        client.mCapabilities = support::usualCapabilities();
        standIn->flag = true;
        TTS::gttsbinder = standIn;
    }

    const android::sp<StandIn> standIn = new StandIn;
    uint32_t rate = 100;
    uint32_t whole = 100;
    float real = 100.0F;
    char english[6] = "en_US";
};

TEST_F(AServiceOfThisProcess, MayTellALanguageOfTwoHundredAndFiftyFiveCharacters) {
    standIn->code = std::string(255, 'x') + '\0';
    TTS::VoiceInfo** voices = nullptr;
    EXPECT_EQ(-3, client.supportVoicesInfo(&voices));
    const std::string text = "TTSClientPrivate(), supportVoicesInfo, get global language = ";
    EXPECT_EQ(Lines({keyLine("globalConfig", 14),
                     support::debugLine(2, text + "%s SUCCESS",
                                        text + std::string(255, 'x') + " SUCCESS")}),
              takeNotes());
    EXPECT_EQ(0, client.ttsVoiceMax());
    EXPECT_EQ(0, client.setGlobalConfig(GCONF_VOICE, &whole)) << "its voices are its own business";
}

TEST_F(AServiceOfThisProcess, MayFillTheWholeBufferAndLeaveTheEndOut) {
    standIn->code = std::string(256, 'x');
    EXPECT_EQ(0, client.supportVoicesNum());
    const std::string text = "TTSClientPrivate(), supportVoicesNum, get global language = ";
    EXPECT_EQ(support::debugLine(2, text + "%s", text + std::string(256, 'x')), takeNotes().back());
}

TEST_F(AServiceOfThisProcess, EndsItsLanguageWhereItStopsStoring) {
    standIn->code = "pt_PT";
    EXPECT_EQ(3, client.ttsVoiceMax());
}

TEST_F(AServiceOfThisProcess, IsGivenTheCallersOwnAddressForEveryGlobalValue) {
    standIn->code = "pt_PT";
    whole = 3;
    const std::vector<std::pair<VOXTRELAPI_GCONF, void*>> values = {
        {GCONF_SPEED, &rate},      {GCONF_PITCH, &real},        {GCONF_VOICE, &whole},
        {GCONF_VOLUME, &real},     {GCONF_BG_VOLUME, &whole},   {GCONF_TTS_VOLUME, &whole},
        {GCONF_LANGUAGE, english}, {GCONF_SPEED_ENABLE, &whole}};
    for (const auto& value : values) {
        standIn->address = nullptr;
        EXPECT_EQ(0, client.setGlobalConfig(value.first, value.second));
        EXPECT_EQ(value.second, standIn->address) << value.first;
    }
}

TEST_F(AServiceOfThisProcess, SwitchesAFeatureOffWhenItStoresNoFlag) {
    standIn->storesFlags = false;
    EXPECT_EQ(-9, client.setSpeed(&rate));
    EXPECT_EQ(Lines({logged(2, "[Client] %s(), speed = %d\n", "[Client] setSpeed(), speed = 100\n"),
                     keyLine("enabled2", 3), notSupportedLine()}),
              takeNotes());
    EXPECT_FALSE(client.isPitchSupported());
    EXPECT_EQ(Lines({keyLine("enabled2", 5), notSupportedLine()}), takeNotes());
    EXPECT_EQ(-9, client.setGlobalConfig(GCONF_VOLUME, &real));
    EXPECT_EQ(Lines({keyLine("setGlobalConfig", 8), keyLine("enabled2", 9), notSupportedLine()}),
              takeNotes());

    client.mSetting.mLang = "en_US";
    whole = 1;
    EXPECT_EQ(-9, client.setVoice(&whole));
    EXPECT_EQ(notSupportedLine(), takeNotes().back());
    EXPECT_EQ(0, client.supportVoicesNum());
    EXPECT_EQ(notSupportedLine(), takeNotes().back());
}

}  // namespace
