// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_ENGINE_H
#define VOXTREL_SERVICE_ENGINE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vocabulary/Language.h"

namespace voxtreld {

/// The scales on which clients give rate and pitch; an engine maps them to its own.
constexpr uint32_t kSpeedMin = 80;  ///< words a minute
constexpr uint32_t kSpeedMax = 900;
constexpr float kPitchMin = 0.0F;
constexpr float kPitchMax = 400.0F;  ///< 200 is the voice's own pitch
constexpr float kVolumeMin = 0.0F;
constexpr float kVolumeMax = 100.0F;  ///< percent of the engine's own loudness

/// A voice that an engine offers. Voices of a language are numbered from 1 in the order of the
/// list.
struct EngineVoice {
    EN_VOXTREL_LANGUAGE language;
    std::string name;  ///< unique in its language, without "," and "."
};

/// How to speak one text.
struct Prosody {
    EN_VOXTREL_LANGUAGE language = LANG_EN_US;
    uint32_t voice = 1;        ///< number within the language, from 1
    uint32_t speed = 300;      ///< `kSpeedMin` to `kSpeedMax`
    float pitch = 200.0F;      ///< `kPitchMin` to `kPitchMax`
    bool punctuation = false;  ///< punctuation marks are named as well
    bool markup = false;       ///< the text is an SSML document, see `Engine::speak`
    bool endPause = true;      ///< the pause behind a sentence follows the text
};

/// Takes speech as it is made. A word is announced right before its first sample.
class SpeechReceiver {
public:
    virtual ~SpeechReceiver() = default;

    /// @param offset in characters (code points) from the start of the text given to the engine.
    virtual void word(size_t offset) = 0;

    /// @param samples mono, at the engine's rate; valid during the call only.
    /// @return false: make no more, `speak` returns.
    virtual bool samples(const int16_t* samples, size_t count) = 0;
};

/// A text-to-speech engine. Called on: the speech thread only, except `sampleRate`, which may be
/// called from any thread once `load` has returned.
class Engine {
public:
    virtual ~Engine() = default;

    /// Loads what the engine needs. Slow; called once, before everything else.
    /// @return false, with `error` saying why, if the engine cannot be used.
    virtual bool load(std::string& error) = 0;

    /// In Hz.
    virtual unsigned sampleRate() const = 0;

    /// All voices of the five languages, those of one language together.
    virtual std::vector<EngineVoice> voices() const = 0;

    /// Speaks one text (valid UTF-8, a few sentences) and returns when all of it is handed over.
    ///
    /// A text that is marked up is well-formed, a few KiB long, and consists of `speak`,
    /// `prosody`, `emphasis`, `say-as` (no deeper than `MarkupReader::kDeepest`, with short
    /// values), and the references "&amp;", "&lt;" and "&gt;". What an engine does not know of it,
    /// it passes over. The offsets of its words count all characters of the document.
    /// @return false if the engine failed; true also when the receiver wanted no more.
    virtual bool speak(const std::string& text, const Prosody& prosody,
                       SpeechReceiver& receiver) = 0;
};

}  // namespace voxtreld

#endif
