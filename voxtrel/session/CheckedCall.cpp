// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/CheckedCall.h"

#include "ipc/BpTextToSpeechFestival.h"
#include "vocabulary/Status.h"
#include "voxtrel/Status.h"

namespace voxtrel {
namespace {

using android::status_t;

/// What the runtime says of a request that it could not carry. A service that does not know one
/// answers with other statuses; the proxy reads zeros then.
bool isLoss(status_t status) {
    return status == android::FAILED_TRANSACTION || status == android::NO_MEMORY ||
           status == android::DEAD_OBJECT || status == android::TIMED_OUT ||
           status == android::WOULD_BLOCK;
}

/// Stands between a proxy and the service, and keeps what became of the last request that was lost.
class Recorder : public android::BBinder {
public:
    explicit Recorder(const android::sp<android::IBinder>& service) : mService(service) {}

    /// OK: none was.
    status_t loss() const { return mLoss; }

protected:
    status_t onTransact(std::uint32_t code, const android::Parcel& data, android::Parcel* reply,
                        std::uint32_t flags) override {
        const status_t status = mService->transact(code, data, reply, flags);
        if (isLoss(status)) {
            mLoss = status;
        }
        return status;
    }

private:
    const android::sp<android::IBinder> mService;
    status_t mLoss = android::OK;
};

}  // namespace

int callChecked(TTS::ITextToSpeechFestival& service,
                const std::function<int(TTS::ITextToSpeechFestival&)>& work) {
    const android::sp<TTS::ITextToSpeechFestival> held = &service;
    const android::sp<android::IBinder> binder = android::IInterface::asBinder(held);
    if (binder->localBinder() != nullptr) {
        return work(service);
    }
    const android::sp<Recorder> recorder = new Recorder(binder);
    const android::sp<TTS::ITextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(recorder);
    const int answered = work(*proxy);
    if (recorder->loss() == android::OK) {
        return answered;
    }
    return recorder->loss() == android::DEAD_OBJECT ? TTS::STATUS_NO_SERVICE
                                                    : static_cast<int>(Status::Lost);
}

}  // namespace voxtrel
