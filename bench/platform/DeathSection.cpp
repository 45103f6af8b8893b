// SPDX-License-Identifier: Apache-2.0
// From `kill -9` of a service to `binderDied` at its client. Most of it is the kernel clearing the
// process away: first each thread, then its memory, only then its sockets, one by one. How much
// that is depends on the program, and stands beside: the same program killed while it only waits,
// and killed as a service, both as the end-of-file that a plain socket sees. What stands between
// that and `binderDied` is the runtime's own, of the client and of the service manager.
#include <binder/IBinder.h>
#include <signal.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <mutex>
#include <string>

#include "bench/platform/Mortal.h"
#include "bench/platform/Sections.h"
#include "bench/support/Timing.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRounds = 51;
constexpr const char* kName = "mortal";

class Stopwatch : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& /*who*/) override {
        const auto now = Clock::now();
        const std::lock_guard<std::mutex> held(mLock);
        mStopped = now;
        mDead = true;
        mChanged.notify_all();
    }
    Clock::time_point stopped() {
        std::unique_lock<std::mutex> held(mLock);
        mChanged.wait(held, [this] { return mDead; });
        return mStopped;
    }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    Clock::time_point mStopped;
    bool mDead = false;
};

double since(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::micro>(end - start).count();
}

/// A client of the service that is to be killed: has called it, and is linked to its death.
class Client {
public:
    explicit Client(const char* name) : mNode(findService(name)) {
        mNode->pingBinder();
        mNode->linkToDeath(mWatch);
    }
    Clock::time_point told() { return mWatch->stopped(); }

private:
    const android::sp<Stopwatch> mWatch = new Stopwatch();
    const android::sp<android::IBinder> mNode;
};

template <typename Rest>
double serviceToDeathNotice(const std::string& program, Rest rest) {
    const Mortal service(program, kName);
    Client client(kName);
    rest();
    const auto start = Clock::now();
    service.kill();
    return since(start, client.told());
}

template <typename Rest>
double toEndOfFile(const std::string& program, Rest rest) {
    const Mortal process(program);
    rest();
    const auto start = Clock::now();
    process.kill();
    process.waitForEndOfFile();
    return since(start, Clock::now());
}

double serviceToEndOfFile(const std::string& program) {
    const Mortal service(program, kName);
    const android::sp<android::IBinder> node = findService(kName);
    node->pingBinder();
    const auto start = Clock::now();
    service.kill();
    service.waitForEndOfFile();
    return since(start, Clock::now());
}

double wholeProgram() {
    auto server = voxtrel_test::ChildProcess::asRole("bench-server", {kName});
    if (server.readLine() != "ready") {
        return 0;
    }
    Client client(kName);
    const auto start = Clock::now();
    server.kill(SIGKILL);
    return since(start, client.told());
}

// So long that all threads of service, client and service manager wait where idle ones do.
void comeToRest(const Setting& setting) {
    const auto end = Clock::now() + std::chrono::milliseconds(25);
    while (Clock::now() < end) {
        (void)setting.echo.roundTrip();
    }
}

}  // namespace

void deaths(const Setting& setting) {
    const auto measure = [&](const char* what, const std::function<double()>& death) {
        const Contest result = contest(kRounds, death, [&] { return setting.echo.roundTrip(); });
        report(what, result);
        return result.ratio;
    };
    const auto atOnce = [] {};
    const auto rested = [&] { comeToRest(setting); };
    const std::string lean = MORTAL_STATIC;
    const std::string shared = MORTAL_SHARED;

    std::printf("kill -9, against L:\n");
    measure("static program that only waits, end-of-file",
            [&] { return toEndOfFile(lean, atOnce); });
    measure("static program, a service, end-of-file", [&] { return serviceToEndOfFile(lean); });
    figure("death_over_L", measure("static program, a service, binderDied",
                                   [&] { return serviceToDeathNotice(lean, atOnce); }));
    measure("25 ms idle: static that only waits, end-of-file",
            [&] { return toEndOfFile(lean, rested); });
    measure("25 ms idle: static, a service, binderDied",
            [&] { return serviceToDeathNotice(lean, rested); });
    measure("with shared libraries, only waits, end-of-file",
            [&] { return toEndOfFile(shared, atOnce); });
    measure("with shared libraries, a service, end-of-file",
            [&] { return serviceToEndOfFile(shared); });
    figure("death_shared_over_L", measure("with shared libraries, a service, binderDied",
                                          [&] { return serviceToDeathNotice(shared, atOnce); }));
    measure("this whole program, a service, binderDied", wholeProgram);
}

}  // namespace bench
