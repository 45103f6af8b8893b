// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SPEECH_DISPATCHER_SPEAKERTEST_H
#define VOXTREL_TESTS_SPEECH_DISPATCHER_SPEAKERTEST_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "bridges/speech-dispatcher/Speaker.h"

namespace sd_voxtrel {

using Kind = ServiceEvent::Kind;

/// Does what the test says, and notes what is wanted of it.
class FakeService : public Service {
public:
    bool isConnected() override { return connected; }
    bool answers() override { return answering; }
    unsigned long say(const std::string& text, const Style& style) override {
        said.push_back(text);
        styles.push_back(style);
        return isFull ? 0 : ++number;
    }
    void stop() override { ++stops; }

    bool connected = true;
    bool answering = true;
    bool isFull = false;
    unsigned long number = 0;
    int stops = 0;
    std::vector<std::string> said;
    std::vector<Style> styles;
};

class ASpeaker : public ::testing::Test {
protected:
    static constexpr std::chrono::milliseconds kTimeout{3000};

    explicit ASpeaker(MarkupPolicy policy = MarkupPolicy::Always)
        : speaker(service, policy, [this](const std::string& lines) { written += lines; }) {}

    void start(const std::string& text, Style style = {}) {
        speaker.start({text, std::move(style), false}, kTimeout, now);
    }
    void tell(Kind kind, unsigned long mark = 0) { tellOf(service.number, kind, mark); }
    void tellOf(unsigned long utterance, Kind kind, unsigned long mark = 0) {
        ServiceEvent event;
        event.kind = kind;
        event.utterance = utterance;
        event.mark = mark;
        event.why = "why";
        speaker.onEvent(event, now);
    }
    void loseHeard() {
        ServiceEvent event;
        event.kind = Kind::Lost;
        event.utterance = service.number;
        event.wasHeard = true;
        speaker.onEvent(event, now);
    }
    /// Lets time pass as a loop does that looks at `nextMoment`.
    void wait(std::chrono::milliseconds time) {
        const auto end = now + time;
        while (speaker.nextMoment() && *speaker.nextMoment() <= end) {
            now = std::max(now, *speaker.nextMoment());
            speaker.onTime(now);
        }
        now = end;
    }
    /// What was written since this was last asked.
    std::string events() { return std::exchange(written, ""); }

    FakeService service;
    Speaker::Clock::time_point now{std::chrono::hours(1)};
    std::string written;
    Speaker speaker;
};

constexpr const char* kMarked = "<speak>a<mark name=\"x\"/>b<mark name=\"y\"/>c</speak>";

}  // namespace sd_voxtrel

#endif
