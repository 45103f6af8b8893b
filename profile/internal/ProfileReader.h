// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_PROFILEREADER_H
#define VOXTREL_PROFILE_INTERNAL_PROFILEREADER_H

#include <cstddef>
#include <string>

#include "profile/TtsSetting.h"

namespace TTS {

/// Reads the lines of a profile into the fields, as `TtsSetting::deserialize` does; no upgrade, and
/// nothing is printed. Holds one line in memory, whatever the length of the file.
class ProfileReader {
public:
    /// `setting` must outlive the reader.
    explicit ProfileReader(TtsSetting& setting) : mSetting(setting) {}

    /// Takes the next bytes of the profile and applies the lines that end in them.
    void take(const char* bytes, size_t size);

    /// Applies a last line that has no end. Not after an error, which may have cut it short.
    void finish() { applyLine(); }

    /// A line says that the profile has the setting's `mVersion`.
    bool isCurrent() const { return mIsCurrent; }

private:
    void applyLine();

    TtsSetting& mSetting;
    std::string mLine;
    bool mIsCurrent = false;
};

}  // namespace TTS

#endif
