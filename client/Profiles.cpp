// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "vocabulary/Status.h"

namespace TTS {

int TTSClientPrivate::saveProfile(const char* name) {
    traceCall("saveProfile");
    return mSetting.serialize(name) ? STATUS_OK : STATUS_PROFILE_ERROR;
}

int TTSClientPrivate::loadProfile(const char* name) {
    traceCall("loadProfile");
    if (!mSetting.deserialize(name)) {
        return STATUS_PROFILE_ERROR;
    }
    mProfileName = name != nullptr ? name : TtsSetting::defaultPath(mSetting.mName);
    return STATUS_OK;
}

int TTSClientPrivate::factoryReset(const char*) {
    traceCall("factoryReset");
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->factoryReset(mPid);
}

}  // namespace TTS
