// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_TTSSETTING_H
#define VOXTREL_PROFILE_TTSSETTING_H

#include <cstdint>
#include <string>

namespace TTS {

/// One settings profile in memory, and its file (format: docs/profile-format.md).
///
/// A plain value: copies are independent, and no operation but `deserialize` changes a field.
///
/// Path arguments: a path is the full name of a file, taken verbatim; a null path selects the
/// default profile, `defaultPath(mName)`.
///
/// Called on: any thread, one at a time for one object. Locks: none. Two writers of one file are
/// not kept apart.
class TtsSetting {
public:
    /// All values unset (65535), language "na_NL", everything enabled.
    ///
    /// @param name base name of the default profile.
    explicit TtsSetting(std::string name);

    /// @return "/Customer/" + `name` + ".ini".
    static std::string defaultPath(const std::string& name);

    /// Writes the profile, replacing what the file held, and has the system write its disks.
    ///
    /// The order on disk is one line at a time, and "/bin/sync" runs before the file is closed: a
    /// device may lose power right after. An enable field (or `mVerbosity`) that is neither 0 nor
    /// 1 is left out. `mLang` is written verbatim, so a line end in it ends its line.
    ///
    /// @return false, after a message on standard output, if the file cannot be opened for reading
    ///     and writing; nothing is changed then. True otherwise, **even if the data could not be
    ///     written**: on a full disk the file is left empty or cut short.
    bool serialize(const char* path) const;

    /// Reads a profile into the fields; a key that the file lacks keeps its field as it is.
    ///
    /// Lines that are not a setting, unknown keys and values out of range are skipped. Numbers
    /// are whole and stop at the first other character (1.5 reads as 1); beyond 32 bits they
    /// saturate. A line is held in memory whole.
    ///
    /// A profile whose path contains "voxtrel.ini" and that has no line with the current
    /// `mVersion` is upgraded: unset values get real ones, and the file is written again; not where
    /// an error ended the reading, since the file would lose what could not be read.
    ///
    /// @return false, after a message on standard output and with every field unchanged, if the
    ///     file cannot be opened; true otherwise, whatever is in it and whether or not an upgrade
    ///     could be written back. A directory opens and holds nothing.
    bool deserialize(const char* path);

    /// @return true exactly when something of any kind is there (symbolic links are followed).
    bool isExistProfile(const char* path) const;

    /// Deletes the file; that it cannot be deleted is not reported.
    void removeProfile(const char* path) const;

    /// Makes the destination a copy of the source, byte by byte, without "/bin/sync".
    ///
    /// Nothing is reported. A source that is missing or null leaves the destination **empty**, and
    /// so does a source that is the destination itself: it is emptied before it is read.
    ///
    /// @param destination follows the rule of path arguments.
    /// @param source always a full name; null does not select the default profile.
    void copyProfile(const char* destination, const char* source) const;

    std::string mName;            ///< base name of the default profile
    uint32_t mSpeed;              ///< "speed", rate; 65535: unset
    float mVolume;                ///< "volume", on the service's scale; 65535: unset
    uint32_t mMediaVolume;        ///< "media_volume", 0 to 100; 65535: unset
    uint32_t mTtsVolume;          ///< "tts_volume", 0 to 100; 65535: unset
    uint32_t mVoice;              ///< "voice"; 65535: unset
    float mPitch;                 ///< "pitch"; 65535: unset
    std::string mLang;            ///< "lang", locale code; "na_NL": unset
    int32_t mVerbosity;           ///< "verbosity", 0 or 1
    int32_t mEnable;              ///< "enable", 0 or 1: speech as a whole
    int32_t mSpeedEnable;         ///< "speed_enable", 0 or 1
    int32_t mPitchEnable;         ///< "pitch_enable", 0 or 1
    int32_t mVoiceEnable;         ///< "voice_enable", 0 or 1
    int32_t mVolumeEnable;        ///< "volume_enable", 0 or 1
    int32_t mMediaVolumeEnable;   ///< "media_volume_enable", 0 or 1
    int32_t mTtsVolumeEnable;     ///< "tts_volume_enable", 0 or 1
    int32_t mSampleRate;          ///< "sample_rate" of audio output in Hz; read, never written
    int32_t mChannels;            ///< "channels" of audio output; read, never written
    int32_t mMixerPath;           ///< "mixer_path", a number; read, never written
    int32_t mVersion;             ///< "version" of the format that this build writes
    int32_t mLongBreakDuration;   ///< "long_break_duration"; read, never written; 0 until then
    int32_t mShortBreakDuration;  ///< "short_break_duration"; read, never written; 0 until then

private:
    std::string fileOf(const char* path) const;
};

}  // namespace TTS

#endif
