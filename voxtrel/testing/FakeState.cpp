// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeState.h"

#include <sstream>

#include "vocabulary/Events.h"
#include "vocabulary/Status.h"
#include "voxtrel/session/TextCutter.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel::testing {
namespace {

constexpr std::uint32_t kLongestPause = 60000;

bool isBlank(char letter) {
    return letter == ' ' || letter == '\n' || letter == '\t' || letter == '\r';
}

template <typename Number>
void write(std::ostream& out, const char* name, Number value) {
    if (value != static_cast<Number>(WireSettings::kNotSet)) {
        out << ' ' << name << ' ' << value;
    }
}

std::string lineOf(unsigned number, const std::string& text, const WireSettings& wire) {
    std::ostringstream out;
    out << "say " << number << " \"" << text << '"';
    if (wire.language != LANG_NA) {
        out << ' ' << tagOf(wire.language);
    }
    write(out, "voice", wire.voice);
    write(out, "speed", wire.speed);
    write(out, "pitch", wire.pitch);
    write(out, "volume", wire.volume);
    write(out, "speech-volume", wire.speechVolume);
    write(out, "media-volume", wire.mediaVolume);
    return out.str();
}

}  // namespace

FakeState::FakeState() : mThread([this] { run(); }) {}

FakeState::~FakeState() {
    end();
}

void FakeState::end() {
    die();
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mHasEnded = true;
        mChanged.notify_all();
    }
    if (mThread.joinable()) {
        mThread.join();
    }
}

std::optional<std::uint64_t> FakeState::link(std::function<void()> died) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mIsAlive || mHasEnded) {
        return std::nullopt;
    }
    mDied = std::move(died);
    return mLife;
}

/// Waits while the service is frozen. False if that life has ended.
bool FakeState::enter(std::unique_lock<std::mutex>& lock, std::uint64_t life) {
    const auto isOver = [this, life] { return !mIsAlive || mLife != life; };
    mChanged.wait(lock, [&] { return !mIsFrozen || isOver(); });
    return !isOver();
}

bool FakeState::isAlive(std::uint64_t life) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mIsAlive && mLife == life;
}

int FakeState::answer(std::uint64_t life, const std::function<int()>& serve) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (enter(lock, life) && mDelay.count() > 0) {
        mChanged.wait_for(lock, mDelay, [this, life] { return !mIsAlive || mLife != life; });
    }
    if (!enter(lock, life)) {
        return TTS::STATUS_NO_SERVICE;
    }
    while (serveNext()) {
    }
    return serve();
}

int FakeState::take(std::uint64_t life, std::function<void()> serve) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!enter(lock, life)) {
        return TTS::STATUS_NO_SERVICE;
    }
    mInbox.push_back(std::move(serve));
    mChanged.notify_all();
    return TTS::STATUS_OK;
}

void FakeState::run() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mHasEnded) {
        if (mIsFrozen || !step(lock)) {
            mChanged.wait(lock);
        }
    }
}

/// Does the next thing there is to do; false if there is none.
bool FakeState::step(std::unique_lock<std::mutex>& lock) {
    if (!mOutbox.empty()) {
        const Telling telling = mOutbox.front();
        mOutbox.pop_front();
        mIsTelling = true;
        lock.unlock();
        telling.client->notify(telling.event, telling.second, telling.third);
        lock.lock();
        mIsTelling = false;
        mChanged.notify_all();
        return true;
    }
    if (serveNext()) {
        return true;
    }
    if (mSpeech.empty() || (mIsHeld && mSpeech.front().hasStarted)) {
        return false;
    }
    speak();
    return true;
}

bool FakeState::serveNext() {
    if (mInbox.empty()) {
        return false;
    }
    const std::function<void()> serve = std::move(mInbox.front());
    mInbox.pop_front();
    serve();
    mChanged.notify_all();
    return true;
}

