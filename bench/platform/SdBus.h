// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_SDBUS_H
#define VOXTREL_BENCH_PLATFORM_SDBUS_H

#include <sys/types.h>
#include <systemd/sd-bus.h>

#include <cstddef>
#include <string>

namespace bench {

/// A second process that answers the same calls over D-Bus, through systemd's client library.
class SdBusPeer {
public:
    /// Directly over a socket pair, or (with an address) both over that bus daemon.
    explicit SdBusPeer(const std::string& daemonAddress = {});
    ~SdBusPeer();
    SdBusPeer(const SdBusPeer&) = delete;
    SdBusPeer& operator=(const SdBusPeer&) = delete;

    void call(size_t size);
    void sendOneWay(size_t size);
    /// A call behind all one-way messages.
    void drain() { call(1); }

private:
    sd_bus_message* newCall(const char* method, size_t size);

    sd_bus* mBus = nullptr;
    pid_t mPid = -1;
    std::string mDestination;
};

}  // namespace bench

#endif
