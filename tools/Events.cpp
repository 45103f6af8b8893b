// SPDX-License-Identifier: Apache-2.0
#include "tools/Events.h"

#include "tools/Errors.h"
#include "tools/Settings.h"
#include "vocabulary/Language.h"

namespace voxtrelctl {
namespace {

constexpr const char* kKindNames[] = {"unknown", "started", "finished", "stopped",
                                      "word",    "state",   "setting",  "mark"};
constexpr const char* kSettingNames[] = {"language", "speed",     "pitch",     "voice",
                                         "volume",   "bg-volume", "tts-volume"};

struct StateNames {
    const char* name;
    uint32_t second;
    bool isSwitch;
};

constexpr StateNames kStates[] = {
    {"speech", TTS::STATE_ENABLED, true}, {"verbosity", TTS::STATE_VERBOSITY, false},
    {"lock", TTS::STATE_LOCK, false},     {"ready", TTS::STATE_READY, true},
    {"reset", TTS::STATE_RESET, false},   {"refused", TTS::STATE_REFUSED, false},
};

const StateNames* ownState(uint32_t second) {
    for (const StateNames& state : kStates) {
        if (state.second == second) {
            return &state;
        }
    }
    return nullptr;
}

bool isFlag(uint32_t second) {
    const StateNames* own = ownState(second);
    return own != nullptr ? own->isSwitch : second % 2 == 1 && second <= GCONF_TTS_VOLUME_ENABLE;
}

std::string describeState(const Event& event) {
    if (event.second == TTS::STATE_LOCK) {
        return event.third == 0 ? "lock: free"
                                : "lock: held by process " + std::to_string(event.third);
    }
    if (event.second == TTS::STATE_RESET) {
        return "reset: every setting went back to its default";
    }
    if (event.second == TTS::STATE_REFUSED) {
        return "refused: " + describeRefusal(event);
    }
    return stateName(event.second) + ": " + stateValue(event.second, event.third);
}

std::string describeStop(const Event& event) {
    const int status = statusOf(event);
    const std::string what = "stopped " + std::to_string(event.second);
    return status == 0
               ? what + " (flushed)"
               : what + " (" + std::to_string(status) + " " + meaningOf(status).meaning + ")";
}

}  // namespace

EventKind kindOf(const Event& event) {
    return event.first <= static_cast<uint32_t>(EventKind::Mark)
               ? static_cast<EventKind>(event.first)
               : EventKind::Unknown;
}

bool isTerminal(const Event& event) {
    return kindOf(event) == EventKind::Finished || kindOf(event) == EventKind::Stopped;
}

bool isOfUtterance(const Event& event) {
    return kindOf(event) == EventKind::Started || kindOf(event) == EventKind::Word ||
           kindOf(event) == EventKind::Mark || isTerminal(event);
}

int statusOf(const Event& event) {
    return static_cast<int32_t>(event.third);
}

bool isRefusal(const Event& event) {
    return kindOf(event) == EventKind::State && event.second == TTS::STATE_REFUSED;
}

std::string describeRefusal(const Event& event) {
    const std::string user = "this user may not ";
    switch (event.third) {
        case TTS::REQUEST_STOP:
            return user + "stop what others say";
        case TTS::REQUEST_LOCK:
            return user + "take the lock";
        case TTS::REQUEST_UNLOCK:
            return user + "free the lock";
        default:
            return user + "do that (request " + std::to_string(event.third) + ")";
    }
}

const char* kindName(EventKind kind) {
    return kKindNames[static_cast<uint32_t>(kind)];
}

std::string stateName(uint32_t second) {
    if (const StateNames* own = ownState(second)) {
        return own->name;
    }
    for (const Setting& setting : settings()) {
        if (static_cast<uint32_t>(setting.key) == second) {
            return setting.name;
        }
        if (hasFlag(setting) && static_cast<uint32_t>(setting.flag) == second) {
            return std::string(setting.name) + "-enable";
        }
    }
    return std::to_string(second);
}

std::string stateValue(uint32_t second, uint32_t third) {
    if (isFlag(second)) {
        return third != 0 ? "on" : "off";
    }
    if (second == GCONF_LANGUAGE) {
        return TTS::langId2Str(static_cast<EN_VOXTREL_LANGUAGE>(third));
    }
    return std::to_string(third);
}

std::string describe(const Event& event) {
    const std::string second = std::to_string(event.second);
    switch (kindOf(event)) {
        case EventKind::Started:
            return "started " + second;
        case EventKind::Finished:
            return "finished " + second;
        case EventKind::Stopped:
            return describeStop(event);
        case EventKind::Word:
            return "word " + second + " at " + std::to_string(event.third);
        case EventKind::Mark:
            return "mark " + second + " " + std::to_string(event.third);
        case EventKind::State:
            return describeState(event);
        case EventKind::Setting:
            return std::string("setting: ") + (event.third < std::size(kSettingNames)
                                                   ? kSettingNames[event.third]
                                                   : "unknown");
        default:
            return "unknown event " + std::to_string(event.first) + " " + second + " " +
                   std::to_string(event.third);
    }
}

}  // namespace voxtrelctl
