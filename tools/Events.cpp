// SPDX-License-Identifier: Apache-2.0
#include "tools/Events.h"

#include <iterator>

#include "tools/Errors.h"
#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

using Kind = voxtrel::Event::Kind;
using State = voxtrel::Event::Setting;

/// By the number of the state.
constexpr const char* kStates[] = {
    "speech",     "verbosity",         "speed",    "speed-enable",  "pitch",     "pitch-enable",
    "voice",      "voice-enable",      "volume",   "volume-enable", "bg-volume", "bg-volume-enable",
    "tts-volume", "tts-volume-enable", "language", "lock",          "ready",     "reset"};
static_assert(std::size(kStates) == static_cast<std::size_t>(State::Reset) + 1);

bool isSwitch(State state) {
    const auto number = static_cast<std::uint32_t>(state);
    const bool isOfSetting = state > State::Verbosity && state < State::Language;
    return state == State::Speech || state == State::Ready || (isOfSetting && number % 2 == 1);
}

std::string describeState(const Event& event) {
    const auto state = static_cast<State>(event.about);
    if (state == State::Lock) {
        return event.value == 0 ? "lock: free"
                                : "lock: held by process " + std::to_string(event.value);
    }
    if (state == State::Reset) {
        return "reset: every setting went back to its default";
    }
    std::string value = std::to_string(event.value);
    if (isSwitch(state)) {
        value = event.value != 0 ? "on" : "off";
    } else if (state == State::Language) {
        value = TTS::langId2Str(static_cast<EN_VOXTREL_LANGUAGE>(event.value));
    }
    return stateName(event.about) + ": " + value;
}

std::string describeStop(int status) {
    return status == 0 ? "flushed" : std::to_string(status) + " " + meaningOf(status).meaning;
}

/// The service has told of such an end.
bool isTold(const voxtrel::Outcome& outcome) {
    return outcome.kind() != voxtrel::Outcome::Kind::Lost ||
           outcome.status() == voxtrel::Status::Shutdown;
}

}  // namespace

std::optional<Event> toEvent(const voxtrel::Event& told) {
    const auto number = static_cast<std::uint32_t>(told.utterance.number());
    switch (told.kind) {
        case Kind::Started:
            return Event{TTS::EVENT_STARTED, number, 0};
        case Kind::Word:
            return Event{TTS::EVENT_WORD, number,
                         static_cast<std::uint32_t>(told.position.characters), told.position.bytes};
        case Kind::Mark:
            return Event{TTS::EVENT_MARK, number, told.value};
        case Kind::Changed:
            return Event{TTS::EVENT_STATE, static_cast<std::uint32_t>(told.setting), told.value};
        case Kind::Ended:
            break;
        default:
            return std::nullopt;
    }
    if (told.outcome) {
        return Event{TTS::EVENT_FINISHED, number, 0};
    }
    const Event stop = {TTS::EVENT_STOPPED, number,
                        static_cast<std::uint32_t>(told.outcome.status())};
    return isTold(told.outcome) ? std::optional(stop) : std::nullopt;
}

int statusOf(const Event& event) {
    return static_cast<std::int32_t>(event.value);
}

std::string stateName(std::uint32_t state) {
    return state < std::size(kStates) ? kStates[state] : std::to_string(state);
}

const char* eventName(TTS::Event kind) {
    switch (kind) {
        case TTS::EVENT_STARTED:
            return "started";
        case TTS::EVENT_FINISHED:
            return "finished";
        case TTS::EVENT_STOPPED:
            return "stopped";
        case TTS::EVENT_WORD:
            return "word";
        case TTS::EVENT_MARK:
            return "mark";
        default:
            return "state";
    }
}

std::string describe(const Event& event) {
    std::string line = eventName(event.kind) + (" " + std::to_string(event.about));
    switch (event.kind) {
        case TTS::EVENT_STARTED:
        case TTS::EVENT_FINISHED:
            return line;
        case TTS::EVENT_STOPPED:
            return line + " (" + describeStop(statusOf(event)) + ")";
        case TTS::EVENT_WORD:
            return line + " at " + std::to_string(event.value);
        case TTS::EVENT_MARK:
            return line + " " + std::to_string(event.value);
        default:
            return describeState(event);
    }
}

}  // namespace voxtrelctl
