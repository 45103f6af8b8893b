// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_EVENTS_H
#define VOXTREL_TOOLS_EVENTS_H

#include <cstdint>
#include <string>

#include "vocabulary/Events.h"

namespace voxtrelctl {

/// What the first number of a notification says.
enum class EventKind : uint32_t {
    Unknown = 0,
    Started = TTS::EVENT_STARTED,
    Finished = TTS::EVENT_FINISHED,
    Stopped = TTS::EVENT_STOPPED,
    Word = TTS::EVENT_WORD,
    State = TTS::EVENT_STATE,
    Setting = TTS::EVENT_SETTING,
    Mark = TTS::EVENT_MARK,
};

/// One notification, as its three numbers.
struct Event {
    uint32_t first = 0;
    uint32_t second = 0;
    uint32_t third = 0;
};

/// Unknown for a number this program does not know.
EventKind kindOf(const Event& event);

/// The last event of an utterance: finished or stopped.
bool isTerminal(const Event& event);

/// True for the events that name an utterance in their second number.
bool isOfUtterance(const Event& event);

/// The third number of a stopped event as the status it is: 0 for a flush, else the reason.
int statusOf(const Event& event);

/// One word for the kind, as JSON and plain lines show it: "started", "word", "unknown" and so on.
const char* kindName(EventKind kind);

/// What a state event is about: "lock", "speech", "speed", "speed-enable"; a number that this
/// program does not know is given in decimal.
std::string stateName(uint32_t second);

/// The new value of a state event for a person: "on", "off", a language code, a number.
std::string stateValue(uint32_t second, uint32_t third);

/// The event in one line for a person, without a line end.
std::string describe(const Event& event);

/// True for the news that this client's user may not do what it asked for.
bool isRefusal(const Event& event);

/// "this user may not take the lock", for the request that such an event is about.
std::string describeRefusal(const Event& event);

}  // namespace voxtrelctl

#endif
