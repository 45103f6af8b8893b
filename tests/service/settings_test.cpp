// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/service/ServiceFixture.h"

namespace voxtreld {

using namespace TTS;

namespace {

using voxtrel_test::readFile;
using voxtrel_test::writeFile;

VOXTRELAPI_GCONF keyOf(int32_t value) {
    return static_cast<VOXTRELAPI_GCONF>(value);
}

class TheGlobalSettings : public ServiceFixture {
protected:
    void SetUp() override { from(kAnn); }

    template <typename Value>
    int set(VOXTRELAPI_GCONF key, Value value) {
        return service->setGlobalConfig(kAnn, key, &value);
    }
    int setLanguage(const char* code) {
        char text[256] = {};
        std::strncpy(text, code, sizeof text - 1);
        return service->setGlobalConfig(kAnn, GCONF_LANGUAGE, text);
    }
    template <typename Value>
    Value get(VOXTRELAPI_GCONF key) {
        Value value = {};
        EXPECT_EQ(0, service->globalConfig(kAnn, key, &value));
        return value;
    }
    std::string language() {
        char text[256] = {};
        EXPECT_EQ(0, service->globalConfig(kAnn, GCONF_LANGUAGE, text));
        return text;
    }
    void restart() {
        makeService();
        service->announceVoices(engine.voices());
        from(kAnn);
    }
};

TEST_F(TheGlobalSettings, HaveRealValuesWithoutAProfile) {
    EXPECT_EQ(300U, get<uint32_t>(GCONF_SPEED));
    EXPECT_FLOAT_EQ(200.0F, get<float>(GCONF_PITCH));
    EXPECT_FLOAT_EQ(100.0F, get<float>(GCONF_VOLUME));
    EXPECT_EQ(0U, get<uint32_t>(GCONF_VOICE));
    EXPECT_EQ(50U, get<uint32_t>(GCONF_BG_VOLUME));
    EXPECT_EQ(100U, get<uint32_t>(GCONF_TTS_VOLUME));
    EXPECT_EQ("en_US", language());
    EXPECT_TRUE(service->enabled());
    EXPECT_EQ(0, service->verbosity());
    EXPECT_EQ(300, service->globalRate());
}

TEST_F(TheGlobalSettings, SurviveARestart) {
    service->announceVoices(engine.voices());
    EXPECT_EQ(0, set(GCONF_PITCH, 150.0F));
    EXPECT_EQ(0, set(GCONF_VOLUME, 40.0F));
    EXPECT_EQ(0, set(GCONF_BG_VOLUME, 20U));
    EXPECT_EQ(0, set(GCONF_TTS_VOLUME, 30U));
    EXPECT_EQ(0, set(GCONF_VOICE, 2U));
    EXPECT_EQ(0, service->setGlobalRate(kAnn, 120));
    EXPECT_EQ(0, service->setVerbosity(kAnn, 1));
    EXPECT_EQ(0, service->setEnable2(kAnn, GCONF_PITCH_ENABLE, false));
    EXPECT_EQ(0, service->setEnable(kAnn, false));
    restart();
    EXPECT_FLOAT_EQ(150.0F, get<float>(GCONF_PITCH));
    EXPECT_FLOAT_EQ(40.0F, get<float>(GCONF_VOLUME));
    EXPECT_EQ(20U, get<uint32_t>(GCONF_BG_VOLUME));
    EXPECT_EQ(30U, get<uint32_t>(GCONF_TTS_VOLUME));
    EXPECT_EQ(2U, get<uint32_t>(GCONF_VOICE));
    EXPECT_EQ(120U, get<uint32_t>(GCONF_SPEED));
    EXPECT_EQ(1, service->verbosity());
    EXPECT_FALSE(service->enabled());
    bool flag = true;
    EXPECT_EQ(0, service->enabled2(kAnn, GCONF_PITCH_ENABLE, &flag));
    EXPECT_FALSE(flag);
    EXPECT_EQ(0, setLanguage("ko_KR"));
    restart();
    EXPECT_EQ("ko_KR", language());
    EXPECT_EQ(0U, get<uint32_t>(GCONF_VOICE)) << "numbers belong to one language";
}

TEST_F(TheGlobalSettings, AreUpgradedFromAProfileWithoutAVersion) {
    service = nullptr;
    profile = nullptr;
    writeFile(profilePath(), "speed=65535\nlang=na_NL\npitch=90\n");
    restart();
    EXPECT_EQ(300U, get<uint32_t>(GCONF_SPEED));
    EXPECT_FLOAT_EQ(90.0F, get<float>(GCONF_PITCH));
    EXPECT_EQ("en_US", language());
    EXPECT_NE(std::string::npos, readFile(profilePath()).find("version=2"));
}

TEST_F(TheGlobalSettings, HaveDefaultsForWhatIsNoNumberInTheProfile) {
    for (const char* value : {"nan", "inf", "-inf", "infinity", "NAN", "", "x", "-", "+", "true",
                              ".5", "--1", "-1", "99999999999999999999", "1e999"}) {
        service = nullptr;
        profile = nullptr;
        std::string text = "version=2\nlang=en_US\n";
        for (const char* key :
             {"speed", "volume", "media_volume", "tts_volume", "voice", "pitch", "speed_enable",
              "volume_enable", "media_volume_enable", "tts_volume_enable", "voice_enable",
              "pitch_enable", "verbosity", "enable"}) {
            text += std::string(key) + "=" + value + "\n";
        }
        writeFile(profilePath(), text);
        restart();
        EXPECT_EQ(300U, get<uint32_t>(GCONF_SPEED)) << value;
        EXPECT_EQ(200.0F, get<float>(GCONF_PITCH)) << value;
        EXPECT_EQ(100.0F, get<float>(GCONF_VOLUME)) << value;
        EXPECT_EQ(0U, get<uint32_t>(GCONF_VOICE)) << value;
        EXPECT_EQ(50U, get<uint32_t>(GCONF_BG_VOLUME)) << value;
        EXPECT_EQ(100U, get<uint32_t>(GCONF_TTS_VOLUME)) << value;
        EXPECT_TRUE(service->enabled()) << value;
        EXPECT_EQ(0, service->verbosity()) << value;
        for (const int32_t key : {3, 5, 7, 9, 11, 13}) {
            bool flag = false;
            EXPECT_EQ(0, service->enabled2(kAnn, keyOf(key), &flag));
            EXPECT_TRUE(flag) << value << " " << key;
        }
    }
}

TEST_F(TheGlobalSettings, KeepTheFractionsOfAProfile) {
    service = nullptr;
    profile = nullptr;
    writeFile(profilePath(), "version=2\nspeed= +150.9\npitch=150.5\nvolume=33.25%\nvoice=1x\n");
    restart();
    EXPECT_EQ(150U, get<uint32_t>(GCONF_SPEED));
    EXPECT_EQ(150.5F, get<float>(GCONF_PITCH));
    EXPECT_EQ(33.25F, get<float>(GCONF_VOLUME));
    EXPECT_EQ(1U, get<uint32_t>(GCONF_VOICE));
    profile->flush();
    restart();
    EXPECT_EQ(150.5F, get<float>(GCONF_PITCH)) << "written and read again";
}

TEST_F(TheGlobalSettings, HaveDefaultsForNonsenseInTheProfile) {
    service = nullptr;
    profile = nullptr;
    writeFile(profilePath(), "version=2\nspeed=5\npitch=4000\nvolume=-7\nlang=xx_XX\nvoice=50\n");
    restart();
    EXPECT_EQ(300U, get<uint32_t>(GCONF_SPEED));
    EXPECT_FLOAT_EQ(200.0F, get<float>(GCONF_PITCH));
    EXPECT_FLOAT_EQ(100.0F, get<float>(GCONF_VOLUME));
    EXPECT_EQ("en_US", language());
    EXPECT_EQ(0, say(kAnn, 1)) << "a voice that is not there any more does not silence the service";
}

TEST_F(TheGlobalSettings, RefuseValuesOutOfRange) {
    service->announceVoices(engine.voices());
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_SPEED, kSpeedMin - 1));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_SPEED, kSpeedMax + 1));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_SPEED, kUnset));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_PITCH, kPitchMax + 1));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_PITCH, std::nanf("")));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_VOLUME, -1.0F));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_BG_VOLUME, 101U));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_TTS_VOLUME, 101U));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_VOICE, 3U));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->setGlobalRate(kAnn, kSpeedMax + 1));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->setVerbosity(kAnn, 2));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->setVerbosity(kAnn, -1));
    EXPECT_EQ(300U, get<uint32_t>(GCONF_SPEED));
}

