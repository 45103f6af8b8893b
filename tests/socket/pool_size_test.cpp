// SPDX-License-Identifier: Apache-2.0
// How many threads a process has that serves little: each of them costs memory, and time when the
// process dies.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::OK;
using voxtrel_test::eventually;

using AThreadPool = probe::ProbeTest;

// A word behind a name in a file of /proc.
long valueIn(const std::filesystem::path& file, const std::string& name) {
    std::ifstream words(file);
    for (std::string word; words >> word;) {
        long value = 0;
        if (word == name && words >> value) {
            return value;
        }
    }
    return 0;
}

struct ThreadCounts {
    int threads = 0;
    long sleeps = 0;  // of all of them
};

ThreadCounts threadCountsOf(pid_t pid) {
    ThreadCounts counts;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::string name;
        std::ifstream(task.path() / "comm") >> name;
        if (name == "binder") {
            ++counts.threads;
            counts.sleeps += valueIn(task.path() / "status", "voluntary_ctxt_switches:");
        }
    }
    return counts;
}

TEST_F(AThreadPool, ThatServesOneCallHasAThreadForItAndOneThatWaits) {
    auto call =
        std::async(std::launch::async, [this] { return probe::Call().to(mNode, probe::kBlock); });
    EXPECT_TRUE(eventually([this] { return threadCountsOf(mServer.pid()).threads >= 2; }));
    // Only a timer wakes the one that waits, again and again.
    const long before = threadCountsOf(mServer.pid()).sleeps;
    EXPECT_TRUE(eventually([&] { return threadCountsOf(mServer.pid()).sleeps >= before + 20; }));
    EXPECT_EQ(2, threadCountsOf(mServer.pid()).threads);
    probe::ask(mNode, probe::kUnblock);
    EXPECT_EQ(OK, call.get());
}

}  // namespace
