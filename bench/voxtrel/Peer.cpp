// SPDX-License-Identifier: Apache-2.0
#include "bench/voxtrel/Peer.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <string>

namespace bench {
namespace {

int gSaid = 0;

/// Time in the caller alone; the speech is awaited behind it.
double sayTime(Speaker& speaker, int rounds) {
    const std::int64_t begun = nowNs();
    for (int n = 0; n < rounds; ++n) {
        speaker.say();
    }
    const auto taken = static_cast<double>(nowNs() - begun);
    speaker.awaitEnds(gSaid += rounds);
    return taken / 1000.0 / rounds;
}

double eventTime(Speaker& speaker, int rounds) {
    double taken = 0;
    for (int n = 0; n < rounds; ++n) {
        const std::int64_t begun = nowNs();
        speaker.say();
        ++gSaid;
        speaker.awaitStarts(gSaid);
        taken += static_cast<double>(speaker.lastStartNs() - begun);
        speaker.awaitEnds(gSaid);
    }
    return taken / 1000.0 / rounds;
}

long residentKib() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmRSS:") {
    }
    long kib = 0;
    status >> kib;
    return kib;
}

}  // namespace

std::int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void Speaker::noteStart() {
    const std::int64_t now = nowNs();
    const std::lock_guard<std::mutex> lock(mMutex);
    mLastStartNs = now;
    ++mStarts;
    mCame.notify_all();
}

void Speaker::noteEnd() {
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mEnds;
    mCame.notify_all();
}

void Speaker::await(const int& counter, int count) {
    std::unique_lock<std::mutex> lock(mMutex);
    mCame.wait(lock, [&] { return counter >= count; });
}

void Speaker::awaitStarts(int count) {
    await(mStarts, count);
}

void Speaker::awaitEnds(int count) {
    await(mEnds, count);
}

std::int64_t Speaker::lastStartNs() {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mLastStartNs;
}

int serveBenchmark(Speaker& speaker) {
    std::string what;
    int rounds = 0;
    while (std::cin >> what) {
        if (what == "say" && std::cin >> rounds) {
            std::cout << sayTime(speaker, rounds) << std::endl;
        } else if (what == "event" && std::cin >> rounds) {
            std::cout << eventTime(speaker, rounds) << std::endl;
        } else if (what == "rss") {
            std::cout << residentKib() << std::endl;
        } else if (what == "next") {
            speaker.say();
            std::cout << "said" << std::endl;
            speaker.awaitEnds(++gSaid);
            std::cout << speaker.lastStartNs() << std::endl;
        }
    }
    return 0;
}

}  // namespace bench
