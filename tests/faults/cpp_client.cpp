// SPDX-License-Identifier: Apache-2.0
// usage: faults_cpp_client TIMES [SPEED]. So many times one after the other: begins a client, sets
// the service's speed where one is given, speaks and waits, takes the lock and gives it back. One
// line for each time:
//
//   done SPEED     all of it, and the service's speed at the end
//   failed WHY     something of it, and why
//   changed SPEED  comes before either, once the service has acknowledged the change
//
// Leaves with 0, whatever failed; with 2 where a promise of the interface is broken: an utterance
// without an outcome, or with more than one event of its end.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <system_error>

#include "voxtrel/Client.h"

namespace {

using std::chrono::seconds;
using voxtrel::Client;

constexpr seconds kDeadline(20);

/// A client asks a silent service, twice, before it gives an utterance up.
constexpr seconds kToTheEnd(60);

/// Events of ends, by utterance.
class Ends {
public:
    void note(const voxtrel::Event& event) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mCount[event.utterance.number()] += event.kind == voxtrel::Event::Kind::Ended ? 1 : 0;
    }
    bool areSingle() {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (const auto& [number, count] : mCount) {
            if (count > 1) {
                return false;
            }
        }
        return true;
    }

private:
    std::mutex mMutex;
    std::map<std::uint64_t, int> mCount;
};

template <typename Value>
bool isGood(const voxtrel::Result<Value>& result, const char* what) {
    if (!result) {
        std::printf("failed %s: %s\n", what, result.message());
    }
    return static_cast<bool>(result);
}

bool setSpeed(Client& client, unsigned speed) {
    voxtrel::GlobalSettings settings;
    settings.speed = speed;
    if (!isGood(client.change(settings, kDeadline), "change")) {
        return false;
    }
    std::printf("changed %u\n", speed);
    return true;
}

bool speak(Client& client) {
    const voxtrel::Utterance said = client.say("One, two, three.");
    (void)client.pause(voxtrel::Milliseconds(1));
    const voxtrel::Outcome outcome = said.wait(kToTheEnd);
    if (outcome.isPending()) {
        std::puts("broken: no outcome");
        std::exit(2);
    }
    if (!outcome) {
        std::printf("failed outcome: %s\n", outcome.message());
    }
    return static_cast<bool>(outcome);
}

void live(Client& client, unsigned speed) {
    if (!isGood(client.waitUntilConnected(kDeadline), "connect") ||
        (speed != 0 && !setSpeed(client, speed)) || !speak(client)) {
        return;
    }
    {
        const auto lock = client.lock(kDeadline);
        if (!isGood(lock, "lock")) {
            return;
        }
    }
    const auto settings = client.settings(kDeadline);
    if (isGood(settings, "settings")) {
        std::printf("done %u\n", settings->speed.value_or(0));
    }
}

void attempt(unsigned speed) {
    Ends ends;
    try {
        Client client("faults");
        client.onEvent([&ends](const voxtrel::Event& event) { ends.note(event); });
        live(client, speed);
    } catch (const std::bad_alloc&) {
        std::puts("failed: no memory");
    } catch (const std::system_error&) {
        std::puts("failed: no thread");
    }
    if (!ends.areSingle()) {
        std::puts("broken: two ends");
        std::exit(2);
    }
}

}  // namespace

int main(int argc, char** argv) {
    static char buffer[4096];  // lest the first line takes memory
    std::setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
    const int times = argc > 1 ? std::atoi(argv[1]) : 1;
    const int speed = argc > 2 ? std::atoi(argv[2]) : 0;
    for (int i = 0; i < times; ++i) {
        attempt(static_cast<unsigned>(speed));
    }
    return 0;
}
