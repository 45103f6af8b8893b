// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SPEECHQUEUE_H
#define VOXTREL_SERVICE_SPEECHQUEUE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

#include "service/Cancel.h"
#include "service/Locking.h"
#include "service/Utterance.h"
#include "vocabulary/Status.h"

namespace voxtreld {

/// How much may wait. One client can fill its own share only, so that the others are still heard.
struct QueueLimits {
    size_t utterancesPerClient = 2048;
    size_t clients = 8;                ///< shares that may be full at one time
    size_t textPerClient = 4U << 20U;  ///< bytes
};

/// The utterances that wait to be spoken. Scheduling is round-robin among clients by utterance;
/// those of one client are spoken in the order of acceptance.
///
/// Next is the client that was heard longest ago. One that was not heard in the last
/// `kRememberedTurns` turns, or never, counts as heard before all that were; among several such,
/// the one whose utterance was accepted first is next. So a client that was silent for a while is
/// heard after the current utterance, and none waits for more turns than that.
///
/// Every utterance that `push` accepted comes out once: of `wait` as the next to speak, or of
/// `wait` or `takeDropped` as dropped. The speech thread reports both, so nothing is reported twice
/// or not at all. Until then a dropped one fills its client's share like one that waits.
///
/// Called on: any thread; `wait`, `takeDropped` and `finish` on the speech thread only. Locks: its
/// own.
class SpeechQueue {
public:
    /// More than there are clients with much to say.
    static constexpr uint64_t kRememberedTurns = 128;

    /// An utterance that was dropped before its turn.
    struct Dropped {
        uint32_t pid;
        uint32_t id;
        int32_t status;  ///< why
    };

    /// What the speech thread does next: report `dropped`, then speak `next`.
    struct Work {
        std::vector<Dropped> dropped;
        std::optional<Utterance> next;
    };

    explicit SpeechQueue(const QueueLimits& limits) : mLimits(limits) {}

    /// @return 0; with nothing changed, -12 when the client's share or the whole queue is full, and
    ///     -14 when the queue is closed.
    TTS::Status push(Utterance utterance);

    /// As `push` and `drop` in one step, for an utterance that arrives too late.
    TTS::Status pushDropped(const Utterance& utterance, int32_t reason);

    /// Drops waiting utterances and cancels the current one.
    ///
    /// @param pid only what this client asked for; empty: everything.
    /// @param status reported with each.
    void drop(std::optional<uint32_t> pid, int32_t status);

    /// True if the process belongs to the user and has an utterance that waits or is spoken, or had
    /// one lately.
    bool isOfUser(uint32_t pid, uint32_t user) const;

    /// As `drop` for a client that is gone; nothing is reported.
    void forget(uint32_t pid);

    /// Waits for work. `Work::next` is the current utterance until `finish`.
    /// @return false once the queue is closed and nothing is left.
    bool wait(Work& work);

    /// What was dropped since, to be reported while an utterance sounds: that of its own client is
    /// left to the next `wait`, since the end of what sounds is told before.
    std::vector<Dropped> takeDropped();

    /// Ends the current utterance. @return the reason if it was cancelled.
    std::optional<int32_t> finish();

    /// Set while the current utterance is to be interrupted.
    const Cancel& cancelled() const { return mCancelled; }

    /// Drops everything with -14; `wait` returns the rest of the work, then false.
    void close();

    /// Number of waiting utterances.
    size_t waiting() const;

    /// Since when nothing has waited or sounded; empty while something does.
    std::optional<std::chrono::steady_clock::time_point> idleSince() const;

private:
    struct Waiting {
        Utterance utterance;
        uint64_t number;  ///< in the order of acceptance, of all clients
    };
    struct Share {
        uint32_t user = 0;  ///< whose process it is
        std::deque<Waiting> waiting;
        size_t textBytes = 0;   ///< of what waits
        size_t dropped = 0;     ///< utterances that are yet to be reported
        uint64_t lastTurn = 0;  ///< the number of the turn in which it was heard last
    };
    using Shares = std::map<uint32_t, Share>;  ///< by process id

    TTS::Status roomFor(const Utterance& utterance) const VOXTRELD_REQUIRES(mMutex);
    uint64_t oldestTurn() const VOXTRELD_REQUIRES(mMutex);
    Share& nextShare() VOXTRELD_REQUIRES(mMutex);
    Utterance takeNext() VOXTRELD_REQUIRES(mMutex);
    void forgetIdleShares() VOXTRELD_REQUIRES(mMutex);
    void addDropped(Share& share, const Utterance& utterance, int32_t status)
        VOXTRELD_REQUIRES(mMutex);
    void dropShare(Share& share, int32_t status, bool report) VOXTRELD_REQUIRES(mMutex);
    void dropLocked(std::optional<uint32_t> pid, int32_t status, bool report)
        VOXTRELD_REQUIRES(mMutex);
    bool hasWork() const VOXTRELD_REQUIRES(mMutex);

    const QueueLimits mLimits;
    mutable Mutex mMutex;
    std::condition_variable mChanged;
    Shares mShares VOXTRELD_GUARDED_BY(mMutex);         ///< who waits, or was heard lately
    size_t mWaiting VOXTRELD_GUARDED_BY(mMutex) = 0;    ///< utterances of all clients
    size_t mTextBytes VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< of these
    uint64_t mAccepted VOXTRELD_GUARDED_BY(mMutex) = 0;
    uint64_t mTurn VOXTRELD_GUARDED_BY(mMutex) = 0;
    std::vector<Dropped> mDropped VOXTRELD_GUARDED_BY(mMutex);
    std::optional<uint32_t> mSoundingPid VOXTRELD_GUARDED_BY(mMutex);
    int32_t mCancelStatus VOXTRELD_GUARDED_BY(mMutex) = 0;
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
    std::chrono::steady_clock::time_point mLastWork VOXTRELD_GUARDED_BY(mMutex) =
        std::chrono::steady_clock::now();
    Cancel mCancelled;
};

}  // namespace voxtreld

#endif
