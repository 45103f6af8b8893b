// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel/LossyWay.h"

#include "ipc/BnCallback.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "vocabulary/Events.h"
#include "voxtrel/testing/FakeRemote.h"

namespace voxtrel_test {
namespace {

using voxtrel::testing::FakeRemote;
using voxtrel::testing::FakeState;

constexpr std::uint64_t kFirstLife = 1;

class LossyCallback : public TTS::BnCallback {
public:
    LossyCallback(android::sp<TTS::ICallback> client, const Losses& losses)
        : mClient(std::move(client)), mLosses(losses) {}

    bool notify(unsigned event, unsigned second, unsigned third) override {
        return mLosses.takeNews(event, second) || mClient->notify(event, second, third);
    }

private:
    const android::sp<TTS::ICallback> mClient;
    const Losses& mLosses;
};

/// What a driver that has no room answers for a request.
class LossyRemote : public FakeRemote {
public:
    LossyRemote(std::shared_ptr<FakeState> service, Losses& losses)
        : FakeRemote(std::move(service), kFirstLife), mLosses(losses) {}

    android::BBinder* localBinder() override { return nullptr; }
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& client) override {
        return FakeRemote::registerCallback(pid, new LossyCallback(client, mLosses));
    }

protected:
    android::status_t onTransact(std::uint32_t code, const android::Parcel& data,
                                 android::Parcel* reply, std::uint32_t flags) override {
        return mLosses.take(code) ? android::FAILED_TRANSACTION
                                  : FakeRemote::onTransact(code, data, reply, flags);
    }

private:
    Losses& mLosses;
};

}  // namespace

void Losses::lose(const TTS::Transaction& request, int count) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRequests[request.code] = count;
}

void Losses::loseNewsOfLocks() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsWithoutNews = true;
}

void Losses::end() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRequests.clear();
    mIsWithoutNews = false;
}

bool Losses::take(std::uint32_t code) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mRequests.find(code);
    if (found == mRequests.end()) {
        return false;
    }
    if (--found->second == 0) {
        mRequests.erase(found);
    }
    return true;
}

bool Losses::takeNews(unsigned event, unsigned state) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mIsWithoutNews && event == TTS::EVENT_STATE && state == TTS::STATE_LOCK;
}

bool Losses::areOver() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mRequests.empty();
}

voxtrel::Port::Found LossyPort::find(std::function<void()> /*died*/) {
    return {new TTS::BpTextToSpeechFestival(new LossyRemote(mService, mLosses))};
}

}  // namespace voxtrel_test
