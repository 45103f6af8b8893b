// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SERVICE_MEASUREDSERVICE_H
#define VOXTREL_BENCH_SERVICE_MEASUREDSERVICE_H

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace voxtreld {

/// What the service's sink tells the benchmark through shared memory.
struct SoundClock {
    std::atomic<int64_t> firstSampleNs;  ///< of the utterance that sounds; 0 before its first
};

/// Memory that this process and those it forks share.
SoundClock* makeSoundClock();

/// Forks a process that is the service: the real engine and queue, and a sink that plays as slowly
/// as a loudspeaker and notes when it gets its first sample.
/// To be called before this process uses the binder runtime.
pid_t forkService(SoundClock* clock, const std::string& profile);

}  // namespace voxtreld

#endif
