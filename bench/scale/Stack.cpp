// SPDX-License-Identifier: Apache-2.0
#include "bench/scale/Stack.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace bench {

namespace {

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

}  // namespace

Stack::Stack(const std::string& folder, const std::string& name)
    : mPlace(folder + "/" + name), mDescriptor(makeBoard()), mBoard(boardAt(mDescriptor)) {
    const std::string board = std::to_string(mDescriptor);
    setenv("VOXTREL_BINDER_SOCKET", mPlace.c_str(), 1);
    setenv("VOXTREL_LOG_LEVEL", "0", 1);
    mManager = std::make_unique<Process>(Words{VOXTREL_SERVICE_MANAGER});
    waitUntil([this] { return std::filesystem::exists(mPlace); });
    mService = std::make_unique<Process>(Words{SCALE_SERVICE, board, mPlace + ".ini"});
    (void)mService->hear();
    mClient = std::make_unique<Process>(Words{SCALE_CLIENT, board});
    (void)mClient->ask("events 1");
}

void Stack::gather(size_t members, const char* kind) {
    // Not all at once: a service manager's backlog is for those who happen to come together.
    constexpr uint32_t kTogether = 50;
    setenv("VOXTREL_BINDER_SOCKET", mPlace.c_str(), 1);
    while (mCrowd.size() < members) {
        const auto coming = static_cast<uint32_t>(mCrowd.size());
        waitUntil([&] { return mBoard.joined + kTogether > coming; });
        mCrowd.add({SCALE_CLIENT, std::to_string(mDescriptor), kind});
    }
    waitUntil([&] { return mBoard.joined == members; });
}

double Stack::everybodysTurn() {
    const auto all = static_cast<uint32_t>(mBoard.ended + mCrowd.size());
    const int64_t called = nowNs();
    nextTurn(mBoard);
    waitUntil([&] { return mBoard.ended == all; });
    return static_cast<double>(mBoard.lastNs - called) / 1000.0;
}

void Stack::killCrowd() {
    (void)mCrowd.kill();
    mCrowd.bury();
    mBoard.joined = 0;
}

}  // namespace bench
