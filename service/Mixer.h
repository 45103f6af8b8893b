// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_MIXER_H
#define VOXTREL_SERVICE_MIXER_H

#include <sndfile.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace voxtreld {

/// A sound file that is played over and over beneath speech. Only a second of it is in memory.
class Background {
public:
    Background() = default;
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    /// @param rate that the file must have, since nothing here resamples.
    /// @return false, with `error` saying what is wrong and what to do.
    bool open(const std::string& path, unsigned rate, std::string& error);

    /// Fills `samples` with the next `count` samples, channels averaged into one.
    void read(int16_t* samples, size_t count);

private:
    bool refill();

    SNDFILE* mFile = nullptr;
    unsigned mChannels = 1;
    std::vector<int16_t> mFrames;  ///< as the file has them, channels side by side
    size_t mNext = 0;
    size_t mFrameCount = 0;
};

/// Applies volumes: speech and background sound become one stream. Called on: the speech thread.
class Mixer {
public:
    /// @param background may be null.
    explicit Mixer(std::unique_ptr<Background> background) : mBackground(std::move(background)) {}

    /// @param gain, backgroundGain 0 to 1. Louder sums are cut at the limits of 16 bits.
    /// @return `count` samples: the ones given, or a buffer that is valid until the next call.
    const int16_t* mix(const int16_t* speech, size_t count, float gain, float backgroundGain);

private:
    std::unique_ptr<Background> mBackground;
    std::vector<int16_t> mMixed;
};

}  // namespace voxtreld

#endif
