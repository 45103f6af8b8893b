// SPDX-License-Identifier: Apache-2.0
#include "tests/support/RecordingService.h"

#include <cstring>

namespace support {
namespace {

bool isFloat(VOXTRELAPI_GCONF key) {
    return key == GCONF_PITCH || key == GCONF_VOLUME;
}

}  // namespace

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

std::vector<std::string> RecordingService::calls() const {
    const std::lock_guard<std::mutex> guard(mMutex);
    return mCalls;
}

void RecordingService::record(const std::string& line) const {
    const std::lock_guard<std::mutex> guard(mMutex);
    mCalls.push_back(line);
}

int RecordingService::say(unsigned pid, unsigned id, const std::string& words, unsigned speed,
                          float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                          float pitch, EN_VOXTREL_LANGUAGE language) {
    record(callLine("say", pid, id, quoted(words), speed, volume, voice, bgVolume, ttsVolume, pitch,
                    language));
    return status;
}

int RecordingService::silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) {
    record(callLine("silence", pid, first, second, bgVolume));
    return status;
}

int RecordingService::stopAndFlush(unsigned pid, unsigned arg) {
    record(callLine("stopAndFlush", pid, arg));
    return status;
}

int RecordingService::setEnable(unsigned pid, bool enable) {
    record(callLine("setEnable", pid, enable));
    return status;
}

int RecordingService::setVerbosity(unsigned pid, int verbosity) {
    record(callLine("setVerbosity", pid, verbosity));
    return status;
}

int RecordingService::setGlobalRate(unsigned pid, unsigned rate) {
    record(callLine("setGlobalRate", pid, rate));
    return status;
}

int RecordingService::setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) {
    record(callLine("setEnable2", pid, key, enable));
    return status;
}

int RecordingService::enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    record(callLine("enabled2", pid, key));
    *static_cast<bool*>(out) = flag;
    return status;
}

int RecordingService::setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) {
    if (key == GCONF_LANGUAGE) {
        record(callLine("setGlobalConfig", pid, key, quoted(static_cast<const char*>(value))));
    } else if (isFloat(key)) {
        record(callLine("setGlobalConfig", pid, key, *static_cast<const float*>(value)));
    } else {
        record(callLine("setGlobalConfig", pid, key, *static_cast<const uint32_t*>(value)));
    }
    return status;
}

int RecordingService::globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    record(callLine("globalConfig", pid, key));
    if (key == GCONF_LANGUAGE) {
        std::memcpy(out, text.c_str(), text.size() + 1);
    } else if (isFloat(key)) {
        *static_cast<float*>(out) = real;
    } else {
        *static_cast<uint32_t*>(out) = number;
    }
    return status;
}

bool RecordingService::enabled() const {
    record("enabled()");
    return isEnabled;
}

int RecordingService::verbosity() {
    record("verbosity()");
    return status;
}

int RecordingService::globalRate() {
    record("globalRate()");
    return status;
}

int RecordingService::factoryReset(unsigned pid) {
    record(callLine("factoryReset", pid));
    return status;
}

int RecordingService::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    record(callLine("registerCallback", pid, cb != nullptr ? "a callback" : "null"));
    callback = cb;
    return status;
}

int RecordingService::deregisterCallback(unsigned pid) {
    record(callLine("deregisterCallback", pid));
    return status;
}

int RecordingService::lock(unsigned pid) {
    record(callLine("lock", pid));
    return status;
}

int RecordingService::unlock(unsigned pid) {
    record(callLine("unlock", pid));
    return status;
}

bool RecordingService::locked() {
    record("locked()");
    return isLocked;
}

int RecordingService::getCapabilities(TTS::Capabilities& caps) {
    record("getCapabilities()");
    caps = capabilities;
    return status;
}

}  // namespace support
