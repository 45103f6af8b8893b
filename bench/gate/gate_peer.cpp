// SPDX-License-Identifier: Apache-2.0
// The two processes that ./dev bench --gate counts. `gate_peer serve` is the service, until its
// input ends. `gate_peer call` is the client: it does each operation in rounds, first few and then
// twice as many in each, marks where that begins and ends in both processes, and prints one line an
// operation: how many more there were, and its name. The marks of the n-th line are 4n to 4n + 3.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include "bench/gate/GateService.h"
#include "bench/gate/Mark.h"
#include "client/TTSClientPrivate.h"

// In place of the C library's. The runtime looks every two milliseconds for calls that take long:
// how often depends on the machine, not on the calls. Its clock stands still here.
extern "C" int timerfd_settime(int /*timer*/, int /*flags*/, const itimerspec* /*value*/,
                               itimerspec* /*old*/) noexcept {
    return 0;
}

namespace {

using android::IBinder;
using android::Parcel;
using android::sp;
using bench::GateService;

constexpr int kRounds = 200;
// As many one-way calls as the runtime lets a call of the same thread wait behind.
constexpr int kManyInRound = 8;
constexpr int kFewInRound = kManyInRound / 2;
constexpr int kDifference = kRounds * (kManyInRound - kFewInRound);
const char kBytes[64] = {};

/// Written by the last event of a round, read by who waits for it: as many system calls whichever
/// comes first.
int gEvents[2] = {-1, -1};

void onEvent(unsigned /*kind*/, unsigned /*first*/, unsigned left) {
    if (left == 1) {
        (void)!write(gEvents[1], "", 1);
    }
}

class Client {
public:
    Client();
    void twoWay(int count) const;
    void oneWay(int count) const;
    void say(int count);
    void event(int count) const;
    void connect(int count) const;
    bool isConnected() const { return mConnected; }
    void markBoth(uint32_t number, bool begins) const;

private:
    void tell(GateService::Code code, int32_t number) const;

    sp<IBinder> mNode;
    TTS::TTSClientPrivate mClient;
    bool mConnected;
};

Client::Client()
    : mNode(android::defaultServiceManager()->getService(
          android::String16(TTS::ITextToSpeechFestival::descriptor))),
      mClient("gate", onEvent),
      mConnected(mNode != nullptr && mClient.connect() == 0) {}

void Client::tell(GateService::Code code, int32_t number) const {
    Parcel data;
    Parcel reply;
    data.writeInt32(number);
    mNode->transact(code, data, &reply, 0);
}

// The client's own part is inside of the service's.
void Client::markBoth(uint32_t number, bool begins) const {
    if (!begins) {
        bench::mark(number);
    }
    tell(GateService::kMark, static_cast<int32_t>(number));
    if (begins) {
        bench::mark(number);
    }
}

void Client::twoWay(int count) const {
    for (int left = count; left > 0; --left) {
        Parcel data;
        Parcel reply;
        data.write(kBytes, sizeof(kBytes));
        mNode->transact(GateService::kEcho, data, &reply, 0);
    }
}

void Client::oneWay(int count) const {
    for (int left = count; left > 0; --left) {
        Parcel data;
        data.write(kBytes, sizeof(kBytes));
        mNode->transact(GateService::kNote, data, nullptr, IBinder::FLAG_ONEWAY);
    }
    twoWay(1);  // behind them
}

void Client::say(int count) {
    for (int left = count; left > 0; --left) {
        (void)mClient.say(static_cast<unsigned>(left), "In two hundred metres, turn left.");
    }
    twoWay(1);
}

void Client::event(int count) const {
    tell(GateService::kEmit, count);
    char last = 0;
    (void)!read(gEvents[0], &last, 1);
}

void Client::connect(int count) const {
    for (int left = count; left > 0; --left) {
        TTS::TTSClientPrivate client("gate", onEvent);
        (void)client.connect();
    }
}

struct Operation {
    const char* name;
    void (*run)(Client& client, int count);
};

constexpr Operation kOperations[] = {
    {"two-way call", [](Client& client, int count) { client.twoWay(count); }},
    {"one-way call", [](Client& client, int count) { client.oneWay(count); }},
    {"say", [](Client& client, int count) { client.say(count); }},
    {"event", [](Client& client, int count) { client.event(count); }},
    {"connect", [](Client& client, int count) { client.connect(count); }},
};

void repeat(Client& client, const Operation& operation, int count) {
    for (int round = 0; round < kRounds; ++round) {
        operation.run(client, count);
    }
}

void measure(Client& client, const Operation& operation, uint32_t number) {
    repeat(client, operation, kFewInRound);  // until each thread does what it goes on to do
    for (const int count : {kFewInRound, kManyInRound}) {
        client.markBoth(number++, true);
        repeat(client, operation, count);
        client.markBoth(number++, false);
    }
}

int call() {
    android::ProcessState::self()->startThreadPool();
    if (pipe(gEvents) != 0) {
        return 1;
    }
    Client client;
    if (!client.isConnected()) {
        std::fprintf(stderr, "gate_peer: no connection\n");
        return 1;
    }
    uint32_t number = 0;
    for (const Operation& operation : kOperations) {
        measure(client, operation, number);
        std::printf("%d %s\n", kDifference, operation.name);
        number += 4;
    }
    return 0;
}

int serve() {
    android::ProcessState::self()->startThreadPool();
    const android::status_t status = android::defaultServiceManager()->addService(
        android::String16(TTS::ITextToSpeechFestival::descriptor), new GateService());
    std::puts(status == android::OK ? "ready" : "failed");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const char* role = argc == 2 ? argv[1] : "";
    if (std::strcmp(role, "serve") == 0) {
        return serve();
    }
    if (std::strcmp(role, "call") == 0) {
        return call();
    }
    std::fprintf(stderr, "usage: gate_peer serve|call\n");
    return 2;
}
