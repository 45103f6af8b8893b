// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_SPEECHQUEUE_H
#define VOXTREL_SESSION_SPEECHQUEUE_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include "voxtrel/Event.h"
#include "voxtrel/session/DroppedSpeech.h"
#include "voxtrel/session/Speech.h"
#include "voxtrel/session/WaitingLines.h"

namespace voxtrel {

/// What the clients of a process have said and what has become of it: the one place where outcomes
/// are decided.
///
/// The service serves a process's requests in the order sent, and tells of them in that order. So
/// when it tells that a later one sounds, an earlier one without an end was lost, or the event
/// about its end. Behind the last one a probe is sent after a while of quiet.
///
/// All that is on its way belongs to one client, because the service can only be asked to drop all
/// that a process sent. Clients take turns by utterance.
///
/// No threads, no waiting, no clock of its own. Called on: any one thread at a time. Only `add` and
/// `next` throw std::bad_alloc, and have done nothing then.
class SpeechQueue {
public:
    using Clock = std::chrono::steady_clock;

    /// At most so much is on its way without an end, as far as one utterance allows.
    static constexpr std::size_t kMaxPieces = 64;
    static constexpr std::size_t kMaxBytes = 65536;

    /// After so much quiet the first probe is sent, and the next after longer and longer ones.
    static constexpr std::chrono::milliseconds kQuiet = std::chrono::seconds(2);
    static constexpr std::chrono::milliseconds kLongestQuiet = std::chrono::minutes(8);

    /// A fence that has no answer by then has none unless the service was stopped meanwhile.
    static constexpr std::chrono::milliseconds kFenceTimeout = std::chrono::seconds(15);

    /// A service that is being ended is sent nothing for so long, or until it is gone.
    static constexpr std::chrono::milliseconds kEnding = std::chrono::seconds(15);

    /// What is dropped while it waits is told to start and to stop at once. Only what goes on for
    /// longer than this, or comes to a word, has been heard.
    static constexpr std::chrono::milliseconds kInaudible = std::chrono::milliseconds(50);

    /// A service has dropped after this what it was asked to drop. Of what comes to words still,
    /// the request to drop it was lost.
    static constexpr std::chrono::milliseconds kToDrop = std::chrono::seconds(1);

    /// Called for whatever the application is to be told, after the state of the utterance changed.
    using Teller = std::function<void(Mailbox&, Event&&)>;

    /// @param lastNumber numbers on the wire go on from there.
    explicit SpeechQueue(Teller teller, std::uint32_t lastNumber = 0)
        : mTell(std::move(teller)), mNumber(lastNumber) {}

    /// Queues it.
    void add(std::shared_ptr<Speech> speech);

    /// The next request that may be sent now. It counts as sent.
    std::optional<SpeechRequest> next(Clock::time_point now);

    /// When `next` or `needsLivenessCheck` may answer otherwise though nothing happens;
    /// `time_point::max()` for never.
    Clock::time_point nextMoment() const;

    /// The request that `next` gave cannot be sent; or a text cannot be spoken, and is not queued.
    void refuse(const SpeechRequest& request, Status status);
    void refuse(const std::shared_ptr<Speech>& speech, Status status);

    /// Takes note of an event: started, finished, stopped, a word or a mark.
    void onEvent(std::uint32_t event, std::uint32_t number, std::uint32_t third,
                 Clock::time_point now);

    /// Drops what `client` said and has not been sent; `takeFlush` asks for the rest to be dropped.
    /// @return what is to be ended.
    DroppedSpeech stop(const Mailbox& client);

    /// Notes that a client is about to silence everybody.
    void attributeStop(const Mailbox& by);

    /// It has not come to that.
    void revokeStop();

    /// Drops what has not been sent, whoever said it.
    /// @return what is to be ended.
    DroppedSpeech dropWaiting(const Mailbox& by);

    /// The service is gone, or its events are: everything on its way is lost.
    void lose(Status status);

    /// The client ends: its utterances get their outcome.
    /// @return what is to be ended.
    DroppedSpeech close(const Mailbox& client);