TEST_F(TheGlobalSettings, RefuseKeysThatCarryNoValueOrNoFlag) {
    uint32_t word = 77;
    bool flag = true;
    for (const int32_t key : {0, 1, 3, 5, 7, 9, 11, 13, 15, -1}) {
        EXPECT_EQ(STATUS_BAD_PARAMETER, set(keyOf(key), 1U)) << key;
        EXPECT_EQ(STATUS_BAD_PARAMETER, service->globalConfig(kAnn, keyOf(key), &word)) << key;
    }
    for (const int32_t key : {0, 1, 2, 4, 6, 8, 10, 12, 14, 15, -1}) {
        EXPECT_EQ(STATUS_BAD_PARAMETER, service->enabled2(kAnn, keyOf(key), &flag)) << key;
    }
    for (const int32_t key : {2, 4, 6, 8, 10, 12, 14, 15, -1}) {
        EXPECT_EQ(STATUS_BAD_PARAMETER, service->setEnable2(kAnn, keyOf(key), true)) << key;
    }
    EXPECT_EQ(77U, word);
    EXPECT_TRUE(flag);
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->setGlobalConfig(kAnn, GCONF_SPEED, nullptr));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->globalConfig(kAnn, GCONF_SPEED, nullptr));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->enabled2(kAnn, GCONF_SPEED_ENABLE, nullptr));
}

