// SPDX-License-Identifier: Apache-2.0
#include "tests/sound_card/LoopbackCard.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>

#include "tests/support/Eventually.h"

namespace voxtrel_test {
namespace {

constexpr unsigned kBufferMicroseconds = 20'000'000;  // more than any test plays

std::string script() {
    const char* named = std::getenv("VOXTREL_SOUND_CARD_SCRIPT");
    if (named == nullptr) {
        throw std::runtime_error("VOXTREL_SOUND_CARD_SCRIPT names no script");
    }
    return named;
}

void require(int result, const std::string& what) {
    if (result < 0) {
        throw std::runtime_error(what + ": " + snd_strerror(result));
    }
}

}  // namespace

LoopbackCard::LoopbackCard() {
    add();
}

LoopbackCard::~LoopbackCard() {
    if (mIsThere) {
        remove().wait();
    }
}

void LoopbackCard::add() {
    const Outcome added = ChildProcess({script(), "add"}, ChildProcess::Errors::Apart).finish();
    if (added.status != 0) {
        throw std::runtime_error(added.err);
    }
    mIsThere = true;
}

ChildProcess LoopbackCard::remove() {
    mIsThere = false;
    return ChildProcess({script(), "remove"}, ChildProcess::Errors::Apart);
}

Capture::Capture() {
    require(snd_pcm_open(&mPcm, LoopbackCard::kCaptured, SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK),
            "the card cannot be captured");
    require(snd_pcm_set_params(mPcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, 1,
                               kCardRate, 0, kBufferMicroseconds),
            "the card's capture takes other parameters");
    require(snd_pcm_start(mPcm), "the capture does not start");
}

Capture::~Capture() {
    snd_pcm_close(mPcm);
}

const std::vector<int16_t>& Capture::samples() {
    std::array<int16_t, 4096> piece = {};
    snd_pcm_sframes_t count = 0;
    while ((count = snd_pcm_readi(mPcm, piece.data(), piece.size())) > 0) {
        mSamples.insert(mSamples.end(), piece.begin(), piece.begin() + count);
    }
    if (count != -EAGAIN) {
        require(static_cast<int>(count), "the capture ended");
    }
    return mSamples;
}

bool Capture::hasSound() {
    return soundEnd(samples()) > 0;
}

bool Capture::awaitSilence() {
    return eventually([this] { return now() >= soundEnd(mSamples) + kCardRate / 4; });
}

size_t soundEnd(const std::vector<int16_t>& samples) {
    const auto last =
        std::find_if(samples.rbegin(), samples.rend(), [](int16_t each) { return each != 0; });
    return static_cast<size_t>(samples.rend() - last);
}

std::vector<int16_t> soundOf(const std::vector<int16_t>& samples) {
    const auto first =
        std::find_if(samples.begin(), samples.end(), [](int16_t each) { return each != 0; });
    const auto end = samples.begin() + static_cast<std::ptrdiff_t>(soundEnd(samples));
    return first == samples.end() ? std::vector<int16_t>() : std::vector<int16_t>(first, end);
}

}  // namespace voxtrel_test
