// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_FOREIGNSERVICE_H
#define VOXTREL_TESTS_VOXTRELCTL_FOREIGNSERVICE_H

#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "tests/support/RecordingService.h"

namespace voxtrel_test {

/// A service in the test's own process that speaks in no time, one thing after the other, and has
/// the faults that the test gives it.
///
/// Called on: any thread. Locks: one around the queue, and those of RecordingService.
class ForeignService : public support::RecordingService {
public:
    ForeignService();

    // Utterances by their number among those that a process says, from 1.

    /// Never gets that utterance.
    void lose(unsigned id);

    /// Begins it, and does not end it until it is flushed.
    void neverEnd(unsigned id);

    /// Does not tell its end.
    void hideEndOf(unsigned id);

    /// Pauses for as long as it is asked to.
    void takeAnyPause();

    /// Sends no event of an utterance.
    void beMute();

    /// Makes it what clients find.
    static android::sp<ForeignService> registered();

    /// Something is being spoken, or waits.
    bool isBusy() const;

    /// Ends what has no end, as if it had been spoken.
    void goOn();

    /// Tells every client that a setting has changed.
    void tellState();

    /// Was it called with a line that begins like this?
    bool wasCalled(const std::string& line) const;

    /// Was it asked by this process for a pause that is too long?
    bool wasFenced(int process) const;

    int say(unsigned pid, unsigned id, const std::string& words, unsigned speed, float volume,
            unsigned voice, unsigned bgVolume, unsigned ttsVolume, float pitch,
            EN_VOXTREL_LANGUAGE language) override;
    int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) override;
    int stopAndFlush(unsigned pid, unsigned arg) override;
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) override;
    int deregisterCallback(unsigned pid) override;

private:
    struct Item {
        unsigned pid;
        unsigned id;
        bool isEndless;
    };

    void enqueue(const Item& item);
    void drop(const Item& item, bool hasStarted);
    void begin();
    void tell(unsigned pid, unsigned event, unsigned second, unsigned third);

    mutable std::mutex mMutex;
    std::map<unsigned, android::sp<TTS::ICallback>> mClients;
    std::set<unsigned> mLost;
    std::set<unsigned> mEndless;
    std::set<unsigned> mUntold;
    bool mTakesAnyPause = false;
    bool mIsMute = false;
    std::deque<Item> mQueue;  ///< the first one is being spoken, and has no end
};

}  // namespace voxtrel_test

#endif