TEST_F(TheGlobalSettings, CannotBeChangedWhileTheirFlagIsOff) {
    service->announceVoices(engine.voices());
    for (const int32_t key : {2, 4, 6, 8, 10, 12}) {
        ASSERT_EQ(0, service->setEnable2(kAnn, keyOf(key + 1), false));
    }
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_SPEED, 100U));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_PITCH, 100.0F));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_VOICE, 1U));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_VOLUME, 10.0F));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_BG_VOLUME, 10U));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, set(GCONF_TTS_VOLUME, 10U));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, service->setGlobalRate(kAnn, 100));
    EXPECT_EQ(STATUS_BAD_PARAMETER, set(GCONF_SPEED, 1U)) << "the range is looked at first";
}

TEST_F(TheGlobalSettings, RefuseALanguageWithoutVoices) {
    EXPECT_EQ(STATUS_NOT_SUPPORTED, setLanguage("fr_FR")) << "no voices are known yet";
    service->announceVoices({{LANG_EN_US, "only"}});
    EXPECT_EQ(STATUS_NOT_SUPPORTED, setLanguage("fr_FR"));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, setLanguage("na_NL"));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, setLanguage(""));
    EXPECT_EQ(STATUS_NOT_SUPPORTED, setLanguage(std::string(255, 'e').c_str()));
    EXPECT_EQ(0, setLanguage("en_US"));
}

TEST_F(TheGlobalSettings, TakeTheSharedTransactionOfSetEnableForWhatItMeans) {
    EXPECT_EQ(0, service->setEnable2(kAnn, keyOf(0), false));
    EXPECT_FALSE(service->enabled());
    EXPECT_EQ(0, service->setEnable2(kAnn, keyOf(1), false));
    EXPECT_TRUE(service->enabled());
}

TEST_F(TheGlobalSettings, AreToldToEveryClientWhenTheyChange) {
    const auto ann = join(kAnn);
    const auto bob = join(kBob);
    service->announceVoices(engine.voices());
    from(kAnn);
    ASSERT_EQ(0, service->setEnable(kAnn, false));
    ASSERT_EQ(0, service->setEnable2(kAnn, GCONF_SPEED_ENABLE, false));
    ASSERT_EQ(0, service->setVerbosity(kAnn, 1));
    ASSERT_EQ(0, setLanguage("ko_KR"));
    ASSERT_EQ(0, set(GCONF_PITCH, 150.5F));
    ASSERT_EQ(0, set(GCONF_BG_VOLUME, 7U));
    ASSERT_EQ(0, service->factoryReset(kAnn));
    const std::vector<Told> expected = {{kBob, EVENT_STATE, STATE_READY, 1},
                                        {kBob, EVENT_STATE, STATE_ENABLED, 0},
                                        {kBob, EVENT_STATE, GCONF_SPEED_ENABLE, 0},
                                        {kBob, EVENT_STATE, STATE_VERBOSITY, 1},
                                        {kBob, EVENT_STATE, GCONF_LANGUAGE, LANG_KO_KR},
                                        {kBob, EVENT_STATE, GCONF_PITCH, 150},
                                        {kBob, EVENT_STATE, GCONF_BG_VOLUME, 7},
                                        {kBob, EVENT_STATE, STATE_RESET, 0}};
    EXPECT_EQ(expected, toldTo(bob));
    EXPECT_EQ(expected.size(), toldTo(ann).size());
}

TEST_F(TheGlobalSettings, AreNotToldWhenNothingChanged) {
    const auto ann = join(kAnn);
    EXPECT_EQ(0, service->setEnable(kAnn, true));
    EXPECT_EQ(0, service->setEnable2(kAnn, GCONF_PITCH_ENABLE, true));
    EXPECT_EQ(0, service->setGlobalRate(kAnn, 300));
    EXPECT_EQ(0, service->factoryReset(kAnn));
    EXPECT_TRUE(toldTo(ann).empty());
}