    /// Utterances of `client` that the service does not have yet, or that have no outcome.
    bool isWaiting(const Mailbox& client) const;
    bool isOpen(const Mailbox& client) const;

    /// Utterances of `client` that have no outcome, and that it has not stopped.
    bool isWanted(const Mailbox& client) const;

    bool isAnythingInFlight() const { return !mInFlight.empty(); }

    /// Something sounds, as far as is known, that was on its way when everybody was silenced.
    bool isSilencedSounding() const;

    /// `next` or `takeFlush` may have something when an event has made room for it.
    bool hasMore() const { return mPartlySent != nullptr || !mWaiting.isEmpty() || mOwesFlush; }

    /// No event came though one was asked for twice, long ago: the service is stopped, or tells of
    /// nothing. Ask it something else.
    bool needsLivenessCheck(Clock::time_point now) const;

    /// It answers that. One that was stopped tells now what it did not, after one more fence.
    /// @return false when it had that chance before: no event will ever come.
    bool askOnceMore();

    /// Set when something is on its way that must not be spoken any more: ask for it to be dropped.
    bool owesFlush() const { return mOwesFlush; }
    void oweFlush() { mOwesFlush = true; }

    /// The same, and forgets it.
    bool takeFlush();

private:
    /// A piece with the service, or a probe.
    struct InFlight {
        std::uint32_t number = 0;
        std::shared_ptr<Speech> speech = nullptr;  ///< null: a probe, or its speech has ended
        Position begin = {};
        Position cursor = {};  ///< of the last word told
        std::size_t bytes = 0;
        bool isProbe = false;
        bool isSilenced = false;  ///< with everybody
        bool hasStarted = false;
        Clock::time_point started = {};
        Clock::time_point goesOn = {};  ///< the first word of it after it was stopped
    };

    std::shared_ptr<Speech> choose() const;
    std::shared_ptr<Speech> nextTurn() const;
    bool isBusyWithPieces() const;
    SpeechRequest cut(const std::shared_ptr<Speech>& speech);
    std::optional<SpeechRequest> probe(Clock::time_point now);
    std::uint32_t newNumber();

    InFlight* find(std::uint32_t number);
    void remove(std::uint32_t number);
    void onStarted(std::uint32_t number, Clock::time_point now);
    void onPlace(InFlight& sent, Event::Kind kind, std::uint32_t third, Clock::time_point now);
    void flushAgain(InFlight& sent, Clock::time_point now);
    void onFinished(std::uint32_t number);
    void onStopped(std::uint32_t number, Status status, Clock::time_point now);
    void passed(std::uint32_t number);

    void loseFirst(std::size_t count, Status status);
    void lose(const std::shared_ptr<Speech>& speech, Status status);
    static bool mayRepeat(const Speech& speech);
    bool repeat(const std::shared_ptr<Speech>& speech);
    static void forgetPiece(InFlight& sent);
    void detach(const std::shared_ptr<Speech>& speech);
    void end(const std::shared_ptr<Speech>& speech, const Outcome& outcome);

    const Teller mTell;
    WaitingLines mWaiting;
    std::shared_ptr<Speech> mPartlySent;  ///< a part of it was sent, and not all
    std::shared_ptr<Mailbox> mTurn;       ///< who had the last turn
    std::deque<InFlight> mInFlight;       ///< by number
    std::size_t mBytes = 0;               ///< in `mInFlight`
    std::uint32_t mNumber;
    Clock::time_point mLast = {};                    ///< last sending or event
    std::chrono::milliseconds mProbeDelay = kQuiet;  ///< of silence, until a probe
    unsigned mUnanswered = 0;                        ///< fences since the last event
    Clock::time_point mAsked = {};                   ///< when the last of them was sent
    bool mHasAnswered = false;                       ///< something else since
    Clock::time_point mClosed = {};                  ///< until then it is being ended
    bool mOwesFence = false;
    bool mOwesFlush = false;
};

}  // namespace voxtrel

#endif
