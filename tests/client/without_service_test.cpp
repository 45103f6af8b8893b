// SPDX-License-Identifier: Apache-2.0
#include <ostream>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::callLine;
using support::keyLine;
using support::keyOf;
using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

/// Any number that a setter accepts before it has seen the ranges.
uint32_t neverSet = 65535;
float neverSetFloat = 65535.0F;
bool flag = true;
char english[] = "en_US";

struct Row {
    const char* name;
    int (*ask)(TTSClientPrivate& client);
    int result;
    Lines notes;  ///< all that happens
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

/// Every operation that looks for the service, and its answer when there is none.
const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {"disconnect",
         [](TTSClientPrivate& c) { return c.disconnect(); },
         -5,
         {callLine("disconnect")}},
        {"say",
         [](TTSClientPrivate& c) { return c.say(7, "Hello"); },
         -5,
         {logged(2, "[Client] %s() with language %s\n", "[Client] say() with language na_NL\n")}},
        {"silence", [](TTSClientPrivate& c) { return c.silence(1, 2); }, -5, {callLine("silence")}},
        {"stopAndFlush",
         [](TTSClientPrivate& c) { return c.stopAndFlush(1); },
         -5,
         {callLine("stopAndFlush")}},
        {"setEnable",
         [](TTSClientPrivate& c) { return c.setEnable(true); },
         -5,
         {logged(2, "[Client] %s() enable = %d\n", "[Client] setEnable() enable = 1\n")}},
        {"enabled", [](TTSClientPrivate& c) { return c.enabled() ? 1 : 0; }, 0, {}},
        {"setVerbosity",
         [](TTSClientPrivate& c) { return c.setVerbosity(-3); },
         -5,
         {logged(2, "[Client] %s(), verb=%d\n", "[Client] setVerbosity(), verb=-3\n")}},
        {"verbosity", [](TTSClientPrivate& c) { return c.verbosity(); }, 0, {}},
        {"setGlobalRate",
         [](TTSClientPrivate& c) { return c.setGlobalRate(200); },
         -5,
         {logged(2, "[Client] %s(), rate=%d\n", "[Client] setGlobalRate(), rate=200\n")}},
        {"globalRate", [](TTSClientPrivate& c) { return c.globalRate(); }, 0, {}},
        {"lock", [](TTSClientPrivate& c) { return c.lock(); }, -5, {callLine("lock")}},
        {"unlock", [](TTSClientPrivate& c) { return c.unlock(); }, -5, {callLine("unlock")}},
        {"locked", [](TTSClientPrivate& c) { return c.locked(); }, 1, {}},
        {"setGlobalConfig",
         [](TTSClientPrivate& c) { return c.setGlobalConfig(GCONF_SPEED, nullptr); },
         -5,
         {keyLine("setGlobalConfig", 2)}},
        {"globalConfig",
         [](TTSClientPrivate& c) { return c.globalConfig(GCONF_PITCH, nullptr); },
         -5,
         {keyLine("globalConfig", 4)}},
        {"setEnable2",
         [](TTSClientPrivate& c) { return c.setEnable2(GCONF_VOICE_ENABLE, false); },
         -5,
         {logged(2, "[Client] %s(), global config = %d enable = %d\n",
                 "[Client] setEnable2(), global config = 7 enable = 0\n")}},
        {"enabled2",
         [](TTSClientPrivate& c) { return c.enabled2(keyOf(7), &flag); },
         -5,
         {keyLine("enabled2", 7)}},
        {"setSpeed",
         [](TTSClientPrivate& c) { return c.setSpeed(&neverSet); },
         -5,
         {logged(2, "[Client] %s(), speed = %d\n", "[Client] setSpeed(), speed = 65535\n"),
          keyLine("enabled2", 3)}},
        {"setPitch",
         [](TTSClientPrivate& c) { return c.setPitch(&neverSetFloat); },
         -5,
         {logged(2, "[Client] %s(), pitch = %f\n", "[Client] setPitch(), pitch = 65535.000000\n"),
          keyLine("enabled2", 5)}},
        {"setVolume",
         [](TTSClientPrivate& c) { return c.setVolume(&neverSetFloat); },
         -5,
         {logged(2, "[Client] %s(), volume = %f\n",
                 "[Client] setVolume(), volume = 65535.000000\n"),
          keyLine("enabled2", 9)}},
        {"setBgVolume",
         [](TTSClientPrivate& c) { return c.setBgVolume(&neverSet); },
         -5,
         {logged(2, "[Client] %s(), BgVolume = %d\n", "[Client] setBgVolume(), BgVolume = 65535\n"),
          keyLine("enabled2", 11)}},
        {"setTtsVolume",
         [](TTSClientPrivate& c) { return c.setTtsVolume(&neverSet); },
         -5,
         {logged(2, "[Client] %s(), TtsVolume = %d\n",
                 "[Client] setTtsVolume(), TtsVolume = 65535\n"),
          keyLine("enabled2", 13)}},
        {"isSpeedSupported",
         [](TTSClientPrivate& c) { return c.isSpeedSupported() ? 1 : 0; },
         0,
         {keyLine("enabled2", 3)}},
        {"isPitchSupported",
         [](TTSClientPrivate& c) { return c.isPitchSupported() ? 1 : 0; },
         0,
         {keyLine("enabled2", 5)}},
        {"isVolumeSupported",
         [](TTSClientPrivate& c) { return c.isVolumeSupported() ? 1 : 0; },
         0,
         {keyLine("enabled2", 9)}},
        {"isBgVolumeSupported",
         [](TTSClientPrivate& c) { return c.isBgVolumeSupported() ? 1 : 0; },
         0,
         {keyLine("enabled2", 11)}},
        {"isTtsVolumeSupported",
         [](TTSClientPrivate& c) { return c.isTtsVolumeSupported() ? 1 : 0; },
         0,
         {keyLine("enabled2", 13)}},
        {"ttsVoiceMin",
         [](TTSClientPrivate& c) { return c.ttsVoiceMin(); },
         0,
         {keyLine("globalConfig", 14)}},
        {"ttsVoiceMax",
         [](TTSClientPrivate& c) { return c.ttsVoiceMax(); },
         0,
         {keyLine("globalConfig", 14)}},
        {"supportVoicesNum",
         [](TTSClientPrivate& c) { return c.supportVoicesNum(); },
         0,
         {keyLine("globalConfig", 14)}},
        {"supportVoicesInfo",
         [](TTSClientPrivate& c) {
             TTS::VoiceInfo** voices = nullptr;
             return c.supportVoicesInfo(&voices);
         },
         -5,
         {keyLine("globalConfig", 14)}},
        {"setLanguage",
         [](TTSClientPrivate& c) { return c.setLanguage(english); },
         -9,
         {support::debugLine(2, "[Client] %s(), setLanguage = %s",
                             "[Client] setLanguage(), setLanguage = en_US"),
          logged(1, "setLanguage: %s, %d, not support \n",
                 "setLanguage: en_US, 0, not support \n")}},
        {"factoryReset",
         [](TTSClientPrivate& c) { return c.factoryReset(nullptr); },
         -5,
         {callLine("factoryReset")}},
    };
    return all;
}

class AnOperation : public support::ClientTest, public testing::WithParamInterface<Row> {};

TEST_P(AnOperation, WithoutAServiceAnswersAfterItsTraceAndDoesNothing) {
    EXPECT_EQ(GetParam().result, GetParam().ask(client));
    EXPECT_EQ(GetParam().notes, takeNotes());
}

TEST_P(AnOperation, WithoutAServiceLeavesTheLockOwnershipAlone) {
    client.mLockOwner = true;
    GetParam().ask(client);
    EXPECT_TRUE(client.mLockOwner);
}

INSTANTIATE_TEST_SUITE_P(Every, AnOperation, testing::ValuesIn(rows()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
