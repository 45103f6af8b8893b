// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Actor.h"

#include <iterator>
#include <thread>

namespace soak {
namespace {

/// Long enough to see that a request was lost, which takes three fences.
constexpr std::chrono::seconds kToBeCalm(180);

std::string repeated(const std::string& text, unsigned times) {
    std::string all;
    for (unsigned n = 0; n < times; ++n) {
        all += text;
    }
    return all;
}

}  // namespace

Actor::Actor(Stage& stage, bool talks, unsigned seed)
    : mStage(stage), mTalks(talks), mRandom(seed) {}

void Actor::act() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        renew();
    }
    while (!mIsEnding) {
        std::this_thread::sleep_for(Milliseconds(upTo(80)));
        const std::lock_guard<std::mutex> lock(mMutex);
        if (!mIsCalm) {
            doSomething();
        }
    }
    drop();
}

bool Actor::becomeCalm() {
    mIsCalm = true;
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mSpeaker == nullptr) {
        return true;
    }
    mSpeaker->unlock();
    mSpeaker->stop();
    const bool isCalm = mSpeaker->waitForAll(kToBeCalm);
    mSpeaker->dispatch();
    return isCalm;
}

void Actor::doSomething() {
    call("dispatch", Milliseconds(0), [&] { mSpeaker->dispatch(); });
    call("unlock", Milliseconds(0), [&] { mSpeaker->unlock(); });
    const unsigned choice = upTo(99);
    if (mSpeaker->open() > kMaxOpen) {
        call("stop", Milliseconds(0), [&] { mSpeaker->stop(); });
    } else if (choice < (mTalks ? 94 : 20)) {
        speak();
    } else if (choice < 99) {
        request();
    } else {
        renew();
    }
}

void Actor::speak() {
    if (upTo(9) == 0) {
        const Milliseconds length(upTo(200));
        call("pause", Milliseconds(0), [&] { mSpeaker->pause(length); });
        return;
    }
    const Speech speech = anySpeech();
    call("say", Milliseconds(0), [&] { mSpeaker->say(speech); });
}

void Actor::request() {
    const Milliseconds d = anyDeadline();
    switch (upTo(15)) {
        case 0:
            return call("stopEverybody", d, [&] { mSpeaker->stopEverybody(d); });
        case 1:
            return call("stop", Milliseconds(0), [&] { mSpeaker->stop(); });
        case 2:
            return call("lock", d, [&] { mSpeaker->lock(d); });
        case 3:
        case 4:
            return call("features", d, [&] { mSpeaker->readFeatures(d); });
        case 5:
        case 6:
            return call("isOn", d, [&] { mSpeaker->readSwitch(d); });
        case 7:
        case 8:
            return call("change", d, [&] { mSpeaker->changeSpeed(300 + upTo(300), d); });
        case 9:
        case 10:
            return call("waitForAll", d, [&] { (void)mSpeaker->waitForAll(d); });
        default:
            return call("settings", d, [&] { mSpeaker->readSettings(d); });
    }
}

void Actor::renew() {
    drop();
    const bool isPolled = upTo(1) == 0;
    call("begin", Milliseconds(0),
         [&] { mSpeaker = mStage.newSpeaker(mStage.ledger, ++mStage.clients, isPolled); });
}

void Actor::drop() {
    if (mSpeaker != nullptr) {
        call("end", Speaker::kEnd, [&] { mSpeaker.reset(); });
    }
}

void Actor::call(const char* name, Milliseconds deadline, const std::function<void()>& make) {
    const auto begun = Heartbeat::Clock::now();
    const auto missed = mStage.heartbeat.missed();
    make();
    const auto taken = Heartbeat::Clock::now() - begun - (mStage.heartbeat.missed() - missed);
    const auto beyond = std::chrono::duration_cast<Milliseconds>(taken) - deadline;
    mStage.ledger.called(name, static_cast<long>(beyond.count()));
}

unsigned Actor::upTo(unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(mRandom);
}

Milliseconds Actor::anyDeadline() {
    constexpr int kDeadlines[] = {0, 20, 100, 500, 2000};
    return Milliseconds(kDeadlines[upTo(std::size(kDeadlines) - 1)]);
}

Speech Actor::anySpeech() {
    Speech speech;
    speech.onLoss = static_cast<int>(upTo(2));
    const unsigned choice = upTo(19);
    if (choice == 0) {
        speech.text = repeated("It rains on the town, and nobody has an umbrella.\n", upTo(400));
    } else if (choice == 1) {
        speech.text = "<speak>One <mark name='a'/>two <break time='20ms'/>three.</speak>";
    } else if (choice == 2) {
        speech = {"Nobody speaks this.", "tlh", 0};
    } else if (choice == 3) {
        speech.text = "not \xFF UTF-8";
    } else if (choice < 8) {
        speech.text = "Two short sentences. Both are in English.";
        speech.language = "en";
    } else {
        speech.text = "Hello.";
    }
    return speech;
}

}  // namespace soak
