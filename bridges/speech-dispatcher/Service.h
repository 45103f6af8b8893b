// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_SERVICE_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_SERVICE_H

#include <optional>
#include <string>

namespace sd_voxtrel {

/// How a message is to be spoken, in the desktop's terms.
struct Style {
    std::optional<std::string> language;  ///< a tag; without: the service's own
    std::optional<std::string> voice;     ///< a name, or a number in the language
    std::optional<std::string> fallback;  ///< the language, if the voice is given up
    int rate = 0;  ///< -100 to 100; 0: the service's own; so are the next two
    int pitch = 0;
    int volume = 0;
    bool isMute = false;  ///< the least loudness that the service has, as fast as it can

    /// Gives up what a service has least likely. @return false: there is nothing left to give up.
    bool relax();
};

/// What a service tells.
struct ServiceEvent {
    enum class Kind {
        Connected,
        Disconnected,
        Started,
        Word,
        Mark,
        Finished,
        Stopped,
        Refused,  ///< something that is now may not be later
        Unable,   ///< refused because the service has no such language, voice or value
        Lost,
    };

    Kind kind = Kind::Connected;
    unsigned long utterance = 0;
    unsigned long mark = 0;  ///< its number in the text
    bool wasHeard = false;   ///< of `Lost`
    std::string why;         ///< of those that ended badly
};

/// The service, as far as a speaker needs it. No function waits longer than 100 ms.
class Service {
public:
    virtual ~Service() = default;

    virtual bool isConnected() = 0;

    /// True if it answers: neither stopped nor stuck.
    virtual bool answers() = 0;

    /// @return the number that its events carry; 0: it cannot be said.
    virtual unsigned long say(const std::string& text, const Style& style) = 0;

    /// Ends all that was said.
    virtual void stop() = 0;
};

}  // namespace sd_voxtrel

#endif
