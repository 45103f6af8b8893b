// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;
using nlohmann::json;

namespace {

struct Change {
    const char* name;
    const char* value;
};

TEST(EverySetting, TakesAValueAndGivesItBack) {
    Device device;
    device.startService({"--sink", "none"});
    constexpr Change kChanges[] = {{"speed", "210"},      {"pitch", "150.0"},  {"voice", "2"},
                                   {"volume", "80.0"},    {"bg-volume", "40"}, {"tts-volume", "60"},
                                   {"language", "fr_FR"}, {"verbosity", "1"},  {"rate", "250"}};
    for (const Change& change : kChanges) {
        const Outcome set = device.ctl({"set", change.name, change.value});
        EXPECT_EQ(set.status, 0) << change.name << ": " << set.err;
        EXPECT_EQ(set.out + set.err, "");
        EXPECT_EQ(settingOf(device, change.name), change.value);
    }
}

TEST(ALanguage, IsSetAsPeopleWriteIt) {
    Device device;
    device.startService({"--sink", "none"});
    for (const char* language : {"fr", "FR", "fr-FR", "fr_fr", "fr_FR.UTF-8"}) {
        EXPECT_EQ(device.ctl({"set", "language", "en_US"}).status, 0);
        const Outcome set = device.ctl({"set", "language", language});
        EXPECT_EQ(set.status, 0) << language;
        EXPECT_EQ(set.err, "") << language;
        EXPECT_EQ(settingOf(device, "language"), "fr_FR") << language;
    }
    EXPECT_EQ(device.ctl({"set", "language", "en-GB"}).err,
              "voxtrelctl: there is no en-GB; taking the nearest, en_US\n");
    EXPECT_EQ(device.ctl({"voices", "pt"}).out, device.ctl({"voices", "pt_PT"}).out);
    EXPECT_EQ(device.ctl({"voices", "pt"}).out.find("en_US"), std::string::npos);
}

TEST(AVoice, IsSetByItsName) {
    Device device;
    device.startService({"--sink", "none"});
    const json voices = json::parse(device.ctl({"voices", "--json", "en_US"}).out);
    const std::string name = voices[1]["name"];
    const Outcome set = device.ctl({"set", "voice", name});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(settingOf(device, "voice"), "2");
    EXPECT_EQ(device.ctl({"say", "--wait", "--voice", name, "x"}).status, 0);
    EXPECT_EQ(device.ctl({"set", "voice", "Nobody"}).err,
              "voxtrelctl: -3 bad parameter: en_US has no voice \"Nobody\": see voxtrelctl voices "
              "en_US\n");
}

TEST(Settings, SurviveARestartOfTheService) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"set", "speed", "222"}).status, 0);
    EXPECT_EQ(device.ctl({"disable", "pitch"}).status, 0);
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    device.stopService();
    device.startService({"--sink", "none"});
    EXPECT_EQ(settingOf(device, "speed"), "222");
    EXPECT_NE(device.ctl({"get", "pitch"}).out.find("disabled"), std::string::npos);
    EXPECT_NE(device.ctl({"status"}).out.find("speech   disabled"), std::string::npos);
}

struct Refusal {
    Device::Words words;
    const char* line;
};

