// SPDX-License-Identifier: Apache-2.0
#include "tools/Json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace voxtrelctl;
using nlohmann::json;

namespace {

TEST(AnEventInJson, IsOneLineNamingItsUtterance) {
    EXPECT_EQ(eventJson({TTS::EVENT_STARTED, 4, 0}, ""), R"({"event":"started","utterance":4})");
    EXPECT_EQ(eventJson({TTS::EVENT_FINISHED, 4, 0}, ""), R"({"event":"finished","utterance":4})");
    EXPECT_EQ(eventJson({TTS::EVENT_STOPPED, 4, 0xFFFFFFF9U}, ""),
              R"({"event":"stopped","utterance":4,"status":-7})");
    EXPECT_EQ(eventJson({TTS::EVENT_MARK, 4, 2}, ""), R"({"event":"mark","utterance":4,"mark":2})");
    EXPECT_EQ(eventJson({TTS::EVENT_WORD, 4, 7}, "world."),
              R"({"event":"word","utterance":4,"offset":7,"word":"world."})");
}

TEST(AStateInJson, NamesWhatChanged) {
    EXPECT_EQ(eventJson({TTS::EVENT_STATE, 15, 4321}, ""),
              R"({"event":"state","what":"lock","value":4321})");
    EXPECT_EQ(eventJson({TTS::EVENT_STATE, 0, 0}, ""),
              R"({"event":"state","what":"speech","value":0})");
}

TEST(AConnectionInJson, IsAnEventToo) {
    EXPECT_EQ(connectionJson("died"), R"({"event":"died"})");
}

TEST(BytesThatAreNoText, DoNotBreakTheJson) {
    EXPECT_TRUE(json::accept(eventJson({TTS::EVENT_WORD, 1, 0}, "a\xff\xfe\"\n")));
}

TEST(SettingsInJson, HaveValueSwitchAndRange) {
    const json made = json::parse(settingsJson({{"speed", Value(uint32_t{300}), true, "80 to 900"},
                                                {"language", Value(std::string("en_US")), {}, ""},
                                                {"pitch", Value(1.5F), false, ""}}));
    EXPECT_EQ(made, json::parse(R"({"speed": {"value": 300, "enabled": true, "range": "80 to 900"},
                                    "language": {"value": "en_US"},
                                    "pitch": {"value": 1.5, "enabled": false}})"));
}

TEST(LanguagesInJson, AreAList) {
    EXPECT_EQ(json::parse(languagesJson({{"en_US", 3, true, false, true}})),
              json::parse(R"([{"code": "en_US", "voices": 3, "spoken": true, "filtered": false,
                               "global": true}])"));
    EXPECT_EQ(languagesJson({}), "[]");
}

TEST(VoicesInJson, AreAList) {
    EXPECT_EQ(json::parse(voicesJson({{"fr_FR", 2, "Anne", false}})),
              json::parse(R"([{"language": "fr_FR", "id": 2, "name": "Anne", "usable": false}])"));
    EXPECT_EQ(voicesJson({}), "[]");
}

TEST(TheStatusInJson, HoldsTheWholeReport) {
    StatusReport report;
    report.enabled = true;
    report.lock = voxtrel::LockState::HeldByAnother;
    report.voices = 12;
    const json made = json::parse(statusJson(report));
    EXPECT_EQ(made, json::parse(R"({"enabled": true, "lock": "held by another client", "voices": 12,
                                    "settings": {}, "languages": []})"));
    report.lock = voxtrel::LockState::Free;
    EXPECT_EQ(json::parse(statusJson(report))["lock"], "free");
}

TEST(AProfileInJson, KeepsTheTypesOfItsValues) {
    EXPECT_EQ(json::parse(profileJson({{"speed", Value(uint32_t{300})},
                                       {"enable", Value(int32_t{-1})},
                                       {"pitch", Value(1.5F)},
                                       {"lang", Value(std::string("na_NL"))}})),
              json::parse(R"({"speed": 300, "enable": -1, "pitch": 1.5, "lang": "na_NL"})"));
}

TEST(FindingsInJson, NameTheirVerdict) {
    EXPECT_EQ(json::parse(findingsJson({{"service", Verdict::Bad, "absent", "start it", -8},
                                        {"lock", Verdict::Good, "free", "", 0},
                                        {"sound card", Verdict::Perhaps, "none", "write", 0}})),
              json::parse(R"([
      {"subject": "service", "verdict": "bad", "seen": "absent", "remedy": "start it"},
      {"subject": "lock", "verdict": "good", "seen": "free", "remedy": ""},
      {"subject": "sound card", "verdict": "perhaps", "seen": "none", "remedy": "write"}])"));
}

}  // namespace
