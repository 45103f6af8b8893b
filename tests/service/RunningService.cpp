// SPDX-License-Identifier: Apache-2.0
#include "tests/service/RunningService.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>

#include "vocabulary/Events.h"

namespace voxtreld {

using namespace TTS;

namespace {

EventLine parse(const std::string& line) {
    std::istringstream in(line);
    std::string word;
    EventLine parsed;
    in >> word >> parsed.event >> parsed.second >> parsed.third;
    parsed.isEvent = word == "event" && !in.fail();
    return parsed;
}

bool isTerminal(const EventLine& line) {
    return line.isEvent && (line.event == EVENT_FINISHED || line.event == EVENT_STOPPED);
}

}  // namespace

std::string eventLine(unsigned event, unsigned second, int third) {
    return "event " + std::to_string(event) + " " + std::to_string(second) + " " +
           std::to_string(third);
}

ARunningService::ARunningService() {
    setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
    manager = startManager();
}

Process ARunningService::startService(const Lines& options) {
    Lines command = {VOXTREL_SERVICE};
    if (std::count(options.begin(), options.end(), "--profile") == 0) {
        command.insert(command.end(), {"--profile", folder.path("voxtrel.ini")});
    }
    command.insert(command.end(), options.begin(), options.end());
    return startProcess(command);
}

std::vector<EventLine> ARunningService::eventsUntilEnded(ChildProcess& client, size_t utterances,
                                                         Lines lines) {
    auto ended =
        static_cast<size_t>(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
            return isTerminal(parse(line));
        }));
    const Lines rest = client.readUntil([&](const std::string& line) {
        ended += isTerminal(parse(line)) ? 1 : 0;
        return ended == utterances;
    });
    lines.insert(lines.end(), rest.begin(), rest.end());
    std::vector<EventLine> events;
    for (const std::string& line : lines) {
        if (parse(line).isEvent) {
            events.push_back(parse(line));
        }
    }
    return events;
}

void ARunningService::expectOneLifeEach(const std::vector<EventLine>& events, unsigned count,
                                        unsigned end) {
    std::map<unsigned, int> starts;
    std::map<unsigned, int> ends;
    for (const EventLine& each : events) {
        starts[each.second] += each.event == EVENT_STARTED ? 1 : 0;
        if (isTerminal(each)) {
            EXPECT_EQ(end, each.event) << each.second;
            EXPECT_EQ(1, starts[each.second]) << "ended before it started";
            ++ends[each.second];
        }
    }
    for (unsigned id = 1; id <= count; ++id) {
        EXPECT_EQ(1, starts[id]) << id;
        EXPECT_EQ(1, ends[id]) << id;
    }
}

}  // namespace voxtreld
