// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_GLOBALSETTINGS_H
#define VOXTREL_SERVICE_GLOBALSETTINGS_H

#include <cstdint>
#include <string>
#include <vector>

#include "profile/TtsSetting.h"
#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Language.h"

namespace voxtreld {

/// A numeric setting that was never set.
constexpr uint32_t kUnset = 65535;

/// The settings that all clients share, in the form of the service's profile.
///
/// Every value is always a real one within its range: what a profile leaves unset, or sets to
/// nonsense, gets its default. Operations return a `Status` and change nothing unless it is 0.
///
/// Called on: one thread at a time. Locks: none.
class GlobalSettings {
public:
    /// Everything at its default.
    GlobalSettings();

    /// Takes over a profile.
    explicit GlobalSettings(const TTS::TtsSetting& profile);

    const TTS::TtsSetting& profile() const { return mProfile; }

    /// Tells which languages can be chosen and how many voices each has, by language id. Voice
    /// numbers are not checked against the engine before.
    void setVoiceCounts(std::vector<int32_t> counts) { mVoiceCounts = std::move(counts); }

    /// Sets the value of a key. @param value what the key carries, see `VOXTRELAPI_GCONF`.
    /// @return -3 for a key without a value and for a value out of range; then -9 for a value whose
    ///     flag is off and for a language that cannot be chosen.
    int set(VOXTRELAPI_GCONF key, const void* value);

    /// Reads the value of a key. @param out an integer or float, or 16 bytes for the language.
    /// @return -3 for a key without a value, with `out` untouched.
    int get(VOXTRELAPI_GCONF key, void* out) const;

    /// Switches a flag. @return -3 for a key that is no flag.
    int setFlag(VOXTRELAPI_GCONF key, bool on);

    /// @param out receives the flag. @return -3 for a key that is no flag, with `out` untouched.
    int flag(VOXTRELAPI_GCONF key, bool& out) const;

    /// @return -3 for anything but 0 and 1.
    int setVerbosity(int32_t verbosity);
    void setEnabled(bool on) { mProfile.mEnable = on ? 1 : 0; }

    /// Every value and flag back to its default.
    void reset();

    /// @return true if no value, flag or switch differs.
    bool isSameAs(const GlobalSettings& other) const;

    bool enabled() const { return mProfile.mEnable != 0; }
    int32_t verbosity() const { return mProfile.mVerbosity; }
    uint32_t speed() const { return mProfile.mSpeed; }
    float pitch() const { return mProfile.mPitch; }
    float volume() const { return mProfile.mVolume; }
    uint32_t backgroundVolume() const { return mProfile.mMediaVolume; }
    uint32_t ttsVolume() const { return mProfile.mTtsVolume; }
    uint32_t voice() const { return mProfile.mVoice; }
    EN_VOXTREL_LANGUAGE language() const { return TTS::langStr2Id(mProfile.mLang); }

    /// Voices of a language; 0 for an id that is no language.
    uint32_t voiceCount(EN_VOXTREL_LANGUAGE language) const;

    /// The value of a key as an event carries it: a number's whole part, the language's id.
    uint32_t eventValue(VOXTRELAPI_GCONF key) const;

private:
    int setLanguage(const char* code);
    int setVoice(uint32_t number);
    void repair();

    TTS::TtsSetting mProfile;
    std::vector<int32_t> mVoiceCounts;
};

/// True within the range of a float setting that a request or a profile may give; false for NaN.
bool isPitch(float value);
bool isVolume(float value);
bool isSpeed(uint32_t value);

}  // namespace voxtreld

#endif
