// SPDX-License-Identifier: Apache-2.0
// What a call across processes costs over the least that it could: two processes and a socket with
// nothing in between. L is one such round trip of 64 bytes. All in one run on one processor, so
// that the ratios do not depend on the machine.
#include <binder/ProcessState.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/platform/BenchNode.h"
#include "bench/platform/Sections.h"
#include "bench/support/RawPeer.h"
#include "bench/support/Timing.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRuntime.h"
#include "tests/support/Roles.h"

namespace {

struct Section {
    const char* name;
    void (*run)(const bench::Setting&);
};

constexpr Section kSections[] = {
    {"two-way", bench::twoWay},
    {"one-way", bench::oneWay},
    {"dbus", bench::againstOtherBuses},
    {"allocations", bench::allocationCounts},
    {"death", bench::deaths},
    {"client", bench::client},
    {"growth", bench::growth},
    {"references", bench::references},
    {"instructions", bench::instructions},
};

bool wanted(const char* name, const std::vector<std::string>& names) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
}

// All sections, or those that are named on the command line.
int run(int argc, char** argv) {
    const std::vector<std::string> names(argv + 1, argv + argc);
    // Forked before the runtime is used: they know nothing of it.
    bench::RawPeer echo(bench::RawPeer::Kind::Echo);
    bench::RawPeer echoToSender(bench::RawPeer::Kind::EchoToSender);
    bench::RawPeer sink(bench::RawPeer::Kind::Sink);
    bench::OtherBuses buses;

    voxtrel_test::PrivateRuntime runtime(VOXTREL_SERVICEMANAGER);
    auto server = voxtrel_test::ChildProcess::asRole("bench-server");
    if (server.readLine() != "ready") {
        std::fprintf(stderr, "the bench server did not start\n");
        return 1;
    }
    android::ProcessState::self()->startThreadPool();
    const bench::Setting setting = {echo,   echoToSender,      sink, buses, runtime,
                                    server, bench::findBench()};
    for (const Section& section : kSections) {
        if (wanted(section.name, names)) {
            section.run(setting);
        }
    }
    bench::printFigures();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return voxtrel_test::runRoleOr(argc, argv, run);
}
