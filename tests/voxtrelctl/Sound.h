// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_SOUND_H
#define VOXTREL_TESTS_VOXTRELCTL_SOUND_H

#include <cstdint>
#include <string>
#include <vector>

namespace voxtrel_test {

/// A mono recording.
struct Sound {
    int rate = 0;  ///< Hz
    std::vector<int16_t> samples;

    double seconds() const { return static_cast<double>(samples.size()) / rate; }
    bool isSilent() const;

    /// Root of the mean square, 0 to 32767.
    double loudness() const;
};

/// The sound in a file; throws when it cannot be read or is not mono.
Sound readSound(const std::string& path);

/// What the speech engine makes of a text by itself, without any of our own code.
///
/// @param voice a language as the engine spells it, as in "en-us".
/// @param rate in words a minute.
Sound engineAlone(const std::string& text, const std::string& voice, int rate);

}  // namespace voxtrel_test

#endif
