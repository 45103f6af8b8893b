// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/CheckedCall.h"

#include "ipc/BpTextToSpeechFestival.h"
#include "vocabulary/Status.h"
#include "voxtrel/Status.h"

namespace voxtrel {
namespace {

using android::status_t;

/// Stands between a proxy and the service, and keeps what became of the last request that failed.
class Recorder : public android::BBinder {
public:
    explicit Recorder(const android::sp<android::IBinder>& service) : mService(service) {}

    status_t failure() const { return mFailure; }

protected:
    status_t onTransact(std::uint32_t code, const android::Parcel& data, android::Parcel* reply,
                        std::uint32_t flags) override {
        const status_t status = mService->transact(code, data, reply, flags);
        if (status != android::OK) {
            mFailure = status;
        }
        return status;
    }

private:
    const android::sp<android::IBinder> mService;
    status_t mFailure = android::OK;
};

int statusOf(status_t failure, int answered) {
    if (failure == android::OK) {
        return answered;
    }
    return failure == android::DEAD_OBJECT ? TTS::STATUS_NO_SERVICE
                                           : static_cast<int>(Status::Lost);
}

}  // namespace

int callChecked(TTS::ITextToSpeechFestival& service,
                const std::function<int(TTS::ITextToSpeechFestival&)>& work) {
    const android::sp<TTS::ITextToSpeechFestival> held = &service;
    const android::sp<android::IBinder> binder = android::IInterface::asBinder(held);
    if (binder->localBinder() != nullptr) {
        const int answered = work(service);
        return statusOf(binder->pingBinder(), answered);
    }
    const android::sp<Recorder> recorder = new Recorder(binder);
    const android::sp<TTS::ITextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(recorder);
    const int answered = work(*proxy);
    return statusOf(recorder->failure(), answered);
}

}  // namespace voxtrel
