// SPDX-License-Identifier: Apache-2.0
#include "service/Mixer.h"

#include <algorithm>
#include <cmath>

namespace voxtreld {

Background::~Background() {
    if (mFile != nullptr) {
        sf_close(mFile);
    }
}

bool Background::open(const std::string& path, unsigned rate, std::string& error) {
    SF_INFO info = {};
    mFile = sf_open(path.c_str(), SFM_READ, &info);
    if (mFile == nullptr) {
        error = "cannot read the background sound '" + path + "': " + sf_strerror(nullptr);
        return false;
    }
    if (info.samplerate != static_cast<int>(rate)) {
        error = "the background sound '" + path + "' has " + std::to_string(info.samplerate) +
                " samples a second: convert it to " + std::to_string(rate);
        return false;
    }
    mChannels = static_cast<unsigned>(info.channels);
    mFrames.resize(static_cast<size_t>(rate) * mChannels);
    if (!refill()) {
        error = "the background sound '" + path + "' is empty";
        return false;
    }
    return true;
}

bool Background::refill() {
    const auto room = static_cast<sf_count_t>(mFrames.size() / mChannels);
    sf_count_t got = sf_readf_short(mFile, mFrames.data(), room);
    if (got <= 0) {
        sf_seek(mFile, 0, SEEK_SET);
        got = sf_readf_short(mFile, mFrames.data(), room);
    }
    mNext = 0;
    mFrameCount = static_cast<size_t>(std::max<sf_count_t>(got, 0));
    return mFrameCount > 0;
}

void Background::read(int16_t* samples, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (mNext == mFrameCount && !refill()) {
            samples[i] = 0;
            continue;
        }
        int sum = 0;
        for (unsigned channel = 0; channel < mChannels; ++channel) {
            sum += mFrames[mNext * mChannels + channel];
        }
        samples[i] = static_cast<int16_t>(sum / static_cast<int>(mChannels));
        ++mNext;
    }
}

const int16_t* Mixer::mix(const int16_t* speech, size_t count, float gain, float backgroundGain) {
    const bool plain = mBackground == nullptr && gain == 1.0F;
    if (plain) {
        return speech;
    }
    mMixed.assign(count, 0);
    if (mBackground != nullptr) {
        mBackground->read(mMixed.data(), count);
    }
    for (size_t i = 0; i < count; ++i) {
        const float sum =
            static_cast<float>(speech[i]) * gain + static_cast<float>(mMixed[i]) * backgroundGain;
        mMixed[i] = static_cast<int16_t>(std::lround(std::clamp(sum, -32768.0F, 32767.0F)));
    }
    return mMixed.data();
}

}  // namespace voxtreld