void FakeState::speak() {
    Utterance& utterance = mSpeech.front();
    if (!utterance.hasStarted) {
        utterance.hasStarted = true;
        tell(utterance, TTS::EVENT_STARTED, 0);
        return;
    }
    tellWords(utterance);
    tell(utterance, TTS::EVENT_FINISHED, 0);
    if (!utterance.result.empty()) {
        mSpoken.push_back(utterance.result);
    }
    mSpeech.pop_front();
    mChanged.notify_all();
}

void FakeState::tellWords(const Utterance& utterance) {
    const std::string& text = utterance.text;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!isBlank(text[at]) && (at == 0 || isBlank(text[at - 1]))) {
            const std::size_t place = countCharacters(std::string_view(text).substr(0, at));
            tell(utterance, TTS::EVENT_WORD, static_cast<unsigned>(place));
        }
    }
}

bool FakeState::takeFault(bool& isWanted) {
    const bool is = isWanted;
    isWanted = false;
    return is;
}

/// To whom asked, unless it has left or registered anew.
void FakeState::tell(const Utterance& utterance, unsigned event, unsigned third) {
    const bool isReal = !utterance.result.empty();
    bool isEnd = event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED;
    bool none = false;
    bool& fault = isEnd                         ? mLosesEnded
                  : event == TTS::EVENT_STARTED ? mLosesStarted
                  : event == TTS::EVENT_WORD    ? mLosesWord
                                                : none;
    if ((isReal && takeFault(fault)) || utterance.client == nullptr ||
        utterance.client != mClient) {
        return;
    }
    mOutbox.push_back({utterance.client, event, utterance.number, third});
}

void FakeState::tellState(unsigned state, unsigned value) {
    if (mClient != nullptr) {
        mOutbox.push_back({mClient, TTS::EVENT_STATE, state, value});
        mChanged.notify_all();
    }
}

void FakeState::enroll(unsigned pid, const Callback& callback) {
    note("register");
    mPid = pid;
    mClient = callback;
}

void FakeState::expel(unsigned pid) {
    if (pid != mPid) {
        return;
    }
    note("unregister");
    mClient.clear();
    if (mHolder == pid) {
        mHolder = 0;
    }
}

int FakeState::changeStatus(unsigned pid) const {
    return mHolder == 0 || mHolder == pid ? TTS::STATUS_OK : TTS::STATUS_LOCKED;
}

void FakeState::say(unsigned pid, unsigned number, const std::string& text,
                    const WireSettings& wire) {
    if (!takeFault(mLosesRequest)) {
        note(lineOf(number, text, wire));
        Utterance utterance;
        utterance.number = number;
        utterance.text = text;
        utterance.result = text;
        utter(pid, std::move(utterance), TTS::STATUS_OK);
    }
}

void FakeState::pause(unsigned pid, unsigned number, std::uint32_t length) {
    const bool isTooLong = length > kLongestPause;
    const bool isReal = length != 0 && length != wire::kEndlessPause;
    if (isReal && takeFault(mLosesRequest)) {
        return;
    }
    if (length != wire::kEndlessPause) {
        note("pause " + std::to_string(number) + " " + std::to_string(length));
    }
    Utterance utterance;
    utterance.number = number;
    utterance.result = isReal ? "(pause " + std::to_string(length) + " ms)" : "";
    utter(pid, std::move(utterance), isTooLong ? TTS::STATUS_BAD_PARAMETER : TTS::STATUS_OK);
}

void FakeState::utter(unsigned pid, Utterance utterance, int status) {
    utterance.client = pid == mPid ? mClient : nullptr;
    if (mRefusal != Status::Ok && !utterance.result.empty()) {
        status = static_cast<int>(mRefusal);
        mRefusal = Status::Ok;
    }
    if (changeStatus(pid) != TTS::STATUS_OK) {
        status = changeStatus(pid);
    } else if (!mSettings.isEnabled()) {
        status = TTS::STATUS_DISABLED;
    } else if (mIsEnding) {
        status = TTS::STATUS_SHUTDOWN;
    }
    if (status == TTS::STATUS_OK) {
        mSpeech.push_back(std::move(utterance));
    } else {
        tell(utterance, TTS::EVENT_STOPPED, static_cast<unsigned>(status));
    }
}

