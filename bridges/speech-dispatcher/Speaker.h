// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_SPEAKER_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_SPEAKER_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bridges/speech-dispatcher/MarkupProbe.h"
#include "bridges/speech-dispatcher/Service.h"

namespace sd_voxtrel {

struct Message {
    std::string text;  ///< marked up, or plain
    Style style;
    bool isSpelled = false;
    std::string trouble = {};  ///< why it cannot be spoken; empty: it can
};

/// Has one message at a time spoken, and tells the server of it: begin, marks, and exactly one end,
/// whatever the service does. A message without an end would silence the whole desktop.
///
///     Idle --start--> Held --say--> Said --pause--> Pausing
///                      ^             |  |              |
///                      +----lost-----+  +---- Ending <-+     each of them, in the end: Idle
///
/// Held: there is no service yet, or it is not known whether it understands marks. Pausing: until
/// the next mark. Ending: the service has been told to stop.
class Speaker {
public:
    using Clock = std::chrono::steady_clock;

    /// @param write gets events, whole lines with their LF.
    Speaker(Service& service, MarkupPolicy policy, std::function<void(const std::string&)> write)
        : mService(service), mProbe(service, policy), mWrite(std::move(write)) {}

    bool isIdle() const { return mState == State::Idle; }

    /// Only while it is idle. @param timeout how long a service that is absent, or does not
    /// answer, is waited for.
    void start(Message message, std::chrono::milliseconds timeout, Clock::time_point now);

    /// Both do nothing while it is idle.
    void stop(Clock::time_point now);
    void pause(Clock::time_point now);

    void onEvent(const ServiceEvent& event, Clock::time_point now);

    /// When `onTime` must be called, if nothing happens before.
    std::optional<Clock::time_point> nextMoment() const;
    void onTime(Clock::time_point now);

    /// Why the last message was not spoken to its end; empty if it was.
    const std::string& trouble() const { return mTrouble; }

private:
    enum class State { Idle, Held, Said, Pausing, Ending };
    enum class End { End, Stop, Pause };

    void hold(Clock::time_point now);
    void tryToSay(Clock::time_point now);
    std::string textToSay() const;
    void say(Clock::time_point now);
    void take(const ServiceEvent& event, Clock::time_point now);
    void takeMark(unsigned long number, Clock::time_point now);
    void takeLost(const ServiceEvent& event, Clock::time_point now);
    void doubt(Clock::time_point now);
    End wantedEnd() const;
    void endWith(End end, Clock::time_point now);
    void begin();
    void finish(End end);

    Service& mService;
    MarkupProbe mProbe;
    const std::function<void(const std::string&)> mWrite;
    State mState = State::Idle;
    Clock::time_point mMoment;    ///< when the state is looked at again
    Clock::time_point mLastNews;  ///< the service was there and answered
    std::chrono::milliseconds mTimeout{0};
    Message mMessage;
    std::vector<std::string> mMarks;  ///< of what was said; empty if it went without markup
    unsigned long mLastMark = 0;
    unsigned long mNumber = 0;  ///< of what was said
    unsigned mLosses = 0;
    bool mHasAsked = false;  ///< the probe, for this message
    bool mHasBegun = false;
    End mEnd = End::Stop;  ///< of `Ending`
    std::string mTrouble;
};

}  // namespace sd_voxtrel

#endif
