// SPDX-License-Identifier: Apache-2.0
// What a process says and what a service, which may be any, tells of it, in any order and at any
// time: each utterance gets one outcome, which is told once, starts at most once and before that,
// and stays in its text; and where nothing more is told, all of them have theirs after a while.
#include <array>
#include <map>
#include <optional>

#include "fuzz/Input.h"
#include "vocabulary/Events.h"
#include "voxtrel/session/Mailbox.h"
#include "voxtrel/session/SpeechQueue.h"

namespace {

using namespace voxtrel;
using voxtrel_fuzz::Input;
using voxtrel_fuzz::require;

/// Of the events that are waited for at the end: each utterance takes a handful.
constexpr unsigned kSteps = 100'000;

class Process {
public:
    explicit Process(Input& input) : mInput(input) {}

    void run() {
        while (!mInput.isAtEnd()) {
            act();
            requireOneOutcomeEach(false);
        }
        fallSilent();
        requireOneOutcomeEach(true);
        require(!mQueue.isOpen(*mClients[0]) && !mQueue.isOpen(*mClients[1]));
    }

private:
    struct Said {
        std::shared_ptr<Speech> speech;
        bool hasStarted = false;
        unsigned ends = 0;
    };

    void act() {
        const unsigned kind = mInput.below(16);
        if (kind < 4) {
            say();
        } else if (kind < 6) {
            send();
        } else if (kind < 11) {
            hear();
        } else if (kind < 13) {
            stop();
        } else {
            pass(kind);
        }
    }

    Mailbox& client() { return *mClients[mInput.below(2)]; }

    void say() {
        const uint8_t choice = mInput.byte();
        auto speech = std::make_shared<Speech>();
        speech->client = mClients[choice & 1U];
        speech->state = std::make_shared<UtteranceState>(mSaid.size() + 1);
        speech->options.onLoss = static_cast<OnLoss>((choice >> 1U) % 3);
        const unsigned kilobytes = choice >> 4U;
        if (kilobytes == 15) {
            speech->pauseMs = choice;
        } else {
            const std::string sentence = mInput.text() + ". ";
            while (speech->text.size() <= 512 * kilobytes) {
                speech->text += sentence;
            }
            if (firstInvalidByte(speech->text).has_value()) {
                speech->text = std::string(speech->text.size(), 'a');
            }
        }
        mSaid[speech->state->number()].speech = speech;
        mQueue.add(speech);
    }

    void send() {
        const bool isRefused = mInput.below(8) == 7;
        for (unsigned left = mInput.below(128); left > 0; --left) {
            const std::optional<SpeechRequest> request = mQueue.next(mNow);
            if (!request) {
                return;
            }
            mLastNumber = request->number;
            if (isRefused && request->speech != nullptr) {
                mQueue.refuse(*request, Status::NotSupported);
            }
        }
    }

    /// Most events are about what was sent lately, with a third number that makes sense.
    void hear() {
        const uint8_t choice = mInput.byte();
        const uint32_t event = choice & 7U;
        const uint32_t back = choice >> 3U;
        const uint32_t number = back == 31 ? mInput.word() : mLastNumber - back;
        const uint8_t third = mInput.byte();
        const bool isAny = third == 255;
        const uint32_t signedThird = static_cast<uint32_t>(static_cast<int8_t>(third));
        mQueue.onEvent(event, number, isAny ? mInput.word() : signedThird, mNow);
    }

    void stop() {
        const unsigned kind = mInput.below(6);
        if (kind == 0) {
            end(mQueue.stop(client()));
        } else if (kind == 1) {
            mQueue.attributeStop(client());
        } else if (kind == 2) {
            mQueue.revokeStop();
        } else if (kind == 3) {
            end(mQueue.dropWaiting(client()));
        } else if (kind == 4) {
            end(mQueue.close(client()));
        } else {
            mQueue.lose(Status::NoService);
        }
    }

    void pass(unsigned kind) {
        if (kind == 13) {
            mNow += std::chrono::milliseconds(mInput.byte());
        } else if (kind == 14) {
            mNow = std::max(mNow, std::min(mQueue.nextMoment(), mNow + std::chrono::hours(1)));
            checkLiveness(mInput.below(2) == 1);
        } else {
            (void)mQueue.takeFlush();
        }
    }

    void checkLiveness(bool isToBeAskedAgain) {
        if (mQueue.needsLivenessCheck(mNow) && !(isToBeAskedAgain && mQueue.askOnceMore())) {
            mQueue.lose(Status::Lost);
        }
    }

    /// No event any more, and nobody wants anything.
    void fallSilent() {
        for (unsigned step = 0;
             mQueue.nextMoment() != SpeechQueue::Clock::time_point::max() || mQueue.hasMore();
             ++step) {
            require(step < kSteps);
            while (mQueue.next(mNow)) {
            }
            (void)mQueue.takeFlush();
            checkLiveness(true);
            if (mQueue.nextMoment() != SpeechQueue::Clock::time_point::max()) {
                mNow = std::max(mNow, mQueue.nextMoment());
            }
        }
    }

    void end(DroppedSpeech dropped) {
        dropped.end([this](Mailbox& client, Event&& event) { note(client, event); });
    }

    void note(const Mailbox& client, const Event& event) {
        Said& said = mSaid.at(event.utterance.number());
        require(&client == said.speech->client.get() && said.ends == 0);
        require(event.position.bytes <= said.speech->text.size());
        require(event.position.characters <= event.position.bytes);
        if (event.kind == Event::Kind::Started) {
            require(!said.hasStarted);
            said.hasStarted = true;
        } else if (event.kind == Event::Kind::Ended) {
            ++said.ends;
            requireGoodOutcome(said, event.outcome);
        } else {
            require(said.hasStarted);
        }
    }

    static void requireGoodOutcome(const Said& said, const Outcome& outcome) {
        require(!outcome.isPending() && outcome.message() != nullptr);
        require(outcome.kind() == said.speech->state->outcome().kind());
        require(!outcome || (said.hasStarted && outcome.wasHeard()));
        require(outcome.kind() != Outcome::Kind::Refused || !said.hasStarted ||
                said.speech->wasRepeated || outcome.status() == Status::NotSupported);
    }

    void requireOneOutcomeEach(bool isAtEnd) const {
        for (const auto& [number, said] : mSaid) {
            const bool hasEnded = !said.speech->state->outcome().isPending();
            require(said.ends == (hasEnded ? 1U : 0U) && (hasEnded || !isAtEnd));
        }
    }

    Input& mInput;
    SpeechQueue::Clock::time_point mNow = SpeechQueue::Clock::time_point() + std::chrono::hours(1);
    uint32_t mLastNumber = 0;
    std::map<uint64_t, Said> mSaid;
    const std::array<std::shared_ptr<Mailbox>, 2> mClients = {std::make_shared<Mailbox>(false),
                                                              std::make_shared<Mailbox>(false)};
    SpeechQueue mQueue{[this](Mailbox& client, Event&& event) { note(client, event); }};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    Process(input).run();
    return 0;
}
