// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/CheckedCall.h"

#include "ipc/BpTextToSpeechFestival.h"
#include "vocabulary/Status.h"
#include "voxtrel/Status.h"

namespace voxtrel {
namespace {

using android::status_t;

/// Stands between a proxy and the service, and keeps the status of the last request that failed.
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

android::sp<android::IBinder> binderOf(TTS::ITextToSpeechFestival& service) {
    const android::sp<TTS::ITextToSpeechFestival> held = &service;
    return android::IInterface::asBinder(held);
}

}  // namespace

bool CheckedCall::isLost() const {
    return failure == android::FAILED_TRANSACTION || failure == android::NO_MEMORY ||
           failure == android::DEAD_OBJECT || failure == android::TIMED_OUT ||
           failure == android::WOULD_BLOCK;
}

int CheckedCall::status() const {
    switch (failure) {
        case android::OK:
            return answered;
        case android::DEAD_OBJECT:
            return TTS::STATUS_NO_SERVICE;
        case android::PERMISSION_DENIED:
            return TTS::STATUS_PERMISSION_DENIED;
        case android::UNKNOWN_TRANSACTION:
            return TTS::STATUS_NOT_SUPPORTED;
        default:
            return static_cast<int>(Status::Lost);
    }
}

CheckedCall callChecked(TTS::ITextToSpeechFestival& service,
                        const std::function<int(TTS::ITextToSpeechFestival&)>& work) {
    const android::sp<android::IBinder> binder = binderOf(service);
    if (binder->localBinder() != nullptr) {
        const int answered = work(service);
        return {answered, answered == 0 ? binder->pingBinder() : android::OK};
    }
    const android::sp<Recorder> recorder = new Recorder(binder);
    const android::sp<TTS::ITextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(recorder);
    const int answered = work(*proxy);
    return {answered, recorder->failure()};
}

int lifeOf(TTS::ITextToSpeechFestival& service) {
    return binderOf(service)->pingBinder() == android::DEAD_OBJECT ? TTS::STATUS_NO_SERVICE
                                                                   : TTS::STATUS_OK;
}

}  // namespace voxtrel
