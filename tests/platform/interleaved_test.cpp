// SPDX-License-Identifier: Apache-2.0
// One-way calls between the two-way calls of the same thread and of others.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

constexpr int kThreads = 4;
const int32_t kCalls = voxtrel_test::repeats(3000);

// Of different sizes, which travel in different ways.
bool note(const sp<IBinder>& node, int32_t caller, int32_t number) {
    const size_t size = number % 50 == 7 ? 100000 : number % 10 == 3 ? 20000 : 4;
    return probe::noteUntilTaken(node, caller, number, size) == OK;
}

int wrongCalls(const sp<IBinder>& node, const sp<IBinder>& own, int32_t caller) {
    int wrong = 0;
    for (int32_t i = 0; i < kCalls; ++i) {
        wrong += note(node, caller, i) ? 0 : 1;
        if (i % 3 == 0) {
            wrong += node->pingBinder() == OK ? 0 : 1;
        }
        if (i % 7 == 0) {
            Call back;
            back.data.writeStrongBinder(own);
            back.data.writeInt32(2);
            wrong += back.to(node, probe::kCallBack) == OK ? 0 : 1;
        }
    }
    return wrong;
}

// Four threads with numbered one-way calls, and two that make two-way calls all the time.
int wrongCallsOfAll(const sp<IBinder>& node, int32_t firstCaller) {
    const sp<IBinder> own = probe::makeNode();
    std::atomic<bool> over{false};
    std::vector<std::thread> busy;
    for (int i = 0; i < 2; ++i) {
        busy.emplace_back([&] {
            while (!over) {
                (void)node->pingBinder();
            }
        });
    }
    std::vector<std::future<int>> callers;
    for (int32_t i = 0; i < kThreads; ++i) {
        callers.push_back(std::async(std::launch::async,
                                     [&, i] { return wrongCalls(node, own, firstCaller + i); }));
    }
    int wrong = 0;
    for (auto& caller : callers) {
        wrong += caller.get();
    }
    over = true;
    for (std::thread& thread : busy) {
        thread.join();
    }
    return wrong;
}

const voxtrel_test::Role kInterleaver("interleaver", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    voxtrel_test::tell(std::to_string(wrongCallsOfAll(probe::find(), 100)));
    return 0;
});

using OneWayCallsBetweenOthers = probe::ProbeTest;

TEST_F(OneWayCallsBetweenOthers, KeepTheirOrder) {
    ChildProcess other = ChildProcess::asRole("interleaver");
    EXPECT_EQ(0, wrongCallsOfAll(mNode, 0));
    EXPECT_EQ("0", other.readLine());
    const int kAll = 2 * kThreads * kCalls;
    EXPECT_TRUE(eventually([&] { return probe::ask(mNode, probe::kNotes) == kAll; }));
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    EXPECT_EQ(kAll, notes.reply.readInt32());
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
    EXPECT_EQ(0, notes.reply.readInt32()) << "two at once";
}

}  // namespace