TEST(AWrongValue, IsRefusedWithItsRange) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string help = ": see voxtrelctl --help for the values a command takes\n";
    const std::vector<Refusal> refusals = {
        {{"set", "speed", "79"}, "-3 bad parameter: speed 79 (it takes 80 to 900)"},
        {{"set", "speed", "65535"}, "-3 bad parameter: speed 65535 (it takes 80 to 900)"},
        {{"set", "rate", "901"}, "-3 bad parameter: rate 901 (it takes 80 to 900)"},
        {{"set", "pitch", "-1"}, "-3 bad parameter: pitch -1 (it takes 0 to 400)"},
        {{"set", "volume", "100.5"}, "-3 bad parameter: volume 100.5 (it takes 0 to 100)"},
        {{"set", "bg-volume", "101"}, "-3 bad parameter: bg-volume 101 (it takes 0 to 100)"},
        {{"set", "tts-volume", "101"}, "-3 bad parameter: tts-volume 101 (it takes 0 to 100)"},
        {{"set", "verbosity", "2"}, "-3 bad parameter: verbosity 2 (it takes 0 to 1)"},
        {{"set", "voice", "999"}, "-3 bad parameter: voice 999"},
        {{"say", "--speed", "1000", "x"}, "-3 bad parameter: speed 1000 (it takes 80 to 900)"},
        {{"say", "--voice", "999", "x"}, "-3 bad parameter: voice 999 of en_US"},
        {{"set", "speed", "fast"}, "-3 bad parameter: speed takes a whole number, not \"fast\""},
    };
    for (const Refusal& refusal : refusals) {
        const Outcome outcome = device.ctl(refusal.words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, std::string("voxtrelctl: ") + refusal.line + help);
    }
    EXPECT_EQ(settingOf(device, "speed"), "300");
}

TEST(AnUnknownName, IsRefusedWithoutAskingTheService) {
    Device device;  // none runs: a search would take 15 seconds and end in -8
    for (const Device::Words& words :
         {Device::Words{"set", "loudness", "1"}, Device::Words{"enable", "loudness"},
          Device::Words{"enable", "language"}, Device::Words{"voices", "xx_XX"},
          Device::Words{"say", "--file", "/nowhere"}, Device::Words{"say", " "}}) {
        const Outcome outcome = device.ctl(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err.rfind("voxtrelctl: -3 bad parameter: ", 0), 0U) << outcome.err;
    }
}

TEST(DisabledSpeech, IsRefusedUntilItIsEnabled) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"disable", "speech"}).status, 0);
    for (const char* command : {"say", "silence"}) {
        const Outcome refused = device.ctl({command, "5"});
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err,
                  "voxtrelctl: -1 speech is disabled: switch it on "
                  "with: voxtrelctl enable speech\n");
    }
    EXPECT_EQ(device.ctl({"stop"}).status, 1);
    EXPECT_EQ(device.ctl({"enable"}).status, 0);
    EXPECT_EQ(device.ctl({"say", "--wait", "x"}).status, 0);
}

TEST(ADisabledFeature, TakesNoValue) {
    Device device;
    device.startService({"--sink", "none"});
    for (const char* name : {"speed", "pitch", "voice", "volume", "bg-volume", "tts-volume"}) {
        EXPECT_EQ(device.ctl({"disable", name}).status, 0);
        EXPECT_EQ(json::parse(device.ctl({"get", "--json", name}).out)[name]["enabled"], false);
        const std::string value = std::string(name) == "voice" ? "1" : "90";
        for (const Device::Words& words :
             {Device::Words{"set", name, value},
              Device::Words{"say", "--lang", "en_US", std::string("--") + name, value, "x"}}) {
            const Outcome refused = device.ctl(words);
            EXPECT_EQ(refused.status, 1) << name;
            EXPECT_EQ(refused.err.rfind("voxtrelctl: -9 not supported", 0), 0U) << refused.err;
        }
        EXPECT_EQ(device.ctl({"enable", name}).status, 0);
        EXPECT_EQ(device.ctl({"set", name, value}).status, 0) << name;
    }
}

TEST(Languages, ListTheFiveOfTheService) {
    Device device;
    device.startService({"--sink", "none"});
    const json languages = json::parse(device.ctl({"languages", "--json"}).out);
    ASSERT_EQ(languages.size(), 5U);
    const char* codes[] = {"en_US", "fr_FR", "es_ES", "ko_KR", "pt_PT"};
    for (size_t n = 0; n < languages.size(); ++n) {
        EXPECT_EQ(languages[n]["code"], codes[n]);
        EXPECT_EQ(languages[n]["spoken"], true);
        EXPECT_EQ(languages[n]["filtered"], false);
        EXPECT_EQ(languages[n]["global"], n == 0);
        EXPECT_GE(languages[n]["voices"], 2);
    }
}

