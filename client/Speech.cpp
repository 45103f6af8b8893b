// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/Operations.h"
#include "vocabulary/Status.h"

namespace TTS {

int TTSClientPrivate::say(unsigned int id, const std::string& text) {
    dbgPrint(kLogTrace, "[Client] %s() with language %s\n", "say", mSetting.mLang.c_str());
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToSpeak(*this, service);
    if (refusal != 0) {
        return refusal;
    }
    return service->say(mPid, id, text, mSetting.mSpeed, mSetting.mVolume, mSetting.mVoice,
                        mSetting.mMediaVolume, mSetting.mTtsVolume, mSetting.mPitch,
                        langStr2Id(mSetting.mLang));
}

int TTSClientPrivate::silence(unsigned int first, unsigned int second) {
    traceCall("silence");
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToSpeak(*this, service);
    return refusal != 0 ? refusal : service->silence(mPid, first, second, mSetting.mMediaVolume);
}

int TTSClientPrivate::stopAndFlush(unsigned int arg) {
    traceCall("stopAndFlush");
    const android::sp<ITextToSpeechFestival> service = currentService();
    const int refusal = refusalToSpeak(*this, service);
    return refusal != 0 ? refusal : service->stopAndFlush(mPid, arg);
}

}  // namespace TTS
