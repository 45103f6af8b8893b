// SPDX-License-Identifier: Apache-2.0
#include "service/AlsaSink.h"

#include <poll.h>

#include <cerrno>
#include <chrono>

namespace voxtreld {
namespace {

constexpr unsigned kBufferMicroseconds = 80'000;
constexpr int kPollMilliseconds = 5;

/// ALSA prints its own complaints on standard error by default; ours says what to do instead.
void discardMessage(const char*, int, const char*, int, const char*, ...) {}

}  // namespace

AlsaSink::~AlsaSink() {
    closeCard();
}

bool AlsaSink::open(unsigned rate, std::string& error) {
    snd_lib_error_set_handler(discardMessage);
    mRate = rate;
    const int result = openCard();
    if (result < 0) {
        error = "no sound on the audio device '" + mDevice + "' (" + snd_strerror(result) +
                "): name another with --sink alsa:DEVICE, or write files with --sink wav:FILE";
        return false;
    }
    return true;
}

int AlsaSink::openCard() {
    int result = snd_pcm_open(&mPcm, mDevice.c_str(), SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK);
    if (result < 0) {
        mPcm = nullptr;
        return result;
    }
    constexpr unsigned kMono = 1;
    constexpr int kMayResample = 1;
    result = snd_pcm_set_params(mPcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, kMono,
                                mRate, kMayResample, kBufferMicroseconds);
    if (result < 0) {
        closeCard();
    }
    return result;
}

void AlsaSink::closeCard() {
    if (mPcm != nullptr) {
        snd_pcm_close(mPcm);
        mPcm = nullptr;
    }
}

bool AlsaSink::begin(uint32_t /*pid*/, uint32_t /*id*/) {
    if (mPcm != nullptr && snd_pcm_prepare(mPcm) == 0) {
        return true;
    }
    closeCard();
    return openCard() == 0;
}

bool AlsaSink::waitForRoom(const Cancel& cancel) {
    // The card's own descriptors, and the one that interrupts the wait.
    constexpr unsigned kMaxDescriptors = 15;
    pollfd requests[kMaxDescriptors + 1] = {};
    const int count = snd_pcm_poll_descriptors(mPcm, requests, kMaxDescriptors);
    if (count < 0) {
        return false;
    }
    requests[count] = {cancel.descriptor(), POLLIN, 0};
    (void)poll(requests, static_cast<nfds_t>(count) + 1, kPollMilliseconds);
    return true;
}

bool AlsaSink::write(const int16_t* samples, size_t count, const Cancel& cancel) {
    if (mPcm != nullptr && writeAll(samples, count, cancel)) {
        return true;
    }
    closeCard();
    return false;
}

bool AlsaSink::writeAll(const int16_t* samples, size_t count, const Cancel& cancel) {
    while (count > 0 && !cancel) {
        const snd_pcm_sframes_t taken = snd_pcm_writei(mPcm, samples, count);
        if (taken == -EAGAIN) {
            if (!waitForRoom(cancel)) {
                return false;
            }
            continue;
        }
        if (taken < 0) {
            if (snd_pcm_recover(mPcm, static_cast<int>(taken), 1) != 0) {
                return false;
            }
            continue;
        }
        samples += taken;
        count -= static_cast<size_t>(taken);
    }
    return true;
}

bool AlsaSink::end(const Cancel& cancel) {
    if (mPcm == nullptr) {
        return false;
    }
    // A short text may not have filled the buffer enough to start the card by itself.
    if (!cancel && snd_pcm_state(mPcm) == SND_PCM_STATE_PREPARED) {
        snd_pcm_start(mPcm);
    }
    const auto pause = std::chrono::milliseconds(kPollMilliseconds);
    snd_pcm_sframes_t waiting = 0;
    bool goOn = true;
    while (goOn && snd_pcm_state(mPcm) == SND_PCM_STATE_RUNNING &&
           snd_pcm_delay(mPcm, &waiting) == 0 && waiting > 0) {
        goOn = !cancel.sleepUntil(std::chrono::steady_clock::now() + pause);
    }
    if (snd_pcm_drop(mPcm) == 0) {
        return true;
    }
    closeCard();
    return false;
}

}  // namespace voxtreld
