// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/CheckedCall.h"

#include "ipc/BpTextToSpeechFestival.h"
#include "vocabulary/Status.h"
#include "voxtrel/Status.h"

namespace voxtrel {
namespace {

using android::status_t;

bool tellsOfLoss(status_t status) {
    return status == android::FAILED_TRANSACTION || status == android::NO_MEMORY ||
           status == android::DEAD_OBJECT || status == android::TIMED_OUT ||
           status == android::WOULD_BLOCK;
}

/// Stands between a proxy and the service, and notes the requests that fail.
class Recorder : public android::BBinder {
public:
    Recorder(const android::sp<android::IBinder>& service, CheckedCall& call)
        : mService(service), mCall(call) {}

protected:
    status_t onTransact(std::uint32_t code, const android::Parcel& data, android::Parcel* reply,
                        std::uint32_t flags) override {
        const status_t status = mService->transact(code, data, reply, flags);
        if (status != android::OK) {
            (tellsOfLoss(status) ? mCall.loss : mCall.refusal) = status;
        }
        return status;
    }

private:
    const android::sp<android::IBinder> mService;
    CheckedCall& mCall;
};

android::sp<android::IBinder> binderOf(TTS::ITextToSpeechFestival& service) {
    const android::sp<TTS::ITextToSpeechFestival> held = &service;
    return android::IInterface::asBinder(held);
}

}  // namespace

int CheckedCall::status() const {
    if (isLost()) {
        return loss == android::DEAD_OBJECT ? TTS::STATUS_NO_SERVICE
                                            : static_cast<int>(Status::Lost);
    }
    if (refusal != android::OK) {
        return refusal == android::PERMISSION_DENIED ? TTS::STATUS_PERMISSION_DENIED
                                                     : TTS::STATUS_NOT_SUPPORTED;
    }
    return answered;
}

CheckedCall callChecked(TTS::ITextToSpeechFestival& service,
                        const std::function<int(TTS::ITextToSpeechFestival&)>& work) {
    const android::sp<android::IBinder> binder = binderOf(service);
    CheckedCall call;
    if (binder->localBinder() != nullptr) {
        call.answered = work(service);
        call.loss = call.answered == 0 ? binder->pingBinder() : android::OK;
        return call;
    }
    const android::sp<Recorder> recorder = new Recorder(binder, call);
    const android::sp<TTS::ITextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(recorder);
    call.answered = work(*proxy);
    return call;
}

int lifeOf(TTS::ITextToSpeechFestival& service) {
    return binderOf(service)->pingBinder() == android::DEAD_OBJECT ? TTS::STATUS_NO_SERVICE
                                                                   : TTS::STATUS_OK;
}

}  // namespace voxtrel
