// SPDX-License-Identifier: Apache-2.0
// From `kill -9` of many clients at once to the last thing freed that service and service manager
// held for them. Most of it is the kernel clearing the processes away, which stands beside: as the
// end-of-file of a pipe that all of them held, and the same of processes that were no clients.
#include <poll.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/scale/Sections.h"
#include "bench/scale/Stack.h"
#include "bench/scale/Usage.h"
#include "bench/support/Timing.h"

namespace bench {

namespace {

/// What service and service manager hold.
struct Held {
    size_t ofService;  ///< descriptors
    size_t ofManager;
    size_t threads;  ///< of the service
    double serviceKib;
    double managerKib;
};

Held heldBy(Stack& stack) {
    const pid_t service = stack.service().pid();
    const pid_t manager = stack.manager().pid();
    return {descriptors(service), descriptors(manager), threads(service), privateKib(service),
            privateKib(manager)};
}

/// Threads of the service's pool come when they are needed, and stay; of a client there is none.
constexpr size_t kPool = 16;

bool isFreed(Stack& stack, const Held& before) {
    return threads(stack.service().pid()) <= before.threads + kPool &&
           descriptors(stack.service().pid()) <= before.ofService &&
           descriptors(stack.manager().pid()) <= before.ofManager;
}

struct Deaths {
    double toEndOfFile;  ///< microseconds
    double toFreed;
};

Deaths dieAtOnce(Stack& stack, const Held& before) {
    constexpr int64_t kTooLongNs = 60'000'000'000;
    Deaths result = {};
    const int64_t killed = nowNs();
    pollfd alive = {stack.crowd().kill(), 0, 0};
    const auto elapsed = [&] { return static_cast<double>(nowNs() - killed) / 1000.0; };
    while (result.toEndOfFile == 0 || result.toFreed == 0) {
        const bool hasEnded = result.toEndOfFile != 0;
        if (poll(&alive, hasEnded ? 0U : 1U, 1) == 1) {
            result.toEndOfFile = elapsed();
        }
        if (isFreed(stack, before) && result.toFreed == 0) {
            result.toFreed = elapsed();
        }
        if (nowNs() - killed > kTooLongNs) {
            std::fprintf(stderr, "a minute after the deaths something is still held\n");
            std::exit(1);
        }
    }
    stack.killCrowd();
    return result;
}

struct Wave {
    unsigned members;
    int rounds;
    std::vector<double> freed;
    std::vector<double> overEndOfFile;  ///< of the same processes
    std::vector<double> idle;           ///< end-of-file of processes that were no clients
    std::vector<double> overIdle;
};

void die(Stack& stack, const Held& before, Wave& wave) {
    stack.gather(wave.members, "idle");
    const Deaths idle = dieAtOnce(stack, before);
    stack.gather(wave.members);
    const Deaths clients = dieAtOnce(stack, before);
    wave.freed.push_back(clients.toFreed);
    wave.overEndOfFile.push_back(clients.toFreed / clients.toEndOfFile);
    wave.idle.push_back(idle.toEndOfFile);
    wave.overIdle.push_back(clients.toFreed / idle.toEndOfFile);
}

void tellMemory(Stack& stack, const Held& fresh, const Held& full, const Held& first,
                size_t deaths) {
    const Held last = heldBy(stack);
    const auto share = [](double kept, double taken) { return kept / taken; };
    figure("scale_deaths_kept_of_service",
           share(first.serviceKib - fresh.serviceKib, full.serviceKib - fresh.serviceKib));
    figure("scale_deaths_kept_of_manager",
           share(first.managerKib - fresh.managerKib, full.managerKib - fresh.managerKib));
    // What is kept for later is used again: nothing more is kept however many come and die.
    figure("scale_deaths_leaked_kib",
           (last.serviceKib - first.serviceKib + last.managerKib - first.managerKib) /
               static_cast<double>(deaths));
}

}  // namespace

void deathsAtOnce(const std::string& folder) {
    constexpr unsigned kMost = 1000;
    Stack stack(folder, "deaths");
    const Held fresh = heldBy(stack);
    stack.gather(kMost);
    const Held full = heldBy(stack);
    (void)dieAtOnce(stack, fresh);
    const Held once = heldBy(stack);
    stack.gather(kMost);
    (void)dieAtOnce(stack, once);
    const Held first = heldBy(stack);
    size_t deaths = 0;
    std::vector<Wave> waves = {
        {10, 9, {}, {}, {}, {}}, {100, 5, {}, {}, {}, {}}, {kMost, 3, {}, {}, {}, {}}};
    for (int round = 0; round < waves.front().rounds; ++round) {
        for (Wave& wave : waves) {
            if (round < wave.rounds) {
                die(stack, first, wave);
                deaths += wave.members;
            }
        }
    }
    for (const Wave& wave : waves) {
        std::printf(
            "%4u deaths at once: all freed after %.2f ms, %.3f of the kernel's end-of-file, "
            "%.3f of that of processes that are no clients\n",
            wave.members, median(wave.freed) / 1000, median(wave.overEndOfFile),
            median(wave.overIdle));
        std::fflush(stdout);
        point("scale_deaths_freed", wave.members, median(wave.freed));
    }
    figure("scale_deaths_1000_ms", median(waves[2].freed) / 1000);
    figure("scale_deaths_1000_over_10", median(waves[2].freed) / median(waves[0].freed));
    figure("scale_deaths_1000_over_100", median(waves[2].freed) / median(waves[1].freed));
    figure("scale_deaths_idle_1000_over_10", median(waves[2].idle) / median(waves[0].idle));
    figure("scale_deaths_idle_1000_over_100", median(waves[2].idle) / median(waves[1].idle));
    figure("scale_deaths_over_eof", median(waves[2].overEndOfFile));
    figure("scale_deaths_over_idle_eof", median(waves[2].overIdle));
    tellMemory(stack, fresh, full, first, deaths);
}

}  // namespace bench
