// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_ESPEAKENGINE_H
#define VOXTREL_SERVICE_ESPEAKENGINE_H

#include <string>
#include <vector>

#include "service/Engine.h"

namespace voxtreld {

/// The libespeak-ng engine. That library keeps its state in globals, so only one object of this
/// class may speak at a time. It is initialised by the first `load` and stays so to the process's
/// end: its own shutdown can wait for ever for its helper thread.
///
/// A language has its plain voice as number 1, then the engine's numbered variants, female ones
/// first ("en-us", "en-us+f1", ..., "en-us+m8").
class EspeakEngine : public Engine {
public:
    EspeakEngine() = default;
    EspeakEngine(const EspeakEngine&) = delete;
    EspeakEngine& operator=(const EspeakEngine&) = delete;

    bool load(std::string& error) override;
    unsigned sampleRate() const override { return mSampleRate; }
    std::vector<EngineVoice> voices() const override;
    bool speak(const std::string& text, const Prosody& prosody, SpeechReceiver& receiver) override;

private:
    struct Voice {
        EngineVoice offered;
        std::string espeakName;  ///< what the library selects it by
    };

    const Voice* find(EN_VOXTREL_LANGUAGE language, uint32_t number) const;
    bool apply(const Prosody& prosody);
    void setParameter(int parameter, int value, int& current);

    std::vector<Voice> mVoices;
    unsigned mSampleRate = 0;
    // Last values set in the library; setting them again would delay the first sound.
    const Voice* mCurrentVoice = nullptr;
    int mRate = -1;
    int mPitch = -1;
    int mPunctuation = -1;
};

}  // namespace voxtreld

#endif
