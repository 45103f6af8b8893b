// SPDX-License-Identifier: Apache-2.0
#include "client/Log.h"
#include "client/Operations.h"
#include "client/Status.h"
#include "client/TTSClientPrivate.h"

namespace TTS {

int TTSClientPrivate::saveProfile(const char* name) {
    traceCall("saveProfile");
    return mSetting.serialize(name) ? status::kOk : status::kProfileError;
}

int TTSClientPrivate::loadProfile(const char* name) {
    traceCall("loadProfile");
    if (!mSetting.deserialize(name)) {
        return status::kProfileError;
    }
    mProfileName = name != nullptr ? name : "/Customer/" + mSetting.mName + ".ini";
    return status::kOk;
}

int TTSClientPrivate::factoryReset(const char*) {
    traceCall("factoryReset");
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToChange(*this, service);
    return refusal != 0 ? refusal : service->factoryReset(mPid);
}

}  // namespace TTS
