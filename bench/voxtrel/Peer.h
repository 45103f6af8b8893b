// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_VOXTREL_PEER_H
#define VOXTREL_BENCH_VOXTREL_PEER_H

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace bench {

std::int64_t nowNs();

/// A way to speak, as the benchmark measures it.
class Speaker {
public:
    virtual ~Speaker() = default;

    /// Returns when the call does.
    virtual void say() = 0;

    /// Called by its thread for events.
    void noteStart();
    void noteEnd();

    /// These return when so many have come since the object was made.
    void awaitStarts(int count);
    void awaitEnds(int count);
    std::int64_t lastStartNs();

private:
    void await(const int& counter, int count);

    std::mutex mMutex;
    std::condition_variable mCame;
    int mStarts = 0;
    int mEnds = 0;
    std::int64_t mLastStartNs = 0;
};

/// Does what the lines on standard input say, and prints one line for each: "say N" and "event N",
/// microseconds a round; "rss", KiB; "next", the moment in ns when the next text begins to sound.
int serveBenchmark(Speaker& speaker);

}  // namespace bench

#endif
