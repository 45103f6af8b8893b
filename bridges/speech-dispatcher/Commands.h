// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_COMMANDS_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_COMMANDS_H

#include <string>
#include <utility>
#include <vector>

namespace sd_voxtrel {

/// What a message is.
enum class MessageKind {
    Text,
    Character,
    Key,
    SoundIcon,
    TooLong,  ///< of any kind, without its text
};

struct ListedVoice {
    std::string name;
    std::string language;  ///< as a tag, "fr-FR"
    std::string variant;   ///< "none" for a language's plain voice
};

/// Lines "name=value", in their order.
using Values = std::vector<std::pair<std::string, std::string>>;

/// What the server wants of a module, free of the protocol's form.
class Commands {
public:
    virtual ~Commands() = default;

    /// @return one line of English: what is there.
    virtual std::string begin() = 0;

    /// @return empty, or why there cannot be such sound: one line of English.
    virtual std::string setAudio(const Values& values) = 0;

    virtual void setLogLevel(const Values& values) = 0;

    /// What is not known is passed over.
    virtual void set(const Values& values) = 0;

    /// Those of a language (a tag, or empty) and a variant (or empty).
    virtual std::vector<ListedVoice> voices(const std::string& language,
                                            const std::string& variant) = 0;

    /// @return false if it cannot be spoken; else its events follow, the end among them.
    virtual bool speak(MessageKind kind, const std::string& text) = 0;

    virtual void stop() = 0;
    virtual void pause() = 0;

    /// @param path where to write what happens; empty: nowhere. @return false: it cannot be opened.
    virtual bool debug(const std::string& path) = 0;
};

}  // namespace sd_voxtrel

#endif
