// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_WISHES_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_WISHES_H

#include <map>
#include <string>
#include <vector>

#include "bridges/speech-dispatcher/Commands.h"
#include "bridges/speech-dispatcher/Service.h"

namespace sd_voxtrel {

/// Those voices whose language is this one, or, if there are none, another of the same first part
/// ("en" of "en-GB"); with the variant, if one is given. Empty texts choose all.
std::vector<ListedVoice> chosen(const std::vector<ListedVoice>& voices, const std::string& language,
                                const std::string& variant);

/// What the server has set, as it holds for the messages that follow.
class Wishes {
public:
    /// @param voiceTypes "female1" to a voice's name or number.
    explicit Wishes(std::map<std::string, std::string> voiceTypes)
        : mVoiceTypes(std::move(voiceTypes)) {}

    /// What is no such setting, or no value of it, changes nothing.
    void take(const Values& values);

    Style style() const;

    bool isSpelled() const { return mIsSpelled; }

    /// True: most or all punctuation is to be spoken.
    bool wantsPunctuation() const { return mWantsPunctuation; }

private:
    void take(const std::string& name, const std::string& value);

    const std::map<std::string, std::string> mVoiceTypes;
    std::string mLanguage;
    std::string mVoiceType;
    std::string mVoice;
    int mRate = 0;
    int mPitch = 0;
    int mVolume = 0;
    bool mIsSpelled = false;
    bool mWantsPunctuation = false;
};

}  // namespace sd_voxtrel

#endif