TEST_F(TheGlobalSettings, GoBackToTheirDefaultsByAFactoryReset) {
    service->announceVoices(engine.voices());
    ASSERT_EQ(0, set(GCONF_PITCH, 150.0F));
    ASSERT_EQ(0, setLanguage("pt_PT"));
    ASSERT_EQ(0, service->setEnable2(kAnn, GCONF_SPEED_ENABLE, false));
    ASSERT_EQ(0, service->factoryReset(kAnn));
    EXPECT_FLOAT_EQ(200.0F, get<float>(GCONF_PITCH));
    EXPECT_EQ("en_US", language());
    EXPECT_EQ(0, set(GCONF_SPEED, 100U));
    EXPECT_EQ(0, set(GCONF_VOICE, 2U)) << "the voices are still known";
}

class TheCapabilities : public ServiceFixture {};

TEST_F(TheCapabilities, AreNotReadyBeforeTheVoicesAreLoaded) {
    TTS::Capabilities caps;
    EXPECT_EQ(0, service->getCapabilities(caps));
    EXPECT_FALSE(caps.ready);
    EXPECT_TRUE(caps.permitted);
    EXPECT_EQ(std::vector<bool>(5, false), caps.languages);
    EXPECT_EQ(std::vector<int32_t>(5, 0), caps.voicesNum);
    EXPECT_TRUE(caps.voices.empty());
}

TEST_F(TheCapabilities, CountVoicesFromOneInEachLanguage) {
    service->announceVoices(engine.voices());
    TTS::Capabilities caps;
    service->getCapabilities(caps);
    EXPECT_TRUE(caps.ready);
    EXPECT_EQ(std::vector<bool>(5, true), caps.languages);
    EXPECT_EQ((std::vector<int32_t>{2, 1, 1, 1, 1}), caps.voicesNum);
    ASSERT_EQ(6U, caps.voices.size());
    EXPECT_EQ(1U, caps.voices[0].id);
    EXPECT_EQ(2U, caps.voices[1].id);
    EXPECT_EQ(1U, caps.voices[2].id);
    EXPECT_EQ(LANG_FR_FR, caps.voices[2].langId);
    EXPECT_STREQ("un", caps.voices[2].name);
}

TEST_F(TheCapabilities, HaveRoomForTheDefaultsOfAProfile) {
    TTS::Capabilities caps;
    service->getCapabilities(caps);
    EXPECT_TRUE(caps.speedSupported && caps.pitchSupported && caps.volumeSupported);
    EXPECT_LE(caps.speedMin, 300U);
    EXPECT_GE(caps.speedMax, 300U);
    EXPECT_LE(caps.pitchMin, 200.0F);
    EXPECT_GE(caps.pitchMax, 200.0F);
    EXPECT_LE(caps.volumeMin, 100.0F);
    EXPECT_GE(caps.volumeMax, 100.0F);
}

TEST_F(TheCapabilities, CutAVoiceNameThatIsTooLong) {
    service->announceVoices({{LANG_EN_US, std::string(100, 'n')}, {LANG_NA, "of no language"}});
    TTS::Capabilities caps;
    service->getCapabilities(caps);
    ASSERT_EQ(1U, caps.voices.size());
    EXPECT_EQ(std::string(63, 'n'), caps.voices[0].name);
}

class AProfileStore : public testing::Test {
protected:
    voxtrel_test::TempFolder folder;
    const std::string path = folder.path("voxtrel.ini");
};

TEST_F(AProfileStore, WritesTheLastOfManyChanges) {
    ProfileStore store(path);
    TTS::TtsSetting setting = store.load();
    for (uint32_t speed = 100; speed <= 400; ++speed) {
        setting.mSpeed = speed;
        store.save(setting);
    }
    store.flush();
    EXPECT_EQ(400U, ProfileStore(path).load().mSpeed);
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST_F(AProfileStore, TakesOverACompleteStateThatAKilledServiceLeft) {
    ProfileStore store(path);
    writeFile(path, "\nversion=2\nspeed=100\n\n");
    writeFile(path + ".new", "\nversion=2\nspeed=200\n\n");
    EXPECT_EQ(200U, store.load().mSpeed);
    EXPECT_NE(std::string::npos, readFile(path).find("speed=200"));
}

TEST_F(AProfileStore, IgnoresAStateThatWasCutShort) {
    ProfileStore store(path);
    writeFile(path, "\nversion=2\nspeed=100\n\n");
    for (const char* cut : {"", "\n", "\nversion=2\nspeed=200\n", "\nversion=2\nspe"}) {
        writeFile(path + ".new", cut);
        EXPECT_EQ(100U, store.load().mSpeed);
        EXPECT_FALSE(std::filesystem::exists(path + ".new"));
    }
}

TEST_F(AProfileStore, KeepsTheServiceRunningWhereItCannotWrite) {
    ProfileStore store("/nowhere/voxtrel.ini");
    store.save(store.load());
    store.flush();
    EXPECT_FALSE(std::filesystem::exists("/nowhere"));
}

}  // namespace
}  // namespace voxtreld
