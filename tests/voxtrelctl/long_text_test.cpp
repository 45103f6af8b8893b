// SPDX-License-Identifier: Apache-2.0
// How much of a long text is on its way to the service at a time.
#include <gtest/gtest.h>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/RecordingService.h"
#include "tests/support/ScriptedService.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/ForeignService.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

using namespace voxtrel_test;

namespace {

/// A device's runtime holds 520,192 bytes of requests that a service has not taken, of all clients
/// together; more is lost.
constexpr size_t kMaxOnTheWay = 520'192 / 7;

/// Takes every text, and speaks each in no time when it has had a moment to get more.
class CountingService : public support::RecordingService {
public:
    CountingService() {
        capabilities = support::usualCapabilities();
        isEnabled = true;
    }
    ~CountingService() override {
        mEnds = true;
        mSpeaker.join();
    }

    int say(unsigned, unsigned id, const std::string& words, unsigned, float, unsigned, unsigned,
            unsigned, float, EN_VOXTREL_LANGUAGE) override {
        const std::lock_guard<std::mutex> lock(mMutex);
        mText += words;
        mWaiting.push_back(id);
        mOnTheWay += words.size();
        mMaxSeen = std::max(mMaxSeen, mOnTheWay);
        return TTS::STATUS_OK;
    }

    int silence(unsigned, unsigned first, unsigned, unsigned) override {
        callback->notify(TTS::EVENT_STOPPED, first,
                         static_cast<unsigned>(TTS::STATUS_BAD_PARAMETER));
        return TTS::STATUS_OK;
    }

    std::string text() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mText;
    }
    size_t maxSeen() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mMaxSeen;
    }

private:
    void speak() {
        while (!mEnds) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            std::vector<unsigned> spoken;
            {
                const std::lock_guard<std::mutex> lock(mMutex);
                spoken.swap(mWaiting);
                mOnTheWay = 0;
            }
            for (const unsigned id : spoken) {
                callback->notify(TTS::EVENT_STARTED, id, 0);
                callback->notify(TTS::EVENT_FINISHED, id, 0);
            }
        }
    }

    mutable std::mutex mMutex;
    std::string mText;
    std::vector<unsigned> mWaiting;
    size_t mOnTheWay = 0;
    size_t mMaxSeen = 0;
    std::atomic<bool> mEnds{false};
    std::thread mSpeaker{[this] { speak(); }};
};

TEST(AVeryLongText, IsHandedOverWithRoomForOthersInWhatTheRuntimeHolds) {
    Device device;
    android::ProcessState::self()->startThreadPool();
    const android::sp<CountingService> service = new CountingService;
    ASSERT_EQ(android::OK, android::defaultServiceManager()->addService(
                               TTS::ITextToSpeechFestival::descriptor, service));
    std::string book;
    while (book.size() < 8'000'000) {
        book += "The last train had left the station an hour ago. ";
    }
    const Outcome said = device.ctl({"say"}, book);
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_TRUE(service->text() == book) << "once, whole, and in order";
    EXPECT_LE(service->maxSeen(), kMaxOnTheWay);
    EXPECT_GT(service->maxSeen(), 32'768U) << "a wait for each page would be slow";
}

TEST(AVeryLongText, IsHandedOverWithProgress) {
    Device device;
    const auto service = ForeignService::registered();
    service->neverEnd(1);
    const auto speaker = device.start({"say", std::string(100'000, 'a')});
    EXPECT_TRUE(
        speaker->awaitError("voxtrelctl: giving the text to the service as it is spoken\n"));
    service->goOn();
    EXPECT_EQ(speaker->finish().status, 0);
}

}  // namespace
