// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_EVENTS_H
#define VOXTREL_TOOLS_EVENTS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "vocabulary/Events.h"
#include "voxtrel/Event.h"

namespace voxtrelctl {

/// One event as a service sends it: what it is, the utterance or the state that it is about, and
/// the place, the reason or the new value.
struct Event {
    TTS::Event kind = TTS::EVENT_STATE;
    std::uint32_t about = 0;
    std::uint32_t value = 0;
    std::size_t byte = 0;  ///< of the text: where a word begins
};

/// What a client's handler was told; nothing for what concerns the connection, and for an end of
/// which the service has not told.
std::optional<Event> toEvent(const voxtrel::Event& told);

/// The value of a stopped event as the status it is: 0 for a flush, else the reason.
int statusOf(const Event& event);

/// "started", "finished", "stopped", "word", "mark" or "state".
const char* eventName(TTS::Event kind);

/// What a state event is about: "lock", "speech", "speed", "speed-enable"; a number that this
/// program does not know is given in decimal.
std::string stateName(std::uint32_t state);

/// The event in one line for a person, without a line end.
std::string describe(const Event& event);

}  // namespace voxtrelctl

#endif
