// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICE_FAKES_H
#define VOXTREL_TESTS_SERVICE_FAKES_H

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "service/Engine.h"
#include "service/Listener.h"
#include "service/Sink.h"
#include "service/Text.h"

namespace voxtreld {

/// Generous: only a broken test waits this long.
constexpr std::chrono::seconds kTimeout(60);

/// State that threads change and a test waits for.
class Monitor {
public:
    template <typename Action>
    void change(Action action) {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            action();
        }
        mChanged.notify_all();
    }

    template <typename Condition>
    bool waitFor(Condition condition) const {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, kTimeout, condition);
    }

    template <typename Read>
    auto read(Read get) const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return get();
    }

private:
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
};

/// Speaks a text as one word announcement and `kWordSamples` samples of `kLevel` for each
/// blank-separated word. A test can hold it between words.
class ScriptedEngine : public Engine {
public:
    static constexpr unsigned kRate = 8000;
    static constexpr size_t kWordSamples = 80;
    static constexpr int16_t kLevel = 1000;

    bool load(std::string& /*error*/) override { return true; }
    unsigned sampleRate() const override { return kRate; }
    std::vector<EngineVoice> voices() const override {
        return {{LANG_EN_US, "one"}, {LANG_EN_US, "two"}, {LANG_FR_FR, "un"},
                {LANG_ES_ES, "uno"}, {LANG_KO_KR, "il"},  {LANG_PT_PT, "um"}};
    }

    bool speak(const std::string& text, const Prosody& prosody, SpeechReceiver& receiver) override {
        mMonitor.change([&] { mSpoken.emplace_back(text, prosody); });
        if (!mFailingText.empty() && text.find(mFailingText) != std::string::npos) {
            return false;
        }
        const std::vector<int16_t> samples(kWordSamples, kLevel);
        for (size_t begin = text.find_first_not_of(' '); begin != std::string::npos;) {
            passGate();
            receiver.word(characterCount(std::string_view(text).substr(0, begin)));
            if (!receiver.samples(samples.data(), samples.size())) {
                break;
            }
            begin = text.find_first_not_of(' ', text.find(' ', begin));
        }
        return true;
    }

    /// The engine stops before its next word, until `release`.
    void hold() {
        mMonitor.change([&] { mHeld = true; });
    }
    void release() {
        mMonitor.change([&] { mHeld = false; });
    }
    bool waitUntilHeld() {
        return mMonitor.waitFor([&] { return mIsWaiting; });
    }
    /// It cannot speak a text that holds this.
    void failOn(const std::string& text) { mFailingText = text; }

    std::vector<std::pair<std::string, Prosody>> spoken() const {
        return mMonitor.read([&] { return mSpoken; });
    }

private:
    void passGate() {
        mMonitor.change([&] { mIsWaiting = mHeld; });
        EXPECT_TRUE(mMonitor.waitFor([&] { return !mHeld; })) << "nobody released the engine";
        mMonitor.change([&] { mIsWaiting = false; });
    }

    Monitor mMonitor;
    bool mHeld = false;
    bool mIsWaiting = false;
    std::string mFailingText;
    std::vector<std::pair<std::string, Prosody>> mSpoken;
};

/// Keeps every sample, and a line for each call.
class RecordingSink : public Sink {
public:
    bool open(unsigned /*rate*/, std::string& /*error*/) override { return true; }
    bool begin(uint32_t pid, uint32_t id) override {
        note("begin " + std::to_string(pid) + " " + std::to_string(id));
        return !mRefusesBegin;
    }
    bool write(const int16_t* samples, size_t count, const Cancel& cancel) override {
        if (mMonitor.read([&] { return mBlocks; })) {
            mMonitor.change([&] { mIsBlocked = true; });
            EXPECT_TRUE(cancel.sleepUntil(std::chrono::steady_clock::now() + kTimeout));
            return true;
        }
        mMonitor.change([&] { mSamples.insert(mSamples.end(), samples, samples + count); });
        return !mRefusesWrite;
    }
    bool end(const Cancel& cancel) override {
        note(cancel ? "end cancelled" : "end");
        return true;
    }

    std::vector<int16_t> samples() const {
        return mMonitor.read([&] { return mSamples; });
    }
    std::vector<std::string> calls() const {
        return mMonitor.read([&] { return mCalls; });
    }
    /// Waits until an utterance of this client has begun and ended.
    bool waitForEndOf(uint32_t pid) const {
        const std::string begin = "begin " + std::to_string(pid) + " ";
        return mMonitor.waitFor(
            [&] { return mCalls.size() > 1 && mCalls[mCalls.size() - 2].rfind(begin, 0) == 0; });
    }
    /// It takes no sample and does not fail, like a card that has stopped.
    void block(bool block) {
        mMonitor.change([&] { mBlocks = block; });
    }
    bool waitUntilBlocked() const {
        return mMonitor.waitFor([&] { return mIsBlocked; });
    }
    void refuseBegin(bool refuse) { mRefusesBegin = refuse; }
    void refuseWrite(bool refuse) { mRefusesWrite = refuse; }

private:
    void note(const std::string& line) {
        mMonitor.change([&] { mCalls.push_back(line); });
    }

    Monitor mMonitor;
    std::vector<int16_t> mSamples;
    std::vector<std::string> mCalls;
    bool mBlocks = false;
    bool mIsBlocked = false;
    bool mRefusesBegin = false;
    bool mRefusesWrite = false;
};

/// One event as a client gets it.
struct Told {
    uint32_t pid;
    uint32_t event;
    uint32_t second;
    uint32_t third;

    bool operator==(const Told& other) const {
        return std::tie(pid, event, second, third) ==
               std::tie(other.pid, other.event, other.second, other.third);
    }
};

inline std::ostream& operator<<(std::ostream& out, const Told& told) {
    return out << "(" << told.pid << ": " << told.event << ", " << told.second << ", "
               << static_cast<int32_t>(told.third) << ")";
}

/// Keeps every event.
class RecordingListener : public Listener {
public:
    void tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) override {
        mMonitor.change([&] { mTold.push_back({pid, event, second, third}); });
    }
    bool waitForCount(size_t count) const {
        return mMonitor.waitFor([&] { return mTold.size() >= count; });
    }
    std::vector<Told> told() const {
        return mMonitor.read([&] { return mTold; });
    }

private:
    Monitor mMonitor;
    std::vector<Told> mTold;
};

}  // namespace voxtreld

#endif
