// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOUND_CARD_LOOPBACKCARD_H
#define VOXTREL_TESTS_SOUND_CARD_LOOPBACKCARD_H

#include <alsa/asoundlib.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace voxtrel_test {

constexpr unsigned kCardRate = 22050;  ///< Hz, the speech engine's

/// The kernel's loopback card: what is played on it can be captured. Made with the object, by the
/// script that VOXTREL_SOUND_CARD_SCRIPT names, and removed with it.
class LoopbackCard {
public:
    LoopbackCard();
    ~LoopbackCard();
    LoopbackCard(const LoopbackCard&) = delete;
    LoopbackCard& operator=(const LoopbackCard&) = delete;

    static std::string sink() { return std::string("alsa:") + kPlayed; }

    void add();

    /// Begins to remove it, as if it were unplugged; this ends when nobody has it open any more.
    ChildProcess remove();

    static constexpr const char* kPlayed = "hw:Loopback,0,0";
    static constexpr const char* kCaptured = "hw:Loopback,1,0";

private:
    bool mIsThere = false;
};

/// What is heard from the card, from its first moment on: silence where nobody plays.
class Capture {
public:
    Capture();
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// All up to now.
    const std::vector<int16_t>& samples();
    /// How much that is, which is also a moment in time.
    size_t now() { return samples().size(); }

    bool hasSound();

    /// Waits until silence has followed the sound for a quarter of a second. False if it does not
    /// within a generous limit.
    bool awaitSilence();

private:
    snd_pcm_t* mPcm = nullptr;
    std::vector<int16_t> mSamples;
};

/// One behind the last sample that is not zero; 0 for silence.
size_t soundEnd(const std::vector<int16_t>& samples);

/// Without the silence at both ends.
std::vector<int16_t> soundOf(const std::vector<int16_t>& samples);

}  // namespace voxtrel_test

#endif
