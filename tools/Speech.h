// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SPEECH_H
#define VOXTREL_TOOLS_SPEECH_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/EventPrinter.h"
#include "tools/Fence.h"
#include "tools/Session.h"
#include "tools/Settle.h"
#include "tools/Utterances.h"

namespace voxtrelctl {

/// Speaks texts one after the other and stays until the last of them is over.
///
/// Only a few requests are with the service at a time, so that a book neither fills its queue nor
/// keeps others from speaking between the pages. Called on: the main thread. Locks: none.
class Speech {
public:
    /// Both must outlive this object.
    Speech(Session& session, EventPrinter& printer)
        : mSession(session), mPrinter(printer), mFence(session) {}

    /// Speaks `texts` in order, up to the first that somebody flushes. Throws Failure with the
    /// service's reason when it refuses one or is shut down, with -5 when it dies, Lost when one
    /// has not reached it, Unanswered when it sends no event, and Interrupted on Ctrl-C; the last
    /// three after what was queued has been flushed.
    void say(const std::vector<std::string>& texts);

    /// Queues a pause and stays until it is over. Throws as say().
    void pause(uint32_t milliseconds);

private:
    void feed();
    void finish();
    void awaitEnd();
    EventQueue::Clock::time_point onQuiet();
    void onEvent(const Event& event);
    void onProbe(const Event& event);
    void requireNoneLost();
    void flush();
    bool isOver() const { return mSent == mTexts.size() && mUtterances.open() == 0; }

    Session& mSession;
    EventPrinter& mPrinter;
    std::vector<std::string> mTexts;  ///< utterance n is entry n - 1
    size_t mSent = 0;
    Utterances mUtterances;
    Fence mFence;
    bool mServiceDied = false;
    bool mAsked = false;  ///< for an event, since the last one
};

}  // namespace voxtrelctl

#endif
