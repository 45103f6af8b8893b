// SPDX-License-Identifier: Apache-2.0
#include <binder/ProcessState.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bench/platform/QuietService.h"
#include "bench/platform/Sections.h"
#include "bench/platform/Timing.h"
#include "client/TTSClientPrivate.h"
#include "tests/support/Roles.h"

namespace bench {

using voxtrel_test::ChildProcess;

namespace {

constexpr int kFew = 100;
constexpr int kMany = 1100;
const char kBytes[1024] = {};

// Makes so many calls and ends.
const voxtrel_test::Role kCaller("bench-caller", [](const voxtrel_test::Arguments& arguments) {
    const std::string& what = arguments[0];
    const int calls = std::stoi(arguments[1]);
    const android::sp<IBench> node = findBench();
    for (int i = 0; i < calls; ++i) {
        if (what == "one-way") {
            node->note(kBytes, 64);
        } else {
            node->echo(kBytes, what == "1k" ? 1024 : 64);
        }
    }
    (void)node->noted();
    return 0;
});

long long collected(const std::string& what, int calls) {
    ChildProcess run({"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                      "--log-fd=1", voxtrel_test::ownPath(), "--role=bench-caller", what,
                      std::to_string(calls)});
    const std::string mark = "Collected : ";
    long long count = -1;
    for (std::string line = run.readLine(); !line.empty(); line = run.readLine()) {
        const size_t found = line.find(mark);
        if (found != std::string::npos) {
            count = std::stoll(line.substr(found + mark.size()));
        }
    }
    (void)run.wait();
    return count;
}

}  // namespace

void instructions(const Setting& /*setting*/) {
    for (const char* what : {"64", "1k", "one-way"}) {
        const long long few = collected(what, kFew);
        const long long many = collected(what, kMany);
        if (few < 0 || many < 0) {
            std::printf("no instruction counts: valgrind is not installed\n");
            return;
        }
        std::printf("instructions of the caller outside of the kernel, %s: %lld\n", what,
                    (many - few) / (kMany - kFew));
    }
}

}  // namespace bench
