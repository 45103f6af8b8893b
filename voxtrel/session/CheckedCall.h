// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_CHECKEDCALL_H
#define VOXTREL_SESSION_CHECKEDCALL_H

#include <functional>

#include "ipc/ITextToSpeechFestival.h"

namespace voxtrel {

/// What became of requests that have an answer. The service's proxy does not tell one that failed
/// from one that was answered with zeros.
struct CheckedCall {
    int answered = 0;                      ///< as the proxy tells
    android::status_t loss = android::OK;  ///< why the runtime did not carry a request, or answer
    android::status_t refusal = android::OK;  ///< why the service did not serve one

    bool isLost() const { return loss != android::OK; }

    /// `Status::Lost`, or `TTS::STATUS_NO_SERVICE` where a request met a dead service; else why the
    /// service did not serve a request; else what was answered.
    int status() const;
};

/// Has `work` call the service.
CheckedCall callChecked(TTS::ITextToSpeechFestival& service,
                        const std::function<int(TTS::ITextToSpeechFestival&)>& work);

/// Behind requests without an answer. @return `TTS::STATUS_NO_SERVICE` where the service is dead.
int lifeOf(TTS::ITextToSpeechFestival& service);

}  // namespace voxtrel

#endif
