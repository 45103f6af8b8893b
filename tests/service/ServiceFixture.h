// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICE_SERVICEFIXTURE_H
#define VOXTREL_TESTS_SERVICE_SERVICEFIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ipc/BnCallback.h"
#include "service/ProfileStore.h"
#include "service/Speaker.h"
#include "service/SpeechQueue.h"
#include "service/VoxtrelService.h"
#include "tests/service/Fakes.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"
#include "vocabulary/Status.h"

namespace voxtreld {

/// A client's callback in this process, which keeps what it is told.
class RecordingCallback : public TTS::BnCallback {
public:
    explicit RecordingCallback(uint32_t pid) : mPid(pid) {}

    bool notify(unsigned a, unsigned b, unsigned c) override {
        mMonitor.change([&] { mTold.push_back({mPid, a, b, c}); });
        return true;
    }
    std::vector<Told> told() const {
        return mMonitor.read([&] { return mTold; });
    }
    /// Waits until it is told this.
    bool waitFor(const Told& wanted) const {
        return mMonitor.waitFor(
            [&] { return std::find(mTold.begin(), mTold.end(), wanted) != mTold.end(); });
    }

private:
    const uint32_t mPid;
    Monitor mMonitor;
    std::vector<Told> mTold;
};

/// The service with a scripted engine and a recording sink. Requests come from whom the test says.
class ServiceFixture : public testing::Test {
protected:
    static constexpr uint32_t kAnn = 101;
    static constexpr uint32_t kBob = 202;
    static constexpr uint32_t kUser = 1000;

    ServiceFixture() { makeService(); }
    ~ServiceFixture() override { stopSpeech(); }

    /// A service of the usual user's as after a start, on the profile that the last one left.
    void makeService(std::vector<PolicyRule> rules = {}, const QueueLimits& limits = {},
                     size_t maxClients = ClientRegistry::kMaxClients) {
        stopSpeech();
        service = nullptr;
        profile = nullptr;
        queue = std::make_shared<SpeechQueue>(limits);
        profile = std::make_shared<ProfileStore>(profilePath());
        const auto policy = std::make_shared<const Policy>(kUser, std::move(rules));
        service =
            new VoxtrelService({queue, profile, policy, [this] { return caller; },
                                [this](LogLevel level, const std::string& line) {
                                    (level == LogLevel::Debug ? details : log).push_back(line);
                                },
                                maxClients});
    }
    void startSpeech() {
        service->announceVoices(engine.voices());
        mSpeech = std::thread(
            [this] { Speaker(engine, sink, mixer, *queue, service->listener()).run(); });
    }
    void stopSpeech() {
        engine.release();
        if (mSpeech.joinable()) {
            queue->close();
            mSpeech.join();
        }
    }
    std::string profilePath() const { return folder.path("voxtrel.ini"); }

    /// The next requests come from this process, of the usual user.
    void from(uint32_t pid) { caller = {pid, kUser}; }

    android::sp<RecordingCallback> join(uint32_t pid) {
        from(pid);
        const android::sp<RecordingCallback> callback = new RecordingCallback(pid);
        EXPECT_EQ(0, service->registerCallback(pid, callback));
        return callback;
    }
    /// Says something with no settings of its own.
    int say(uint32_t pid, uint32_t id, const std::string& text = "word") {
        from(pid);
        return service->say(pid, id, text, kUnset, 65535.0F, kUnset, kUnset, kUnset, 65535.0F,
                            LANG_NA);
    }
    /// What a client was told when everything posted so far has arrived.
    std::vector<Told> toldTo(const android::sp<RecordingCallback>& callback) {
        service->flushEvents(kTimeout);
        return callback->told();
    }
    /// What a client was told when all that was accepted has been spoken.
    std::vector<Told> toldAtTheEndTo(const android::sp<RecordingCallback>& callback) {
        stopSpeechWhenIdle();
        return toldTo(callback);
    }

    voxtrel_test::TempFolder folder;
    ScriptedEngine engine;
    RecordingSink sink;
    Mixer mixer{nullptr};
    std::shared_ptr<SpeechQueue> queue;
    std::shared_ptr<ProfileStore> profile;
    android::sp<VoxtrelService> service;
    Caller caller{kAnn, kUser};
    std::vector<std::string> log;
    std::vector<std::string> details;  ///< lines for debugging

private:
    void stopSpeechWhenIdle() {
        ASSERT_TRUE(voxtrel_test::eventually([&] { return queue->idleSince().has_value(); }));
        stopSpeech();
    }

    std::thread mSpeech;
};

constexpr uint32_t statusWord(TTS::Status status) {
    return static_cast<uint32_t>(status);
}

}  // namespace voxtreld

#endif
