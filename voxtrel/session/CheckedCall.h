// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_CHECKEDCALL_H
#define VOXTREL_SESSION_CHECKEDCALL_H

#include <functional>

#include "ipc/ITextToSpeechFestival.h"

namespace voxtrel {

/// Has `work` call the service. The service's proxy does not tell a request that was lost from one
/// that was answered with zeros; this does.
/// @return what `work` returns; `TTS::STATUS_NO_SERVICE` where a request met a dead service, and
///         `Status::Lost` where one did not get there, or its answer not back.
int callChecked(TTS::ITextToSpeechFestival& service,
                const std::function<int(TTS::ITextToSpeechFestival&)>& work);

}  // namespace voxtrel

#endif
