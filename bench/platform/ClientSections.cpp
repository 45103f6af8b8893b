// SPDX-License-Identifier: Apache-2.0
#include <binder/BinderService.h>
#include <sys/types.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/platform/QuietService.h"
#include "bench/platform/Sections.h"
#include "bench/support/Timing.h"
#include "client/TTSClientPrivate.h"
#include "tests/support/Roles.h"

namespace bench {

using android::sp;
using voxtrel_test::ChildProcess;
using voxtrel_test::Role;

namespace {

constexpr int kRounds = 101;

void ignore(unsigned /*a*/, unsigned /*b*/, unsigned /*c*/) {}

const Role kService("bench-service", [](const voxtrel_test::Arguments&) {
    android::ProcessState::self()->startThreadPool();
    const android::status_t status = android::defaultServiceManager()->addService(
        TTS::ITextToSpeechFestival::descriptor, new QuietService());
    voxtrel_test::tell(status == android::OK ? "ready" : "failed");
    while (!voxtrel_test::hear().empty()) {
    }
    return 0;
});

// An application that joins the service and waits; tells how long joining took.
const Role kApplication("bench-application", [](const voxtrel_test::Arguments&) {
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("bench", ignore);
    int result = -1;
    const double taken = wallTime(1, [&] { result = client.connect(); });
    voxtrel_test::tell(result == 0 ? std::to_string(taken) : "failed");
    while (!voxtrel_test::hear().empty()) {
    }
    return 0;
});

double firstConnect() {
    auto application = ChildProcess::asRole("bench-application");
    return std::stod(application.readLine());
}

double connectAgain() {
    TTS::TTSClientPrivate client("bench", ignore);
    return wallTime(1, [&] { client.connect(); });
}

// What a process holds for itself alone, in KiB.
double privateMemory(pid_t pid) {
    std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
    double total = 0;
    for (std::string word; rollup >> word;) {
        double kib = 0;
        if (word.compare(0, 8, "Private_") == 0 && rollup >> kib) {
            total += kib;
        }
    }
    return total;
}

}  // namespace

void client(const Setting& setting) {
    auto service = ChildProcess::asRole("bench-service");
    if (service.readLine() != "ready") {
        return;
    }
    const auto limit = [&] { return setting.echo.roundTrip(); };
    const Contest first = contest(15, firstConnect, limit);
    report("connect() of a fresh process, against L", first);
    const Contest again = contest(kRounds, connectAgain, limit);
    report("connect() of a running process, against L", again);
    figure("connect_over_L", again.ratio);

    TTS::TTSClientPrivate client("bench", ignore);
    if (client.connect() != 0) {
        return;
    }
    unsigned id = 0;
    const auto say = [&] { (void)client.say(++id, "In two hundred metres, turn left."); };
    const Contest full = contest(
        kRounds, [&] { return wallTime(500, say); }, limit);
    report("a full say of the client, against L", full);
    figure("client_say_over_L", full.ratio);
}

void growth(const Setting& setting) {
    auto service = ChildProcess::asRole("bench-service");
    if (service.readLine() != "ready") {
        return;
    }
    TTS::TTSClientPrivate client("bench", ignore);
    (void)client.connect();
    const auto call = [&] { return wallTime(500, [&] { (void)client.enabled(); }); };
    std::vector<std::unique_ptr<ChildProcess>> clients;
    std::vector<double> latencies;
    const double serviceBefore = privateMemory(service.pid());
    const double managerBefore = privateMemory(setting.runtime.manager().pid());
    for (const size_t wanted : {1U, 8U, 64U, 256U}) {
        while (clients.size() < wanted) {
            clients.push_back(
                std::make_unique<ChildProcess>(ChildProcess::asRole("bench-application")));
            (void)clients.back()->readLine();
        }
        const Contest result = contest(kRounds, call, [&] { return setting.echo.roundTrip(); });
        latencies.push_back(result.ratio);
        std::printf("two-way with %3zu idle clients: %.3f us, %.3f L\n", wanted, result.value,
                    result.ratio);
    }
    const auto count = static_cast<double>(clients.size());
    std::printf("memory for each idle client: service %.1f KiB, service manager %.1f KiB\n",
                (privateMemory(service.pid()) - serviceBefore) / count,
                (privateMemory(setting.runtime.manager().pid()) - managerBefore) / count);
    figure("idle_client_growth", latencies.back() / latencies.front());
}

void references(const Setting& setting) {
    constexpr int kReferences = 1000;
    std::vector<sp<android::IBinder>> held;
    const double here = privateMemory(getpid());
    const double there = privateMemory(setting.server.pid());
    const double each = wallTime(kReferences, [&] { held.push_back(setting.node->make()); });
    std::printf(
        "1000 references held by one process: %.3f us, %.2f KiB here, %.2f KiB there, each\n", each,
        (privateMemory(getpid()) - here) / kReferences,
        (privateMemory(setting.server.pid()) - there) / kReferences);
}

}  // namespace bench
