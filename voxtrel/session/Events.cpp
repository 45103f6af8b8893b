// SPDX-License-Identifier: Apache-2.0
// What the service tells a session, and what that tells its clients.
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {

void Session::onNotify(unsigned event, unsigned second, unsigned third) {
    bool hasNews = false;
    bool hasMore = false;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsNoting = true;
        note(event, second, third);
        mIsNoting = false;
        hasNews = mHasNews;
        hasMore = mSpeech.hasMore() || nextMoment() < mWakeAt;
    }
    // Without the lock, which whoever wakes up takes first.
    if (hasNews) {
        mToHandle.notify_one();
    }
    if (hasMore) {
        mToSend.notify_one();
    }
}

void Session::note(unsigned event, unsigned second, unsigned third) {
    if (event == TTS::EVENT_STATE) {
        onState(second, third);
        return;
    }
    const bool isOfUtterance = event == TTS::EVENT_STARTED || event == TTS::EVENT_FINISHED ||
                               event == TTS::EVENT_STOPPED || event == TTS::EVENT_WORD ||
                               event == TTS::EVENT_MARK;
    if (!isOfUtterance) {
        return;
    }
    if (second == mOpenFence && second < kFirstFence && event == TTS::EVENT_STARTED) {
        recallFence();
    }
    if (second == mOpenFence && (event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED)) {
        mOpenFence = 0;
        mChanged.notify_all();
    }
    if (second == mEventFence) {
        mIsEventTold = true;
        ++mEventsTold;
        mChanged.notify_all();
    }
    if (second >= kFirstFence) {
        onFence(second, event, third);
        return;
    }
    mSpeech.onEvent(event, second, third, Clock::now());
}

void Session::onState(unsigned state, unsigned value) {
    if (state == TTS::STATE_REFUSED) {
        if (value == TTS::REQUEST_STOP) {
            answerFences(Answer::Refused);
        } else if (value == TTS::REQUEST_LOCK && mLockAnswer == Answer::None) {
            mLockAnswer = Answer::Refused;
        }
        mChanged.notify_all();
        return;
    }
    if (state == TTS::STATE_LOCK) {
        onLock(value);
    } else if (state == TTS::STATE_READY && value != 0) {
        mIsReady = true;
        mToConnect.notify_one();
    }
    Event event;
    event.kind = Event::Kind::Changed;
    event.setting = static_cast<Event::Setting>(state);
    event.value = value;
    tellAll(event);
}

void Session::tell(Mailbox& client, Event&& event) {
    const bool isEnd = event.kind == Event::Kind::Ended;
    if (client.put(std::move(event)) && !client.isPolled()) {
        mHasNews = true;
        if (!mIsNoting) {
            mToHandle.notify_one();
        }
    }
    if (isEnd) {
        mChanged.notify_all();
    }
}

void Session::tellAll(const Event& event) {
    for (const auto& client : mClients) {
        tell(*client, Event(event));
    }
}

void Session::handle() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnding) {
        if (!mHasNews) {
            mToHandle.wait(lock);
            continue;
        }
        mHasNews = false;
        for (std::size_t place = 0; place < mClients.size(); ++place) {
            std::shared_ptr<Mailbox> client = mClients[place];
            if (!client->isPolled()) {
                lock.unlock();
                client->dispatch();
                client.reset();
                lock.lock();
            }
        }
    }
    finish(mHandler);
}

}  // namespace voxtrel
