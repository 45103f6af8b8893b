// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/CheckedCall.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

#include "vocabulary/Status.h"
#include "voxtrel/Status.h"
#include "voxtrel/testing/FakeRemote.h"

namespace voxtrel {
namespace {

using android::sp;
using android::status_t;

/// As if in another process: its requests may get lost.
class Remote : public android::BBinder {
public:
    std::vector<status_t> fates;  // of its next requests; those behind them arrive
    std::int32_t answer = 0;

    android::BBinder* localBinder() override { return nullptr; }

protected:
    status_t onTransact(uint32_t /*code*/, const android::Parcel& /*data*/, android::Parcel* reply,
                        uint32_t /*flags*/) override {
        if (!fates.empty()) {
            const status_t fate = fates.front();
            fates.erase(fates.begin());
            if (fate != android::OK) {
                return fate;
            }
        }
        return reply->writeInt32(answer);
    }
};

class ACheckedCall : public ::testing::Test {
protected:
    int setVerbosityTwice() {
        const CheckedCall call = callChecked(*mService, [](TTS::ITextToSpeechFestival& service) {
            (void)service.setVerbosity(1, 2);
            return service.setVerbosity(1, 3);
        });
        mIsLost = call.isLost();
        return call.status();
    }

    bool mIsLost = false;  // the latest
    const sp<Remote> mRemote = new Remote();
    const sp<TTS::ITextToSpeechFestival> mService =
        TTS::ITextToSpeechFestival::asInterface(mRemote);
};

TEST_F(ACheckedCall, IsWhatTheServiceAnswers) {
    EXPECT_EQ(0, setVerbosityTwice());
    mRemote->answer = TTS::STATUS_LOCKED;
    EXPECT_EQ(TTS::STATUS_LOCKED, setVerbosityTwice());
}

TEST_F(ACheckedCall, IsNotTakenForDoneWhereOneOfItsRequestsIsLost) {
    for (const status_t fate : {android::FAILED_TRANSACTION, android::NO_MEMORY, android::TIMED_OUT,
                                android::WOULD_BLOCK}) {
        mRemote->fates = {fate};
        EXPECT_EQ(static_cast<int>(Status::Lost), setVerbosityTwice()) << fate;
        mRemote->fates = {android::OK, fate};
        EXPECT_EQ(static_cast<int>(Status::Lost), setVerbosityTwice()) << fate;
        EXPECT_TRUE(mIsLost) << fate;
        EXPECT_EQ(0, setVerbosityTwice()) << "it is not told again";
    }
}

TEST_F(ACheckedCall, IsNotTakenForDoneWhereTheServiceDoesNotServeIt) {
    const std::map<status_t, int> statuses = {
        {android::UNKNOWN_TRANSACTION, TTS::STATUS_NOT_SUPPORTED},
        {android::PERMISSION_DENIED, TTS::STATUS_PERMISSION_DENIED},
        {android::BAD_VALUE, TTS::STATUS_NOT_SUPPORTED},
    };
    for (const auto& [fate, status] : statuses) {
        mRemote->fates = {fate};
        EXPECT_EQ(status, setVerbosityTwice()) << fate;
        EXPECT_FALSE(mIsLost) << fate;
    }
}

TEST_F(ACheckedCall, IsLostWhateverElseIsNotServed) {
    for (const status_t refusal : {android::UNKNOWN_TRANSACTION, android::PERMISSION_DENIED}) {
        mRemote->fates = {android::FAILED_TRANSACTION, refusal};
        EXPECT_EQ(static_cast<int>(Status::Lost), setVerbosityTwice());
        mRemote->fates = {refusal, android::FAILED_TRANSACTION};
        EXPECT_EQ(static_cast<int>(Status::Lost), setVerbosityTwice());
        EXPECT_TRUE(mIsLost);
    }
}

TEST_F(ACheckedCall, TellsThatTheServiceIsDead) {
    mRemote->fates = {android::OK, android::DEAD_OBJECT};
    EXPECT_EQ(TTS::STATUS_NO_SERVICE, setVerbosityTwice());
    EXPECT_TRUE(mIsLost);
    mRemote->fates = {android::DEAD_OBJECT, android::OK};
    EXPECT_EQ(TTS::STATUS_NO_SERVICE, setVerbosityTwice()) << "whoever answers is another one";
}

TEST_F(ACheckedCall, IsNotTakenForDoneWhereARequestWithoutAnAnswerIsLost) {
    const auto unlock = [](TTS::ITextToSpeechFestival& service) { return service.unlock(1); };
    mRemote->fates = {android::FAILED_TRANSACTION};
    EXPECT_EQ(static_cast<int>(Status::Lost), callChecked(*mService, unlock).status());
    EXPECT_EQ(0, callChecked(*mService, unlock).status());
}

/// In this process, where the service itself is called.
class LocalService : public testing::FakeRemote {
public:
    LocalService() : FakeRemote(std::make_shared<testing::FakeState>(), 1) {}

    int setVerbosity(unsigned /*pid*/, int /*verbosity*/) override { return answer; }
    status_t pingBinder() override { return life; }

    int answer = 0;
    status_t life = android::OK;
};

TEST(ACheckedCallInOneProcess, IsWhatTheServiceAnswersWhileItLives) {
    const sp<LocalService> service = new LocalService();
    const auto change = [](TTS::ITextToSpeechFestival& it) { return it.setVerbosity(1, 2); };
    EXPECT_EQ(0, callChecked(*service, change).status());
    service->answer = TTS::STATUS_LOCKED;
    EXPECT_EQ(TTS::STATUS_LOCKED, callChecked(*service, change).status());
    service->answer = 0;
    service->life = android::DEAD_OBJECT;
    EXPECT_EQ(TTS::STATUS_NO_SERVICE, callChecked(*service, change).status());
}

}  // namespace
}  // namespace voxtrel
