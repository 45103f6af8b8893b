// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/ipc/Allocations.h"
#include "bench/platform/Sections.h"
#include "bench/support/Timing.h"

namespace bench {

namespace {

// Short rounds in turn: what else the machine does falls on both sides alike.
constexpr int kRounds = 101;
constexpr int kCalls = 500;
// So few that they fit into a socket: the sender never waits, and only its own work is measured.
constexpr int kBurst = 100;
constexpr int kBursts = 5;
const char kBytes[1024] = {};

double callTime(const Setting& setting, size_t size) {
    return wallTime(kCalls, [&] { setting.node->echo(kBytes, size); });
}

template <typename Send, typename Drain>
double burstTime(Send send, Drain drain) {
    double total = 0;
    for (int i = 0; i < kBursts; ++i) {
        total += threadTime(kBurst, send);
        drain();
    }
    return total / kBursts;
}

double noteTime(const Setting& setting) {
    int32_t sent = setting.node->noted();
    return burstTime(
        [&] {
            setting.node->note(kBytes, 64);
            ++sent;
        },
        [&] {
            while (setting.node->noted() != sent) {
            }
        });
}

/// Single calls of each kind, a few of one behind another so that none starts cold.
void callDistributions(const Setting& setting) {
    constexpr int kBlocks = 200;
    constexpr int kInBlock = 20;
    struct Kind {
        const char* name;
        std::function<void()> call;
        std::vector<double> times;
    };
    Kind kinds[] = {
        {"call_bare", [&] { setting.echo.call(64); }, {}},
        {"call_voxtrel", [&] { setting.node->echo(kBytes, 64); }, {}},
        {"call_sdbus_p2p", [&] { setting.buses.direct().call(64); }, {}},
        {"call_dbus_daemon", [&] { setting.buses.throughDaemon().call(64); }, {}},
    };
    for (int block = 0; block < kBlocks; ++block) {
        for (Kind& kind : kinds) {
            kind.call();
            for (int n = 0; n < kInBlock; ++n) {
                kind.times.push_back(wallTime(1, kind.call));
            }
        }
    }
    for (const Kind& kind : kinds) {
        distribution(kind.name, kind.times);
    }
}

}  // namespace

void twoWay(const Setting& setting) {
    const auto limit = [&] { return setting.echo.roundTrip(); };
    const Contest small = contest(
        kRounds, [&] { return callTime(setting, 64); }, limit);
    report("two-way call of 64 bytes, against L", small);
    figure("two_way_64_over_L", small.ratio);
    const Contest large = contest(
        kRounds, [&] { return callTime(setting, 1024); }, limit);
    report("two-way call of 1 KB, against L", large);
    figure("two_way_1k_over_L", large.ratio);
    // What the kernel takes for the same packets, with a receiver that knows who sent them.
    for (const size_t size : {size_t{64}, size_t{1024}}) {
        constexpr size_t kHeader = 32;
        const auto bare = [&] {
            return wallTime(kCalls, [&] { setting.echoToSender.call(kHeader + size); });
        };
        const Contest least = contest(kRounds, bare, limit);
        const bool isSmall = size == 64;
        report(isSmall ? "the packets of 64 bytes alone" : "the packets of 1 KB alone", least);
        figure(isSmall ? "two_way_64_least_over_L" : "two_way_1k_least_over_L", least.ratio);
    }
}

void oneWay(const Setting& setting) {
    const Contest result = contest(
        kRounds, [&] { return noteTime(setting); },
        [&] {
            return burstTime([&] { setting.sink.sendOneWay(64); }, [&] { setting.sink.drain(); });
        });
    report("one-way call of 64 bytes, sender, against sendmsg", result);
    figure("one_way_64_over_raw", result.ratio);
}

void againstOtherBuses(const Setting& setting) {
    SdBusPeer& direct = setting.buses.direct();
    const auto call = [&] { return callTime(setting, 64); };
    const Contest twoWays =
        contest(kRounds, call, [&] { return wallTime(kCalls, [&] { direct.call(64); }); });
    report("two-way, against D-Bus peer to peer", twoWays);
    figure("two_way_over_sdbus_p2p", twoWays.ratio);
    const Contest oneWays = contest(
        kRounds, [&] { return noteTime(setting); },
        [&] { return burstTime([&] { direct.sendOneWay(64); }, [&] { direct.drain(); }); });
    report("one-way, sender, against D-Bus peer to peer", oneWays);
    figure("one_way_over_sdbus_p2p", oneWays.ratio);
    const Contest daemon = contest(kRounds, call, [&] {
        return wallTime(kCalls, [&] { setting.buses.throughDaemon().call(64); });
    });
    report("two-way, against D-Bus through a daemon", daemon);
    figure("two_way_over_dbus_daemon", daemon.ratio);
    callDistributions(setting);
}

void allocationCounts(const Setting& setting) {
    constexpr uint64_t kSample = 1000;
    const uint64_t before = allocations();
    const uint64_t beforeThere = setting.node->allocated();
    for (uint64_t i = 0; i < kSample; ++i) {
        setting.node->echo(kBytes, 64);
    }
    const auto there = static_cast<double>(setting.node->allocated() - beforeThere) / kSample;
    const auto here = static_cast<double>(allocations() - before) / kSample;
    std::printf("heap allocations of a small two-way call: caller %.3f, service %.3f\n", here,
                there);
    figure("allocations_per_two_way", here > there ? here : there);
}

}  // namespace bench