void FakeState::stop(unsigned pid, bool isEverything) {
    if (pid != mPid) {
        note("stop process " + std::to_string(pid));
        return;
    }
    note(isEverything ? "stop everything" : "stop own");
    if (changeStatus(pid) == TTS::STATUS_OK) {
        drop(TTS::STATUS_OK);
    } else {
        tellState(TTS::STATE_LOCK, mHolder);
    }
}

void FakeState::drop(int status) {
    for (const Utterance& utterance : mSpeech) {
        if (!utterance.hasStarted) {
            tell(utterance, TTS::EVENT_STARTED, 0);
        }
        tell(utterance, TTS::EVENT_STOPPED, static_cast<unsigned>(status));
    }
    mSpeech.clear();
    mChanged.notify_all();
}

void FakeState::lock(unsigned pid) {
    note("lock");
    if (mHolder == pid) {
        return;  // nothing has changed
    }
    if (changeStatus(pid) == TTS::STATUS_OK && pid == mPid) {
        mHolder = pid;
    }
    tellState(TTS::STATE_LOCK, mHolder);
}

void FakeState::unlock(unsigned pid) {
    note("unlock");
    if (mHolder == pid) {
        mHolder = 0;
        tellState(TTS::STATE_LOCK, 0);
    }
}

int FakeState::setVerbosity(unsigned pid, int verbosity) {
    note("set verbosity " + std::to_string(verbosity));
    if (changeStatus(pid) != TTS::STATUS_OK) {
        return changeStatus(pid);
    }
    const int status = mSettings.setVerbosity(verbosity);
    if (status == TTS::STATUS_OK) {
        tellState(TTS::STATE_VERBOSITY, static_cast<unsigned>(verbosity));
    }
    return status;
}

int FakeState::set(unsigned pid, VOXTRELAPI_GCONF key, const void* value) {
    const int locked = changeStatus(pid);
    const int status = locked != TTS::STATUS_OK ? locked : mSettings.set(key, value);
    if (status == TTS::STATUS_OK) {
        note("set " + FakeSettings::nameOf(key) + " " +
             (key == GCONF_LANGUAGE ? tagOf(static_cast<EN_VOXTREL_LANGUAGE>(mSettings.told(key)))
                                    : std::to_string(mSettings.told(key))));
        tellState(static_cast<unsigned>(key), mSettings.told(key));
    } else {
        note("set " + FakeSettings::nameOf(key) + " (refused)");
    }
    return status;
}

int FakeState::turn(unsigned pid, VOXTRELAPI_GCONF key, bool on) {
    note("switch " + FakeSettings::nameOf(key) + (on ? " on" : " off"));
    const int locked = changeStatus(pid);
    const int status = locked != TTS::STATUS_OK ? locked : mSettings.turn(key, on);
    if (status == TTS::STATUS_OK) {
        tellState(static_cast<unsigned>(key), on);
    }
    return status;
}

int FakeState::enable(unsigned pid, bool on) {
    note(on ? "switch speech on" : "switch speech off");
    const int status = changeStatus(pid);
    if (status == TTS::STATUS_OK) {
        mSettings.enable(on);
        if (!on) {
            drop(TTS::STATUS_DISABLED);
        }
        tellState(TTS::STATE_ENABLED, on);
    }
    return status;
}

int FakeState::reset(unsigned pid) {
    note("reset");
    const int status = changeStatus(pid);
    if (status == TTS::STATUS_OK) {
        mSettings = FakeSettings();
        tellState(TTS::STATE_RESET, 0);
    }
    return status;
}

}  // namespace voxtrel::testing
