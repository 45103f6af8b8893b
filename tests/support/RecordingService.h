// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_RECORDINGSERVICE_H
#define VOXTREL_TESTS_SUPPORT_RECORDINGSERVICE_H

#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "ipc/BnTextToSpeechFestival.h"

namespace support {

/// A service that writes down every call as a line of text, such as `say(1000, 7, "Hello", ...)`,
/// and answers what the test has set. Set the answers before the first call.
///
/// Called on: any thread. Locks: one of its own around the lines.
class RecordingService : public TTS::BnTextToSpeechFestival {
public:
    int status = 0;                  ///< result of every operation that returns an int
    bool flag = false;               ///< stored by `enabled2`
    uint32_t number = 0;             ///< stored by `globalConfig` for integer keys
    float real = 0.0F;               ///< stored by `globalConfig` for float keys
    std::string text;                ///< stored by `globalConfig` for the language, with its NUL
    bool isEnabled = false;          ///< result of `enabled`
    bool isLocked = false;           ///< result of `locked`
    TTS::Capabilities capabilities;  ///< stored by `getCapabilities`
    android::sp<TTS::ICallback> callback;  ///< what `registerCallback` brought last

    /// The calls so far, oldest first.
    std::vector<std::string> calls() const;

    int say(unsigned pid, unsigned id, const std::string& words, unsigned speed, float volume,
            unsigned voice, unsigned bgVolume, unsigned ttsVolume, float pitch,
            EN_VOXTREL_LANGUAGE language) override;
    int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) override;
    int stopAndFlush(unsigned pid, unsigned arg) override;
    int setEnable(unsigned pid, bool enable) override;
    int setVerbosity(unsigned pid, int verbosity) override;
    int setGlobalRate(unsigned pid, unsigned rate) override;
    int setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) override;
    int enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;
    int setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) override;
    int globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;
    bool enabled() const override;
    int verbosity() override;
    int globalRate() override;
    int factoryReset(unsigned pid) override;
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) override;
    int deregisterCallback(unsigned pid) override;
    int lock(unsigned pid) override;
    int unlock(unsigned pid) override;
    bool locked() override;
    int getCapabilities(TTS::Capabilities& caps) override;

private:
    void record(const std::string& line) const;

    mutable std::mutex mMutex;
    mutable std::vector<std::string> mCalls;
};

/// `name(a, b, c)`, with numbers as they print and texts in quotes.
template <typename... Values>
std::string callLine(const char* name, const Values&... values) {
    std::ostringstream line;
    const char* separator = "";
    line << name << '(';
    ((line << separator << values, separator = ", "), ...);
    line << ')';
    return line.str();
}

/// `text` in quotes.
std::string quoted(const std::string& text);

}  // namespace support

#endif