TEST(Voices, ListMoreThanTheTwoThatTheLibraryShows) {
    Device device;
    device.startService({"--sink", "none"});
    const json all = json::parse(device.ctl({"voices", "--json"}).out);
    const json french = json::parse(device.ctl({"voices", "--json", "fr_FR"}).out);
    const json languages = json::parse(device.ctl({"languages", "--json"}).out);
    EXPECT_GT(french.size(), 2U);
    EXPECT_EQ(french.size(), languages[1]["voices"]);
    EXPECT_GE(all.size(), 5 * 2U);
    for (size_t n = 0; n < french.size(); ++n) {
        EXPECT_EQ(french[n]["language"], "fr_FR");
        EXPECT_EQ(french[n]["id"], n + 1);
        EXPECT_EQ(french[n]["usable"], true);
    }
}

class ADeviceWithAFilter : public ::testing::Test {
protected:
    ADeviceWithAFilter() {
        mDevice.startService({"--sink", "none"});
        mAllowed = json::parse(mDevice.ctl({"voices", "--json", "fr_FR"}).out)[1]["name"];
        setenv("VOXTREL_LANGUAGE_WITH_VOICES", ("es_ES.none,fr_FR." + mAllowed).c_str(), 1);
    }
    ~ADeviceWithAFilter() override { unsetenv("VOXTREL_LANGUAGE_WITH_VOICES"); }

    Device mDevice;
    std::string mAllowed;
};

TEST_F(ADeviceWithAFilter, RefusesTheLanguageItTakesAway) {
    for (const Device::Words& words : {Device::Words{"say", "--lang", "es_ES", "hola"},
                                       Device::Words{"set", "language", "es_ES"}}) {
        const Outcome refused = mDevice.ctl(words);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err,
                  "voxtrelctl: -9 not supported, switched off, or "
                  "refused by the language filter: "
                  "language es_ES: voxtrelctl doctor lists what is "
                  "switched off or filtered\n");
    }
    EXPECT_EQ(mDevice.ctl({"say", "--lang", "pt_PT", "bom dia"}).status, 0);
}

TEST_F(ADeviceWithAFilter, ShowsWhatItTakesAway) {
    const json languages = json::parse(mDevice.ctl({"languages", "--json"}).out);
    EXPECT_EQ(languages[2]["filtered"], true);
    EXPECT_EQ(languages[1]["filtered"], false);
    for (const json& voice : json::parse(mDevice.ctl({"voices", "--json", "fr_FR"}).out)) {
        EXPECT_EQ(voice["usable"], voice["name"] == mAllowed) << voice;
    }
    const Outcome doctor = mDevice.ctl({"doctor"});
    EXPECT_NE(doctor.out.find("es_ES is taken away by the device's filter"), std::string::npos);
}

TEST_F(ADeviceWithAFilter, RefusesTheVoicesItDoesNotList) {
    EXPECT_EQ(mDevice.ctl({"say", "--lang", "fr_FR", "--voice", "2", "oui"}).status, 0);
    const Outcome refused = mDevice.ctl({"say", "--lang", "fr_FR", "--voice", "1", "non"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err.rfind("voxtrelctl: -9 ", 0), 0U) << refused.err;
}

TEST(AnUnknownLanguage, IsRefusedWithTheOnesThereAre) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome refused = device.ctl({"say", "--lang", "de_DE", "hallo"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "voxtrelctl: -3 bad parameter: there is no language \"de_DE\": "
              "there are en_US,fr_FR,es_ES,ko_KR,pt_PT\n");
}

TEST(Status, HoldsEverythingInOneJsonObject) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome outcome = device.ctl({"status", "--json"});
    EXPECT_EQ(outcome.err, "");
    const json status = json::parse(outcome.out);
    EXPECT_EQ(status["enabled"], true);
    EXPECT_EQ(status["lock"], "free");
    EXPECT_EQ(status["settings"]["speed"],
              json::parse(R"({"value": 300, "enabled": true, "range": "80 to 900"})"));
    EXPECT_EQ(status["settings"].size(), 9U);
    EXPECT_EQ(status["languages"].size(), 5U);
}

}  // namespace
