// SPDX-License-Identifier: Apache-2.0
#include "tools/Speech.h"

#include "tools/Errors.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr unsigned kFlushOwn = 1;
constexpr uint32_t kNotSet = 65535;
constexpr size_t kAhead = 3;  ///< requests with the service at a time
static_assert(kAhead * kPieceBytes <= kMostOnTheWay, "they are not waited for");
constexpr auto kFlushPatience = std::chrono::seconds(2);

/// What the service sent before its end comes on other threads than the news of its end.
constexpr auto kLastEvents = std::chrono::seconds(5);

/// Others may speak for hours before it is our turn. But who is asked for an event, with a fence,
/// and sends none, never sends one.
constexpr auto kQuiet = std::chrono::seconds(15);

/// A pause of no length. The number above this one's is that of the last utterance before it.
constexpr uint32_t kProbe = 0x80000000;

bool isProbe(const Event& event) {
    return isOfUtterance(event) && event.second > kProbe && !Fence::isFence(event);
}

}  // namespace

void Speech::say(const std::vector<std::string>& texts) {
    mTexts = texts;
    feed();
    finish();
}

void Speech::pause(uint32_t milliseconds) {
    mTexts = {""};
    mSent = 1;
    check(mSession.client()->silence(1, milliseconds), "");
    mUtterances.sent(1);
    finish();
}

void Speech::feed() {
    // What is sent behind a fence would be dropped with it, if the service takes that.
    while (!mServiceDied && !mFence.isPending() && mSent < mTexts.size() &&
           mUtterances.open() < kAhead) {
        const std::string& text = mTexts[mSent++];
        const auto number = static_cast<uint32_t>(mSent);
        check(mSession.client()->say(number, text), "");
        mUtterances.sent(number);
    }
}

void Speech::finish() {
    awaitEnd();
    mFence.finish();
    if (mFence.wasTaken()) {
        warnOfAnyPause();
    }
}

void Speech::awaitEnd() {
    auto deadline = EventQueue::Clock::now() + kQuiet;
    while (!isOver()) {
        const Notice notice =
            EventQueue::instance().next(deadline, [](const Notice&) { return true; });
        mFence.see(notice);
        switch (notice.source) {
            case Notice::Source::Service:
                onEvent(notice.event);
                if (!mServiceDied && isOfUtterance(notice.event)) {
                    deadline = EventQueue::Clock::now() + kQuiet;
                }
                break;
            case Notice::Source::ServiceDied:
                mServiceDied = true;
                deadline = EventQueue::Clock::now() + kLastEvents;
                break;
            case Notice::Source::TimedOut:
                deadline = onQuiet();
                break;
            case Notice::Source::Interrupted:
                flush();
                throw Interrupted();
            default:
                break;
        }
    }
}

/// Asks for an event at once, and for one when it is our turn: the first shows that the service
/// sends events, the second whether what we have sent has reached it.
EventQueue::Clock::time_point Speech::onQuiet() {
    if (mServiceDied) {
        throw Failure(TTS::STATUS_NO_SERVICE, "it died while speaking");
    }
    if (mAsked) {
        mFence.finish();
        throw Unanswered(
            "whether it has spoken, and it was asked to drop what is left of it",
            mFence.wasTaken() ? Unanswered::Why::TakesAnyPause : Unanswered::Why::NoEvent);
    }
    const uint32_t probe = kProbe + static_cast<uint32_t>(mSent);
    (void)mSession.service().silence(mSession.client()->mPid, probe, 0, kNotSet);
    mFence.send();
    mAsked = true;
    return EventQueue::Clock::now() + kQuiet;
}

void Speech::onEvent(const Event& event) {
    if (!isOfUtterance(event)) {
        return;  // the changes that everybody is told say nothing about ours
    }
    mAsked = false;
    if (isProbe(event)) {
        onProbe(event);
    }
    if (!mUtterances.isOpen(event.second)) {
        feed();
        return;
    }
    mPrinter.show(event, mTexts[event.second - 1]);
    mUtterances.see(event);
    requireNoneLost();
    if (!isTerminal(event)) {
        return;
    }
    if (kindOf(event) == EventKind::Stopped) {
        check(statusOf(event), "");
        mTexts.resize(mSent);  // somebody wants silence, not the next page
    }
    feed();
}

void Speech::onProbe(const Event& event) {
    if (kindOf(event) != EventKind::Started) {
        return;  // a refusal comes before its turn
    }
    const uint32_t last = event.second - kProbe;
    mUtterances.passed(last);
    requireNoneLost();
    if (mUtterances.isAnyOpen(last)) {
        flush();
        throw Unanswered("whether it has spoken to the end");
    }
}

void Speech::requireNoneLost() {
    if (mUtterances.lost()) {
        flush();
        throw Lost(*mUtterances.lost());
    }
}

void Speech::flush() {
    (void)mSession.service().stopAndFlush(mSession.client()->mPid, kFlushOwn);
    const auto deadline = EventQueue::Clock::now() + kFlushPatience;
    while (mUtterances.open() > 0) {
        const Notice notice =
            EventQueue::instance().next(deadline, [](const Notice&) { return true; });
        mFence.see(notice);
        if (notice.source != Notice::Source::Service) {
            return;  // a second Ctrl-C, a service that died or does not answer: leave all the same
        }
        if (isTerminal(notice.event) && mUtterances.isOpen(notice.event.second)) {
            mPrinter.show(notice.event, "");
        }
        mUtterances.see(notice.event);
    }
}

}  // namespace voxtrelctl
