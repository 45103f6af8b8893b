// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_BNTEXTTOSPEECHFESTIVAL_H
#define VOXTREL_IPC_BNTEXTTOSPEECHFESTIVAL_H

#include "ipc/BinderHeaders.h"
#include "ipc/ITextToSpeechFestival.h"

namespace TTS {

/// The receiving side of `ITextToSpeechFestival`: a service derives from it and implements the
/// operations; each transaction becomes one call.
///
/// Keeps no state. Called on: binder threads of the service, several at once. Locks: none: the
/// implementation guards what it owns.
class BnTextToSpeechFestival : public android::BnInterface<ITextToSpeechFestival> {
public:
    /// Serves one transaction. The implementation's result goes into `reply`, never into the return
    /// value. Values that the request does not hold read as 0 (an empty binder, false).
    ///
    /// - Code 5 is always `setEnable2`; `setEnable` is never called.
    /// - Codes 12 and 21 answer int32 -3, without a call, to a key that carries no value; code 12
    ///   also to a language whose length is below 0 or above 255.
    /// - Code 12 with a language longer than the request's data calls with an empty string.
    /// - Code 21 hands the implementation 256 zeroed bytes for the language and answers what stands
    ///   there before the first NUL, at most 255 bytes.
    ///
    /// @param reply may be null: the answer is dropped then.
    /// @return 0 for a served code, else what `BBinder::onTransact` makes of it.
    /// @throws std::logic_error, out of the stub, when code 1 brings no string.
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags = 0) override;
};

}  // namespace TTS

#endif
