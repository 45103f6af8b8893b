// SPDX-License-Identifier: Apache-2.0
// How much of a long text is on its way to the service at a time.
#include <gtest/gtest.h>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <algorithm>
#include <limits>
#include <mutex>

#include "tests/support/RecordingService.h"
#include "tests/support/ScriptedService.h"
#include "tests/voxtrelctl/Device.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

using namespace voxtrel_test;

namespace {

/// A device's runtime holds 520,192 bytes of requests that a service has not taken, of all clients
/// together; more is lost.
constexpr size_t kMostOnTheWay = 520'192 / 7;

/// Takes every text, and counts what can be on the way at a time: all that was said since a pause
/// that is too long was sent and refused.
class CountingService : public support::RecordingService {
public:
    CountingService() {
        capabilities = support::usualCapabilities();
        isEnabled = true;
    }

    int say(unsigned, unsigned, const std::string& words, unsigned, float, unsigned, unsigned,
            unsigned, float, EN_VOXTREL_LANGUAGE) override {
        const std::lock_guard<std::mutex> lock(mMutex);
        mText += words;
        mOnTheWay += words.size();
        mMost = std::max(mMost, mOnTheWay);
        return TTS::STATUS_OK;
    }

    int silence(unsigned, unsigned first, unsigned, unsigned) override {
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mOnTheWay = 0;
        }
        callback->notify(TTS::EVENT_STOPPED, first,
                         static_cast<unsigned>(TTS::STATUS_BAD_PARAMETER));
        return TTS::STATUS_BAD_PARAMETER;
    }

    std::string text() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mText;
    }
    size_t mostOnTheWay() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mMost;
    }

private:
    mutable std::mutex mMutex;
    std::string mText;
    size_t mOnTheWay = 0;
    size_t mMost = 0;
};

TEST(AVeryLongText, IsHandedOverWithRoomForOthersInWhatTheRuntimeHolds) {
    Device device;
    android::ProcessState::self()->startThreadPool();
    const android::sp<CountingService> service = new CountingService;
    ASSERT_EQ(android::OK, android::defaultServiceManager()->addService(
                               TTS::ITextToSpeechFestival::descriptor, service));
    std::string book;
    while (book.size() < 2'000'000) {
        book += "The last train had left the station an hour ago. ";
    }
    const Outcome said = device.ctl({"say"}, book);
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_EQ(service->text(), book);
    EXPECT_LE(service->mostOnTheWay(), kMostOnTheWay);
    EXPECT_GT(service->mostOnTheWay(), 32'768U) << "a wait for each page would be slow";
}

}  // namespace
