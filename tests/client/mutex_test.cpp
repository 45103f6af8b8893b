// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <ostream>

#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"

namespace {

using support::callLine;
using support::debugLine;
using support::Lines;
using support::takeNotes;
using Client = TTS::TTSClientPrivate;

/// Notes each "lock" and "unlock" of Clientmutex in the journal.
void noteTheMutexOfTheSearch() {
    platform::onMutex([](const std::string& what) { support::note(what); });
}

bool isHeld() {
    const bool isFree = pthread_mutex_trylock(&TTS::Clientmutex.m) == 0;
    if (isFree) {
        pthread_mutex_unlock(&TTS::Clientmutex.m);
    }
    return !isFree;
}

const std::string kFind = "find tavix.ITextToSpeechFestival";
const std::string kRegister = "ask registerCallback(pid, callback)";
const std::string kFetch = "ask getCapabilities()";

class TheMutexOfTheSearch : public support::ClientTest {};

TEST_F(TheMutexOfTheSearch, IsHeldWhileTheServiceIsSearchedAndUntilItIsReady) {
    TTS::Capabilities unready = support::usualCapabilities();
    unready.ready = false;
    service.fetches = {unready, support::usualCapabilities()};
    manager->absentFor = 1;
    noteTheMutexOfTheSearch();
    EXPECT_EQ(0, client.connect());
    const std::string retry = "Retry ipc to connect TTS Service. (Is Voxtrel running?)";
    EXPECT_EQ(Lines({callLine("connect"), "lock", kFind,
                     debugLine(0, "TTS Client [%s] " + retry, "TTS Client [app] " + retry),
                     "pause 500000", kFind, kRegister, kFetch, "pause 50000", kFetch, "unlock",
                     "link CbDeathNotifier"}),
              takeNotes());
}

TEST_F(TheMutexOfTheSearch, IsReallyHeldInBothWaits) {
    TTS::Capabilities unready = support::usualCapabilities();
    unready.ready = false;
    service.fetches = {unready, support::usualCapabilities()};
    manager->absentFor = 1;
    int pauses = 0;
    platform::onPause([&pauses] {
        EXPECT_TRUE(isHeld());
        ++pauses;
    });
    client.getService();
    EXPECT_EQ(2, pauses);
    EXPECT_FALSE(isHeld()) << "it is let go at the end";
}

TEST_F(TheMutexOfTheSearch, IsLetGoWhenTheSearchFails) {
    manager->service = nullptr;
    noteTheMutexOfTheSearch();
    client.getService();
    const Lines notes = takeNotes();
    EXPECT_EQ("lock", notes.front());
    EXPECT_EQ(1, std::count(notes.begin(), notes.end(), "lock"));
    EXPECT_EQ("unlock", notes.back());
}

TEST_F(TheMutexOfTheSearch, IsTakenAlsoByAConnectionThatStands) {
    client.connect();
    takeNotes();
    noteTheMutexOfTheSearch();
    client.getService();
    EXPECT_EQ(Lines({"lock", "unlock"}), takeNotes());
}

struct Use {
    const char* name;
    void (*run)(Client& client);
};

uint32_t whole = 100;
uint32_t firstVoice = 1;
float real = 100.0F;
bool flag = true;
char english[16] = "en_US";
char buffer[16];
TTS::VoiceInfo anna = support::voiceOf(LANG_EN_US, 1, "Anna");
TTS::VoiceInfo** voices = nullptr;

/// Every operation but `getService` and `connect`, with values that are not refused.
const std::vector<Use>& uses() {
    static const std::vector<Use> all = {
        {"say", [](Client& c) { c.say(1, "Hello"); }},
        {"silence", [](Client& c) { c.silence(1, 2); }},
        {"stopAndFlush", [](Client& c) { c.stopAndFlush(1); }},
        {"setEnable", [](Client& c) { c.setEnable(true); }},
        {"enabled", [](Client& c) { c.enabled(); }},
        {"setVerbosity", [](Client& c) { c.setVerbosity(1); }},
        {"verbosity", [](Client& c) { c.verbosity(); }},
        {"setGlobalRate", [](Client& c) { c.setGlobalRate(100); }},
        {"globalRate", [](Client& c) { c.globalRate(); }},
        {"lock", [](Client& c) { c.lock(); }},
        {"locked", [](Client& c) { c.locked(); }},
        {"unlock", [](Client& c) { c.unlock(); }},
        {"setSpeed", [](Client& c) { c.setSpeed(&whole); }},
        {"setPitch", [](Client& c) { c.setPitch(&real); }},
        {"setVolume", [](Client& c) { c.setVolume(&real); }},
        {"setBgVolume", [](Client& c) { c.setBgVolume(&whole); }},
        {"setTtsVolume", [](Client& c) { c.setTtsVolume(&whole); }},
        {"speed", [](Client& c) { c.speed(&whole); }},
        {"pitch", [](Client& c) { c.pitch(&real); }},
        {"volume", [](Client& c) { c.volume(&real); }},
        {"bgvolume", [](Client& c) { c.bgvolume(&whole); }},
        {"ttsvolume", [](Client& c) { c.ttsvolume(&whole); }},
        {"voice", [](Client& c) { c.voice(buffer); }},
        {"language", [](Client& c) { c.language(buffer, 5); }},
        {"isSpeedSupported", [](Client& c) { c.isSpeedSupported(); }},
        {"isPitchSupported", [](Client& c) { c.isPitchSupported(); }},
        {"isVolumeSupported", [](Client& c) { c.isVolumeSupported(); }},
        {"isBgVolumeSupported", [](Client& c) { c.isBgVolumeSupported(); }},
        {"isTtsVolumeSupported", [](Client& c) { c.isTtsVolumeSupported(); }},
        {"speedMin", [](Client& c) { c.speedMin(); }},
        {"speedMax", [](Client& c) { c.speedMax(); }},
        {"pitchMin", [](Client& c) { c.pitchMin(); }},
        {"pitchMax", [](Client& c) { c.pitchMax(); }},
        {"volumeMin", [](Client& c) { c.volumeMin(); }},
        {"volumeMax", [](Client& c) { c.volumeMax(); }},
        {"bgVolumeMin", [](Client& c) { c.bgVolumeMin(); }},
        {"bgVolumeMax", [](Client& c) { c.bgVolumeMax(); }},
        {"ttsVolumeMin", [](Client& c) { c.ttsVolumeMin(); }},
        {"ttsVolumeMax", [](Client& c) { c.ttsVolumeMax(); }},
        {"setGlobalSpeed", [](Client& c) { c.setGlobalConfig(GCONF_SPEED, &whole); }},
        {"setGlobalPitch", [](Client& c) { c.setGlobalConfig(GCONF_PITCH, &real); }},
        {"setGlobalVolume", [](Client& c) { c.setGlobalConfig(GCONF_VOLUME, &real); }},
        {"setGlobalBgVolume", [](Client& c) { c.setGlobalConfig(GCONF_BG_VOLUME, &whole); }},
        {"setGlobalTtsVolume", [](Client& c) { c.setGlobalConfig(GCONF_TTS_VOLUME, &whole); }},
        {"setGlobalVoice", [](Client& c) { c.setGlobalConfig(GCONF_VOICE, &firstVoice); }},
        {"setGlobalLanguage", [](Client& c) { c.setGlobalConfig(GCONF_LANGUAGE, english); }},
        {"globalConfig", [](Client& c) { c.globalConfig(GCONF_SPEED, &whole); }},
        {"setEnable2", [](Client& c) { c.setEnable2(GCONF_SPEED_ENABLE, true); }},
        {"enabled2", [](Client& c) { c.enabled2(GCONF_SPEED_ENABLE, &flag); }},
        {"supportVoiceByFilter", [](Client& c) { c.supportVoiceByFilter(&anna, &flag); }},
        {"languageByFilter", [](Client& c) { c.languageByFilter(LANG_EN_US); }},
        {"supportLanguages", [](Client& c) { c.supportLanguages(); }},
        {"supportVoicesInfo", [](Client& c) { c.supportVoicesInfo(&voices); }},
        {"ttsVoiceMin", [](Client& c) { c.ttsVoiceMin(); }},
        {"ttsVoiceMax", [](Client& c) { c.ttsVoiceMax(); }},
        {"supportVoicesNum", [](Client& c) { c.supportVoicesNum(); }},
        {"setLanguage", [](Client& c) { c.setLanguage(english); }},
        {"setVoice", [](Client& c) { c.setVoice(&firstVoice); }},
        {"getLangPropertyLen", [](Client& c) { c.getLangPropertyLen(); }},
        {"saveProfile", [](Client& c) { c.saveProfile("/dev/null"); }},
        {"loadProfile", [](Client& c) { c.loadProfile("/dev/null"); }},
        {"factoryReset", [](Client& c) { c.factoryReset(nullptr); }},
        {"disconnect", [](Client& c) { c.disconnect(); }},
        {"constructionAndDestruction", [](Client&) { const Client other("other", nullptr); }},
    };
    return all;
}

void PrintTo(const Use& use, std::ostream* out) {
    *out << use.name;
}

class EveryOtherUse : public support::JoinedClientTest, public testing::WithParamInterface<Use> {
protected:
    EveryOtherUse() {
        service.language = "en_US";
        testing::internal::CaptureStdout();  // profiles report there
    }
    ~EveryOtherUse() override { testing::internal::GetCapturedStdout(); }
};

TEST_P(EveryOtherUse, TakesNoMutex) {
    int locks = 0;
    platform::onMutex([&locks](const std::string&) { ++locks; });
    GetParam().run(client);
    EXPECT_EQ(0, locks);
    TTS::gttsbinder.clear();
    GetParam().run(client);
    EXPECT_EQ(0, locks) << "without a service";
}

INSTANTIATE_TEST_SUITE_P(Of, EveryOtherUse, testing::ValuesIn(uses()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
