// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "bench/platform/Sections.h"

namespace bench {

OtherBuses::OtherBuses()
    : mDaemon(std::make_unique<voxtrel_test::ChildProcess>(
          std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                   "--print-address", "--address=unix:tmpdir=/tmp"})),
      mDirect(std::make_unique<SdBusPeer>()) {
    const std::string address = mDaemon->readLine();
    if (address.empty()) {
        std::fprintf(stderr, "dbus-daemon did not start\n");
        std::exit(1);  // NOLINT(concurrency-mt-unsafe): no other thread yet
    }
    mThroughDaemon = std::make_unique<SdBusPeer>(address);
}

OtherBuses::~OtherBuses() = default;

}  // namespace bench
