// SPDX-License-Identifier: Apache-2.0
#include "tests/ipc/TransactionCases.h"

#include <algorithm>
#include <cstring>

namespace {

using Proxy = TTS::BpTextToSpeechFestival;
using support::callLine;
using support::quoted;

constexpr unsigned kPid = 1000;

/// Results side by side; an out-parameter that the call did not touch shows its first value, 77.
template <typename... Values>
std::string results(const Values&... values) {
    return callLine("", values...);
}

template <typename Value>
std::string globalConfig(Proxy& proxy, VOXTRELAPI_GCONF key, Value value) {
    const int status = proxy.globalConfig(kPid, key, &value);
    return results(value, status);
}

std::string globalLanguage(Proxy& proxy) {
    char text[17] = "################";
    const int status = proxy.globalConfig(kPid, GCONF_LANGUAGE, text);
    return results(quoted(text), status);
}

std::string enabled2(Proxy& proxy) {
    bool flag = true;
    const int status = proxy.enabled2(kPid, GCONF_PITCH_ENABLE, &flag);
    return results(flag, status);
}

template <typename Value>
std::string setGlobalConfig(Proxy& proxy, VOXTRELAPI_GCONF key, Value value) {
    return results(proxy.setGlobalConfig(kPid, key, &value));
}

std::string setGlobalLanguage(Proxy& proxy) {
    char text[] = "fr_FR";
    return results(proxy.setGlobalConfig(kPid, GCONF_LANGUAGE, text));
}

template <typename Value>
std::string question(Proxy& proxy, int (Proxy::*operation)(Value&)) {
    Value value = 77;
    const int status = (proxy.*operation)(value);
    return results(value, status);
}

std::string listed(const TTS::Capabilities& caps) {
    std::ostringstream out;
    out << "pitch " << caps.pitchSupported << ' ' << caps.pitchMin << ' ' << caps.pitchMax
        << " volume " << caps.volumeSupported << ' ' << caps.volumeMin << ' ' << caps.volumeMax
        << " speed " << caps.speedSupported << ' ' << caps.speedMin << ' ' << caps.speedMax
        << " ready " << caps.ready << " permitted " << caps.permitted << " languages";
    for (const bool spoken : caps.languages) {
        out << ' ' << spoken;
    }
    out << " counts";
    for (const int32_t count : caps.voicesNum) {
        out << ' ' << count;
    }
    for (const TTS::VoiceInfo& voice : caps.voices) {
        out << " voice " << voice.langId << ' ' << voice.id << ' ' << voice.name << ' '
            << static_cast<int>(voice.name[63]);
    }
    return out.str();
}

std::string getCapabilities(Proxy& proxy) {
    TTS::Capabilities caps;
    const int status = proxy.getCapabilities(caps);
    return results(listed(caps), status);
}

TTS::VoiceInfo voiceOf(EN_VOXTREL_LANGUAGE language, uint32_t id, const char* name, char last) {
    TTS::VoiceInfo voice{};
    voice.langId = language;
    voice.id = id;
    std::strncpy(voice.name, name, sizeof voice.name - 1);
    voice.name[63] = last;
    return voice;
}

TTS::Capabilities capabilitiesOfTheDumps() {
    TTS::Capabilities caps;
    caps.ready = true;
    caps.pitchSupported = true;
    caps.pitchMin = 0.5F;
    caps.pitchMax = 2.0F;
    caps.volumeMin = -0.25F;
    caps.volumeMax = 1.0F;
    caps.speedSupported = true;
    caps.speedMin = 80;
    caps.speedMax = 2147483648U;
    caps.languages = {true, false, false, true, false};
    caps.voicesNum = {2, 0, 0, -1, 0};
    caps.voices = {voiceOf(LANG_EN_US, 1, "Ann", 0), voiceOf(LANG_KO_KR, 0x01020304, "Jin", 'z')};
    return caps;
}

constexpr const char* kCapabilities =
    "(pitch 1 0.5 2 volume 0 -0.25 1 speed 1 80 2147483648 ready 1 permitted 0 languages 1 0 0 1 0 "
    "counts 2 0 0 -1 0 voice 0 1 Ann 0 voice 3 16909060 Jin 122, 0)";
constexpr const char* kNoCapabilities =
    "(pitch 0 0 0 volume 0 0 0 speed 0 0 0 ready 0 permitted 0 languages 0 0 0 0 0 counts 0 0 0 0 "
    "0, 0)";
constexpr const char* kUntouchedCapabilities =
    "(pitch 0 0 0 volume 0 0 0 speed 0 0 0 ready 0 permitted 0 languages counts, -5)";

const std::vector<TransactionCase> kCases = {
    {"01-say",
     [](Proxy& p) {
         return results(p.say(kPid, 7, "Hello", 180, 0.5F, 2, 30, 90, 1.25F, LANG_KO_KR));
     },
     "(42)", "(-5)", "(0)", R"(say(1000, 7, "Hello", 180, 0.5, 2, 30, 90, 1.25, 3))"},
    {"02-silence", [](Proxy& p) { return results(p.silence(kPid, 250, 3, 30)); }, "(42)", "(-5)",
     "(0)", "silence(1000, 250, 3, 30)"},
    {"03-stopAndFlush", [](Proxy& p) { return results(p.stopAndFlush(kPid, 9)); }, "(42)", "(-5)",
     "(0)", "stopAndFlush(1000, 9)"},
    {"05-setEnable", [](Proxy& p) { return results(p.setEnable(kPid, true)); }, "(42)", "(-5)",
     "(0)", "setEnable2(1000, 1, 0)"},
    {"05-setEnable2",
     [](Proxy& p) { return results(p.setEnable2(kPid, GCONF_VOICE_ENABLE, true)); }, "(42)", "(-5)",
     "(0)", "setEnable2(1000, 7, 1)"},
    {"10-setVerbosity", [](Proxy& p) { return results(p.setVerbosity(kPid, -2)); }, "(42)", "(-5)",
     "(0)", "setVerbosity(1000, -2)"},
    {"11-setGlobalRate", [](Proxy& p) { return results(p.setGlobalRate(kPid, 4294967295U)); },
     "(42)", "(-5)", "(0)", "setGlobalRate(1000, 4294967295)"},
    {"12-setGlobalConfig-integer",
     [](Proxy& p) { return setGlobalConfig<uint32_t>(p, GCONF_SPEED, 180); }, "(42)", "(-5)", "(0)",
     "setGlobalConfig(1000, 2, 180)"},
    {"12-setGlobalConfig-float",
     [](Proxy& p) { return setGlobalConfig<float>(p, GCONF_VOLUME, 0.75F); }, "(42)", "(-5)", "(0)",
     "setGlobalConfig(1000, 8, 0.75)"},
    {"12-setGlobalConfig-language", setGlobalLanguage, "(42)", "(-5)", "(0)",
     R"(setGlobalConfig(1000, 14, "fr_FR"))"},
    {"13-enabled", [](Proxy& p) { return results(p.enabled()); }, "(1)", "(0)", "(0)", "enabled()"},
    {"14-enabled2", enabled2, "(1, 42)", "(1, -5)", "(0, 0)", "enabled2(1000, 5)"},
    {"15-language", [](Proxy& p) { return results(p.language()); }, "(3)", "(0)", "(0)", nullptr},
    {"16-pitch", [](Proxy& p) { return question(p, &Proxy::pitch); }, "(1.25, 0)", "(77, -5)",
     "(0, 0)", nullptr},
    {"17-voice", [](Proxy& p) { return question(p, &Proxy::voice); }, "(2, 0)", "(77, -5)",
     "(0, 0)", nullptr},
    {"18-speed", [](Proxy& p) { return question(p, &Proxy::speed); }, "(180, 0)", "(77, -5)",
     "(0, 0)", nullptr},
    {"19-verbosity", [](Proxy& p) { return results(p.verbosity()); }, "(42)", "(-5)", "(0)",
     "verbosity()"},
    {"20-globalRate", [](Proxy& p) { return results(p.globalRate()); }, "(42)", "(-5)", "(0)",
     "globalRate()"},
    {"21-globalConfig-integer",
     [](Proxy& p) { return globalConfig<uint32_t>(p, GCONF_BG_VOLUME, 77); }, "(100, 42)",
     "(77, -5)", "(0, 0)", "globalConfig(1000, 10)"},
    {"21-globalConfig-float", [](Proxy& p) { return globalConfig<float>(p, GCONF_PITCH, 77.0F); },
     "(1.5, 42)", "(77, -5)", "(0, 0)", "globalConfig(1000, 4)"},
    {"21-globalConfig-language", globalLanguage, R"(("es_ES###########", 42))",
     R"(("################", -5))", R"(("################", 0))", "globalConfig(1000, 14)"},
    {"21-globalConfig-refused",
     [](Proxy& p) { return globalConfig<uint32_t>(p, GCONF_SPEED_ENABLE, 77); }, "(77, -3)",
     "(77, -5)", "(77, 0)", nullptr},
    {"22-factoryReset", [](Proxy& p) { return results(p.factoryReset(kPid)); }, "(42)", "(-5)",
     "(0)", "factoryReset(1000)"},
    {"23-registerCallback", [](Proxy& p) { return results(p.registerCallback(kPid, nullptr)); },
     "(42)", "(-5)", "(0)", "registerCallback(1000, null)"},
    {"24-deregisterCallback", [](Proxy& p) { return results(p.deregisterCallback(kPid)); }, "(42)",
     "(-5)", "(0)", "deregisterCallback(1000)"},
    {"25-lock", [](Proxy& p) { return results(p.lock(kPid)); }, "(42)", "(-5)", "(0)",
     "lock(1000)"},
    {"26-unlock", [](Proxy& p) { return results(p.unlock(kPid)); }, "(42)", "(-5)", "(0)",
     "unlock(1000)"},
    {"27-locked", [](Proxy& p) { return results(p.locked()); }, "(1)", "(1)", "(0)", "locked()"},
    {"28-getCapabilities", getCapabilities, kCapabilities, kUntouchedCapabilities, kNoCapabilities,
     "getCapabilities()"},
};

}  // namespace

const std::vector<TransactionCase>& transactionCases() {
    return kCases;
}

std::string transactionCaseName(const testing::TestParamInfo<TransactionCase>& each) {
    std::string name = each.param.dump;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

android::sp<support::RecordingService> serviceOfTheDumps() {
    android::sp<support::RecordingService> service = new support::RecordingService;
    service->status = 42;
    service->flag = true;
    service->number = 100;
    service->real = 1.5F;
    service->text = "es_ES";
    service->isEnabled = true;
    service->isLocked = true;
    service->capabilities = capabilitiesOfTheDumps();
    return service;
}
