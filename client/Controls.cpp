// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

/// The service answers a granted lock or unlock with 0 or 1; anything else, errors included, is a
/// refusal.
bool isGranted(int result) {
    return static_cast<unsigned int>(result) <= 1U;
}

}  // namespace

int TTSClientPrivate::setEnable(bool enable) {
    dbgPrint(kLogTrace, "[Client] %s() enable = %d\n", "setEnable", enable);
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->setEnable(mPid, enable);
}

bool TTSClientPrivate::enabled() {
    const android::sp<ITextToSpeechFestival> service = currentService();
    return service != nullptr && service->enabled();
}

int TTSClientPrivate::setVerbosity(int verb) {
    dbgPrint(kLogTrace, "[Client] %s(), verb=%d\n", "setVerbosity", verb);
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->setVerbosity(mPid, verb);
}

int TTSClientPrivate::verbosity() {
    const android::sp<ITextToSpeechFestival> service = currentService();
    return service != nullptr ? service->verbosity() : 0;
}

int TTSClientPrivate::setGlobalRate(unsigned int rate) {
    dbgPrint(kLogTrace, "[Client] %s(), rate=%d\n", "setGlobalRate", rate);
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    if (!mCapabilities.speedSupported || rate < mCapabilities.speedMin ||
        rate > mCapabilities.speedMax) {
        dbgPrint(kLogRejected, "setGlobalRate: %d, bad parameter\n", rate);
        return STATUS_OK;  // unlike other values, a rate that is refused is no error
    }
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->setGlobalRate(mPid, rate);
}

int TTSClientPrivate::globalRate() {
    const android::sp<ITextToSpeechFestival> service = currentService();
    return service != nullptr ? service->globalRate() : 0;
}

int TTSClientPrivate::lock() {
    traceCall("lock");
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    const int result = service->lock(mPid);
    mLockOwner = isGranted(result);
    return result;
}

int TTSClientPrivate::unlock() {
    traceCall("unlock");
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    const int result = service->unlock(mPid);
    mLockOwner = mLockOwner && !isGranted(result);
    return result;
}

int TTSClientPrivate::locked() {
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr || mLockOwner) {
        return 1;
    }
    return service->locked() ? 1 : 0;
}

}  // namespace TTS
