// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_BNCALLBACK_H
#define VOXTREL_IPC_BNCALLBACK_H

#include "ipc/BinderHeaders.h"
#include "ipc/ICallback.h"

namespace TTS {

/// The receiving side of `ICallback`: unpacks a transaction and calls `notify`.
///
/// Called on: binder threads of the client process, several at once. Locks: none.
class BnCallback : public android::BnInterface<ICallback> {
public:
    /// Serves code 1 (`notify`) and answers its result as int32; every other code goes to
    /// `BBinder::onTransact`. Missing request values read as 0 and are delivered.
    /// @param reply may be null: the answer is dropped then.
    /// @return 0 for code 1, else the base's status.
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags = 0) override;
};

}  // namespace TTS

#endif
