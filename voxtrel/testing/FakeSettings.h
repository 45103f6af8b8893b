// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESETTINGS_H
#define VOXTREL_TESTING_FAKESETTINGS_H

#include <array>
#include <cstdint>
#include <string>

#include "vocabulary/Capabilities.h"
#include "vocabulary/GlobalConfig.h"

namespace voxtrel::testing {

/// The settings of a fake service. Operations return a status, and change nothing unless it is 0.
/// Called on: one thread at a time.
class FakeSettings {
public:
    int set(VOXTRELAPI_GCONF key, const void* value);
    int get(VOXTRELAPI_GCONF key, void* out) const;
    int turn(VOXTRELAPI_GCONF key, bool on);
    int isOn(VOXTRELAPI_GCONF key, bool& out) const;

    int setVerbosity(int verbosity);
    int verbosity() const { return mVerbosity; }
    bool isEnabled() const { return mIsEnabled; }
    void enable(bool on) { mIsEnabled = on; }

    /// The value as an event tells it: numbers as their whole part, the language as its id.
    std::uint32_t told(VOXTRELAPI_GCONF key) const;

    /// "speed", whether it is the value's key or that of its switch; empty for none.
    static std::string nameOf(VOXTRELAPI_GCONF key);

    static TTS::Capabilities capabilities();

private:
    struct Number {
        VOXTRELAPI_GCONF key;
        double value;
        bool isOn;
    };
    Number* find(VOXTRELAPI_GCONF key);
    const Number* find(VOXTRELAPI_GCONF key) const;

    std::array<Number, 6> mNumbers = {{{GCONF_SPEED, 300, true},
                                       {GCONF_PITCH, 200, true},
                                       {GCONF_VOICE, 0, true},
                                       {GCONF_VOLUME, 100, true},
                                       {GCONF_BG_VOLUME, 50, true},
                                       {GCONF_TTS_VOLUME, 100, true}}};
    EN_VOXTREL_LANGUAGE mLanguage = LANG_EN_US;
    int mVerbosity = 0;
    bool mIsEnabled = true;
};

}  // namespace voxtrel::testing

#endif
