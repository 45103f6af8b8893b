// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/ForeignService.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/ScriptedService.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtrel_test {
namespace {

constexpr unsigned kLongestPause = 60'000;
constexpr unsigned kOwn = 1;

/// A session of a client's begins its numbers at a multiple of this.
constexpr unsigned kNumbersOfOne = 0x100000;

unsigned ordinal(unsigned id) {
    return id % kNumbersOfOne;
}

}  // namespace

ForeignService::ForeignService() {
    capabilities = support::usualCapabilities();
    isEnabled = true;
}

android::sp<ForeignService> ForeignService::registered() {
    android::ProcessState::self()->startThreadPool();
    const android::sp<ForeignService> service = new ForeignService;
    if (android::defaultServiceManager()->addService(TTS::ITextToSpeechFestival::descriptor,
                                                     service) != android::OK) {
        throw std::runtime_error("the service manager does not take the service");
    }
    return service;
}

void ForeignService::lose(unsigned id) {
    const std::lock_guard<std::mutex> held(mMutex);
    mLost.insert(id);
}

void ForeignService::neverEnd(unsigned id) {
    const std::lock_guard<std::mutex> held(mMutex);
    mEndless.insert(id);
}

void ForeignService::hideEndOf(unsigned id) {
    const std::lock_guard<std::mutex> held(mMutex);
    mUntold.insert(id);
}

void ForeignService::takeAnyPause() {
    const std::lock_guard<std::mutex> held(mMutex);
    mTakesAnyPause = true;
}

void ForeignService::beMute() {
    const std::lock_guard<std::mutex> held(mMutex);
    mIsMute = true;
}

bool ForeignService::isBusy() const {
    const std::lock_guard<std::mutex> held(mMutex);
    return !mQueue.empty();
}

void ForeignService::goOn() {
    const std::lock_guard<std::mutex> held(mMutex);
    tell(mQueue.front().pid, TTS::EVENT_FINISHED, mQueue.front().id, 0);
    mQueue.pop_front();
    begin();
}

void ForeignService::tellState() {
    const std::lock_guard<std::mutex> held(mMutex);
    for (const auto& [pid, client] : mClients) {
        client->notify(TTS::EVENT_STATE, TTS::STATE_VERBOSITY, 0);
    }
}

bool ForeignService::wasCalled(const std::string& line) const {
    const std::vector<std::string> all = calls();
    return std::any_of(all.begin(), all.end(),
                       [&](const std::string& call) { return call.rfind(line, 0) == 0; });
}

bool ForeignService::wasFenced(int process) const {
    const std::vector<std::string> all = calls();
    const std::string begin = "silence(" + std::to_string(process) + ", ";
    return std::any_of(all.begin(), all.end(), [&](const std::string& call) {
        return call.rfind(begin, 0) == 0 && call.find(", 4294967295, ") != std::string::npos;
    });
}

int ForeignService::say(unsigned pid, unsigned id, const std::string& words, unsigned speed,
                        float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                        float pitch, EN_VOXTREL_LANGUAGE language) {
    const std::lock_guard<std::mutex> held(mMutex);
    enqueue({pid, id, mEndless.count(ordinal(id)) != 0});
    return RecordingService::say(pid, id, words, speed, volume, voice, bgVolume, ttsVolume, pitch,
                                 language);
}

int ForeignService::silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) {
    const std::lock_guard<std::mutex> held(mMutex);
    if (second > kLongestPause && !mTakesAnyPause) {
        tell(pid, TTS::EVENT_STOPPED, first, static_cast<unsigned>(TTS::STATUS_BAD_PARAMETER));
    } else {
        enqueue({pid, first, second > kLongestPause || mEndless.count(ordinal(first)) != 0});
    }
    return RecordingService::silence(pid, first, second, bgVolume);
}

int ForeignService::stopAndFlush(unsigned pid, unsigned arg) {
    const std::lock_guard<std::mutex> held(mMutex);
    std::deque<Item> left;
    bool isSpoken = true;
    for (const Item& item : mQueue) {
        if (arg == kOwn && item.pid != pid) {
            left.push_back(item);
        } else {
            drop(item, isSpoken);
        }
        isSpoken = false;
    }
    const bool goesOn = !left.empty() && left.front().pid == mQueue.front().pid;
    mQueue.swap(left);
    if (!goesOn) {
        begin();
    }
    return RecordingService::stopAndFlush(pid, arg);
}

int ForeignService::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    const std::lock_guard<std::mutex> held(mMutex);
    mClients[pid] = cb;
    return TTS::STATUS_OK;
}

int ForeignService::deregisterCallback(unsigned pid) {
    const std::lock_guard<std::mutex> held(mMutex);
    mClients.erase(pid);
    return TTS::STATUS_OK;
}

void ForeignService::enqueue(const Item& item) {
    if (mLost.count(ordinal(item.id)) != 0) {
        return;
    }
    mQueue.push_back(item);
    if (mQueue.size() == 1) {
        begin();
    }
}

void ForeignService::drop(const Item& item, bool hasStarted) {
    if (!hasStarted) {
        tell(item.pid, TTS::EVENT_STARTED, item.id, 0);
    }
    tell(item.pid, TTS::EVENT_STOPPED, item.id, 0);
}

void ForeignService::begin() {
    while (!mQueue.empty()) {
        const Item item = mQueue.front();
        tell(item.pid, TTS::EVENT_STARTED, item.id, 0);
        if (item.isEndless) {
            return;
        }
        if (mUntold.count(ordinal(item.id)) == 0) {
            tell(item.pid, TTS::EVENT_FINISHED, item.id, 0);
        }
        mQueue.pop_front();
    }
}

void ForeignService::tell(unsigned pid, unsigned event, unsigned second, unsigned third) {
    const auto client = mClients.find(pid);
    if (!mIsMute && client != mClients.end()) {
        client->second->notify(event, second, third);
    }
}

}  // namespace voxtrel_test
