// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Speaker.h"

#include "bridges/speech-dispatcher/Markup.h"

namespace sd_voxtrel {
namespace {

/// How often a service is looked at that has told nothing.
constexpr std::chrono::milliseconds kDoubtPause(500);

/// How long a service may take to stop.
constexpr std::chrono::milliseconds kToStop(500);

/// How long a pause waits for a mark: who asks for silence must soon have it.
constexpr std::chrono::milliseconds kToMark(1000);

/// How often a message may be lost, if nothing of it has been heard.
constexpr unsigned kMaxLosses = 3;

/// The library's limit.
constexpr std::size_t kMaxMarkedUp = 262144;

}  // namespace

void Speaker::start(Message message, std::chrono::milliseconds timeout, Clock::time_point now) {
    mMessage = std::move(message);
    mTimeout = timeout;
    mMarks.clear();
    mLastMark = 0;
    mLosses = 0;
    mHasAsked = false;
    mHasBegun = false;
    mTrouble = mMessage.trouble;
    if (!mTrouble.empty() || mMessage.text.empty()) {
        finish(mTrouble.empty() ? End::End : End::Stop);
        return;
    }
    mLastNews = now;
    hold(now);
}

void Speaker::hold(Clock::time_point now) {
    mState = State::Held;
    mMoment = now + kDoubtPause;
    tryToSay(now);
}

void Speaker::tryToSay(Clock::time_point now) {
    if (mState != State::Held || !mService.isConnected()) {
        return;
    }
    if (isMarkedUp(mMessage.text) && !mHasAsked) {
        mHasAsked = true;
        mProbe.ask();
    }
    if (!mProbe.isUnderway()) {  // a question that is stopped would take the message with it
        say(now);
    }
}

/// With its markup only where that is understood, and is not too long.
std::string Speaker::textToSay() const {
    const auto spelledIfWanted = [this](const std::string& text) {
        return mMessage.isSpelled ? spelled(text) : text;
    };
    if (isMarkedUp(mMessage.text) && mProbe.isUnderstood()) {
        std::string text = spelledIfWanted(mMessage.text);
        if (text.size() <= kMaxMarkedUp) {
            return text;
        }
    }
    return spelledIfWanted(isMarkedUp(mMessage.text) ? withoutMarkup(mMessage.text)
                                                     : mMessage.text);
}

void Speaker::say(Clock::time_point now) {
    const std::string text = textToSay();
    mMarks = isMarkedUp(text) ? markNames(text) : std::vector<std::string>();
    mLastMark = 0;
    mNumber = mService.say(text, mMessage.style);
    mState = State::Said;
    mMoment = now + kDoubtPause;
    if (mNumber == 0) {
        mTrouble = "the library could not take the message";
        finish(End::Stop);
    }
}

void Speaker::stop(Clock::time_point now) {
    if (mState == State::Held) {
        finish(End::Stop);
    } else if (mState == State::Ending) {
        mEnd = End::Stop;
    } else if (mState != State::Idle) {
        endWith(End::Stop, now);
    }
}

void Speaker::pause(Clock::time_point now) {
    if (mState == State::Held) {
        finish(End::Pause);
    } else if (mState == State::Said && mHasBegun && mLastMark < mMarks.size()) {
        mState = State::Pausing;
        mMoment = now + kToMark;
    } else if (mState == State::Said) {
        endWith(End::Pause, now);
    }
}

void Speaker::onEvent(const ServiceEvent& event, Clock::time_point now) {
    if (event.kind == ServiceEvent::Kind::Connected) {
        mProbe.forget();
        mHasAsked = false;
        tryToSay(now);
    } else if (mProbe.take(event)) {
        mLastNews = now;
        tryToSay(now);
    } else if (mNumber != 0 && event.utterance == mNumber) {
        mLastNews = now;
        take(event, now);
    }
}

void Speaker::take(const ServiceEvent& event, Clock::time_point now) {
    switch (event.kind) {
        case ServiceEvent::Kind::Started:
            begin();
            break;
        case ServiceEvent::Kind::Mark:
            takeMark(event.mark, now);
            break;
        case ServiceEvent::Kind::Finished:
            finish(End::End);
            break;
        case ServiceEvent::Kind::Stopped:
        case ServiceEvent::Kind::Refused:
            mTrouble = mState == State::Ending ? "" : event.why;
            finish(wantedEnd());
            break;
        case ServiceEvent::Kind::Unable:
        case ServiceEvent::Kind::Lost:
            takeLost(event, now);
            break;
        default:
            break;
    }
}

void Speaker::takeMark(unsigned long number, Clock::time_point now) {
    if (mState == State::Ending || number <= mLastMark || number > mMarks.size()) {
        return;
    }
    begin();
    mLastMark = number;
    mWrite("700-" + mMarks[number - 1] + "\n700 INDEX MARK\n");
    if (mState == State::Pausing) {
        endWith(End::Pause, now);
    }
}

/// Also of what the service is unable to say: it may be able to say it in its own way.
void Speaker::takeLost(const ServiceEvent& event, Clock::time_point now) {
    mTrouble = event.why;
    const bool isUnable = event.kind == ServiceEvent::Kind::Unable;
    const bool isWanted = mState == State::Said;
    const bool mayBeSaid =
        isUnable ? mMessage.style.relax() : !event.wasHeard && ++mLosses < kMaxLosses;
    if (isWanted && mayBeSaid) {
        mNumber = 0;
        hold(now);
    } else {
        finish(wantedEnd());
    }
}

/// What the server is told of a message that does not come to its end.
Speaker::End Speaker::wantedEnd() const {
    return mState == State::Ending ? mEnd : mState == State::Pausing ? End::Pause : End::Stop;
}

std::optional<Speaker::Clock::time_point> Speaker::nextMoment() const {
    return isIdle() ? std::nullopt : std::optional<Clock::time_point>(mMoment);
}

void Speaker::onTime(Clock::time_point now) {
    if (isIdle() || now < mMoment) {
        return;
    }
    if (mState == State::Ending) {
        finish(mEnd);
    } else if (mState == State::Pausing) {
        endWith(End::Pause, now);
    } else {
        doubt(now);
    }
}

/// Silence is no proof: others may be speaking. Only a service that is not there, or does not
/// answer, is given up.
void Speaker::doubt(Clock::time_point now) {
    mMoment = now + kDoubtPause;
    const bool isConnected = mService.isConnected();
    if (isConnected && now < mLastNews + 2 * kDoubtPause) {
        return;
    }
    if (isConnected && mService.answers()) {
        mLastNews = now;
    } else if (now >= mLastNews + mTimeout) {
        mTrouble = isConnected ? "the service does not answer" : "there is no service";
        if (mState == State::Said) {
            mService.stop();
        }
        finish(End::Stop);
    }
}

void Speaker::endWith(End end, Clock::time_point now) {
    mService.stop();
    mState = State::Ending;
    mEnd = end;
    mMoment = now + kToStop;
}

void Speaker::begin() {
    if (!mHasBegun) {
        mHasBegun = true;
        mWrite("701 BEGIN\n");
    }
}

void Speaker::finish(End end) {
    mState = State::Idle;
    mNumber = 0;
    begin();
    mWrite(end == End::End ? "702 END\n" : end == End::Stop ? "703 STOP\n" : "704 PAUSE\n");
    if (end == End::End) {
        mTrouble.clear();
    }
}

}  // namespace sd_voxtrel
