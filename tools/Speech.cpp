// SPDX-License-Identifier: Apache-2.0
#include "tools/Speech.h"

#include "tools/Errors.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr unsigned kFlushOwn = 1;
constexpr size_t kAhead = 3;  ///< requests with the service at a time
static_assert(kAhead * kPieceBytes <= kMostOnTheWay, "they are not waited for");
constexpr auto kFlushPatience = std::chrono::seconds(2);

/// What the service sent before its end comes on other threads than the news of its end.
constexpr auto kLastEvents = std::chrono::milliseconds(500);

/// Others may speak for hours before it is our turn. But who is asked for an event, with a fence,
/// and sends none, never sends one.
constexpr auto kQuiet = std::chrono::seconds(15);

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
    finish();
}

void Speech::feed() {
    while (!mServiceDied && mSent < mTexts.size() && mSent - mEnded < kAhead) {
        const std::string& text = mTexts[mSent++];
        check(mSession.client()->say(static_cast<unsigned>(mSent), text), "");
    }
}

void Speech::finish() {
    auto deadline = EventQueue::Clock::now() + kQuiet;
    while (!isOver()) {
        const Notice notice =
            EventQueue::instance().next(deadline, [](const Notice&) { return true; });
        switch (notice.source) {
            case Notice::Source::Service:
                onEvent(notice.event);
                if (!mServiceDied) {
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

EventQueue::Clock::time_point Speech::onQuiet() {
    if (mServiceDied) {
        throw Failure(TTS::STATUS_NO_SERVICE, "it died while speaking");
    }
    if (mAsked) {
        throw Unanswered("whether it has spoken");
    }
    sendFence(mSession);
    mAsked = true;
    return EventQueue::Clock::now() + kQuiet;
}

void Speech::onEvent(const Event& event) {
    mAsked = false;
    if (!isOfUtterance(event) || event.second == 0 || event.second > mSent) {
        return;
    }
    mPrinter.show(event, mTexts[event.second - 1]);
    if (!isTerminal(event)) {
        return;
    }
    ++mEnded;
    if (kindOf(event) == EventKind::Stopped) {
        check(statusOf(event), "");
        mTexts.resize(mSent);  // somebody wants silence, not the next page
    }
    feed();
}

void Speech::flush() {
    (void)mSession.client()->stopAndFlush(kFlushOwn);
    const auto deadline = EventQueue::Clock::now() + kFlushPatience;
    while (mEnded < mSent) {
        const Notice notice =
            EventQueue::instance().next(deadline, [](const Notice&) { return true; });
        if (notice.source != Notice::Source::Service) {
            return;  // a second Ctrl-C, a service that died or does not answer: leave all the same
        }
        if (isTerminal(notice.event)) {
            mPrinter.show(notice.event, "");
            ++mEnded;
        }
    }
}

}  // namespace voxtrelctl
