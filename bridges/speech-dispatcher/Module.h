// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_MODULE_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_MODULE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bridges/speech-dispatcher/Commands.h"
#include "bridges/speech-dispatcher/Config.h"
#include "bridges/speech-dispatcher/Log.h"
#include "bridges/speech-dispatcher/Speaker.h"
#include "bridges/speech-dispatcher/VoxtrelService.h"
#include "bridges/speech-dispatcher/Wishes.h"

namespace sd_voxtrel {

/// What the server wants, done through the service.
class Module : public Commands {
public:
    /// @param write gets events, whole lines with their LF.
    Module(VoxtrelService& service, const Config& config, Log& log,
           std::function<void(const std::string&)> write);

    /// Takes what the service has told, and looks at the time.
    void takeEvents();

    std::optional<Speaker::Clock::time_point> nextMoment() const { return mSpeaker.nextMoment(); }

    /// Some events that `speak` caused may be written only after its answer.
    void writeEvents();

    std::string begin() override;
    std::string setAudio(const Values& values) override;
    void setLogLevel(const Values& values) override;
    void set(const Values& values) override;
    std::vector<ListedVoice> voices(const std::string& language,
                                    const std::string& variant) override;
    bool speak(MessageKind kind, const std::string& text) override;
    void stop() override;
    void pause() override;
    bool debug(const std::string& path) override;

private:
    Message messageOf(MessageKind kind, const std::string& text);
    void setPunctuation();

    VoxtrelService& mService;
    const Config mConfig;
    Log& mLog;
    const std::function<void(const std::string&)> mWrite;
    std::string mEvents;  ///< not written yet
    Speaker mSpeaker;
    Wishes mWishes;
    std::optional<bool> mPunctuation;  ///< as the service was told
};

}  // namespace sd_voxtrel

#endif
