// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_BINDERPORT_H
#define VOXTREL_SESSION_BINDERPORT_H

#include "voxtrel/session/Port.h"

namespace voxtrel {

/// The service that is registered at this machine's service manager. Called on: any one thread.
class BinderPort : public Port {
public:
    Found find(std::function<void()> died) override;

private:
    // A copy: a thread that the runtime keeps may outlive static objects.
    const android::String16 mName = TTS::ITextToSpeechFestival::descriptor;
    android::sp<android::IBinder::DeathRecipient> mWatch;  // the runtime holds it weakly
};

}  // namespace voxtrel

#endif
