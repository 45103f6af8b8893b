// SPDX-License-Identifier: Apache-2.0
// A client for tests: obeys the lines on its standard input, and prints each result and each event
// as a line on its standard output.
#include <binder/ProcessState.h>

#include <cstdio>
#include <functional>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "client/internal/MutexLock.h"

namespace {

using TTS::TTSClientPrivate;
using Command = std::function<int(TTSClientPrivate& client, std::istream& arguments)>;

void onEvent(unsigned event, unsigned second, unsigned third) {
    std::printf("event %u %u %d\n", event, second, static_cast<int>(third));
}

unsigned numberFrom(std::istream& arguments) {
    unsigned number = 0;
    arguments >> number;
    return number;
}

int say(TTSClientPrivate& client, std::istream& arguments) {
    const unsigned id = numberFrom(arguments);
    std::string text;
    std::getline(arguments >> std::ws, text);
    return client.say(id, text);
}

/// "flood FIRST COUNT TEXT": the same text, with COUNT ids from FIRST.
int flood(TTSClientPrivate& client, std::istream& arguments) {
    const unsigned first = numberFrom(arguments);
    const unsigned count = numberFrom(arguments);
    std::string text;
    std::getline(arguments >> std::ws, text);
    int status = 0;
    for (unsigned id = first; id < first + count && status == 0; ++id) {
        status = client.say(id, text);
    }
    return status;
}

/// "long ID BYTES": a text of that size, in words.
int sayLong(TTSClientPrivate& client, std::istream& arguments) {
    const unsigned id = numberFrom(arguments);
    std::string text;
    for (size_t size = numberFrom(arguments); text.size() < size;) {
        text += "tell me more ";
    }
    return client.say(id, text);
}

/// "fence ID": a pause that is too long for the service. Its refusal shows that everything said
/// before has been accepted.
int fence(TTSClientPrivate& client, std::istream& arguments) {
    return client.silence(numberFrom(arguments), std::numeric_limits<unsigned>::max());
}

const std::map<std::string, Command> kCommands = {
    {"connect", [](auto& client, auto&) { return client.connect(); }},
    {"disconnect", [](auto& client, auto&) { return client.disconnect(); }},
    {"say", say},
    {"flood", flood},
    {"long", sayLong},
    {"stop", [](auto& client, auto& in) { return client.stopAndFlush(numberFrom(in)); }},
    {"fence", fence},
    {"enable", [](auto& client, auto& in) { return client.setEnable(numberFrom(in) != 0); }},
    {"lock", [](auto& client, auto&) { return client.lock(); }},
    {"rate", [](auto& client, auto& in) { return client.setGlobalRate(numberFrom(in)); }},
    {"which-rate", [](auto& client, auto&) { return client.globalRate(); }},
};

// The service may die at any moment: only the lock keeps its end apart from a call
// (docs/threading.md says why). A connect takes it itself, where it needs it.
int run(const std::string& name, TTSClientPrivate& client, std::istream& arguments) {
    std::optional<TTS::MutexLock> hold;
    if (name != "connect") {
        hold.emplace(TTS::Clientmutex);
    }
    return kCommands.at(name)(client, arguments);
}

}  // namespace

int main() {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    android::ProcessState::self()->startThreadPool();
    auto client = std::make_unique<TTSClientPrivate>("speech_client", onEvent);
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream arguments(line);
        std::string name;
        arguments >> name;
        std::printf("%s %d\n", name.c_str(), run(name, *client, arguments));
    }
    const TTS::MutexLock hold(TTS::Clientmutex);
    client.reset();
    return 0;
}
