// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_PROTOCOL_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_PROTOCOL_H

#include <cstddef>
#include <functional>
#include <string>

#include "bridges/speech-dispatcher/Commands.h"

namespace sd_voxtrel {

/// The server's lines to commands, and what becomes of them to answers.
class Protocol {
public:
    /// Of longer messages the text is dropped, and of longer lists what is beyond.
    static constexpr std::size_t kLongestBody = 1 << 20;

    /// @param write gets answers, whole lines with their LF.
    Protocol(Commands& commands, std::function<void(const std::string&)> write)
        : mCommands(commands), mWrite(std::move(write)) {}

    void take(const std::string& line);

    /// The rest of a command is still to come: no event may be written until it has.
    bool isInside() const { return mBody != Body::None; }

    /// The server has said good-bye.
    bool hasEnded() const { return mHasEnded; }

private:
    /// What the lines are that follow a command.
    enum class Body { None, Audio, LogLevel, Settings, Message };

    void takeCommand(const std::string& line);
    bool beginBody(const std::string& line);
    void takeBodyLine(const std::string& line);
    void endBody();
    void endMessage();
    void endAudio();
    void listVoices(const std::string& arguments);
    void debug(const std::string& arguments);

    Commands& mCommands;
    const std::function<void(const std::string&)> mWrite;
    Body mBody = Body::None;
    MessageKind mKind = MessageKind::Text;
    std::string mText;
    Values mValues;
    std::size_t mLength = 0;  ///< of all lines of the body
    bool mHasEnded = false;
};

}  // namespace sd_voxtrel

#endif
