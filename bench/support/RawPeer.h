// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SUPPORT_RAWPEER_H
#define VOXTREL_BENCH_SUPPORT_RAWPEER_H

#include <sys/types.h>

#include <cstddef>

namespace bench {

/// A second process at the other end of a SOCK_SEQPACKET pair, with nothing in between: the least
/// that a call across processes can cost.
class RawPeer {
public:
    /// `Echo` sends each packet back, `EchoToSender` too, and has the kernel say who sent it;
    /// `Sink` takes packets like that.
    enum class Kind { Echo, EchoToSender, Sink };
    explicit RawPeer(Kind kind);
    ~RawPeer();
    RawPeer(const RawPeer&) = delete;
    RawPeer& operator=(const RawPeer&) = delete;

    /// `size` bytes there and back.
    void call(size_t size);
    /// One round trip of 64 bytes in microseconds, the mean of a short series: the figures' L.
    double roundTrip();
    /// One packet with a header in a part of its own and SCM_CREDENTIALS.
    void sendOneWay(size_t size);
    /// Waits until everything has been taken.
    void drain();
    pid_t pid() const { return mPid; }
    int socket() const { return mSocket; }

private:
    int mSocket = -1;
    pid_t mPid = -1;
};

}  // namespace bench

#endif
