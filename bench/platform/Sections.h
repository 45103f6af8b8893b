// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_SECTIONS_H
#define VOXTREL_BENCH_PLATFORM_SECTIONS_H

#include <memory>
#include <string>

#include "bench/platform/BenchNode.h"
#include "bench/platform/SdBus.h"
#include "bench/support/RawPeer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRuntime.h"

namespace bench {

/// D-Bus in the two ways that it is used, with a bus daemon of our own.
class OtherBuses {
public:
    OtherBuses();
    ~OtherBuses();
    OtherBuses(const OtherBuses&) = delete;
    OtherBuses& operator=(const OtherBuses&) = delete;

    SdBusPeer& direct() { return *mDirect; }
    SdBusPeer& throughDaemon() { return *mThroughDaemon; }

private:
    std::unique_ptr<voxtrel_test::ChildProcess> mDaemon;
    std::unique_ptr<SdBusPeer> mDirect;
    std::unique_ptr<SdBusPeer> mThroughDaemon;
};

/// What every section measures with.
struct Setting {
    RawPeer& echo;
    RawPeer& echoToSender;
    RawPeer& sink;
    OtherBuses& buses;
    voxtrel_test::PrivateRuntime& runtime;
    voxtrel_test::ChildProcess& server;
    android::sp<IBench> node;
};

void twoWay(const Setting& setting);
void oneWay(const Setting& setting);
void againstOtherBuses(const Setting& setting);
void allocationCounts(const Setting& setting);
void deaths(const Setting& setting);
void client(const Setting& setting);
void growth(const Setting& setting);
void references(const Setting& setting);
void instructions(const Setting& setting);

}  // namespace bench

#endif
