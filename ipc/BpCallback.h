// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_BPCALLBACK_H
#define VOXTREL_IPC_BPCALLBACK_H

#include "ipc/BinderHeaders.h"
#include "ipc/ICallback.h"

namespace TTS {

/// A client's callback as the service holds it.
///
/// Called on: any thread, several at once. Locks: none.
class BpCallback : public android::BpInterface<ICallback> {
public:
    /// Shares the ownership of `remote`.
    explicit BpCallback(const android::sp<android::IBinder>& remote);

    /// Sends the event one-way and does not wait for the client.
    /// @return whether the reply's int32 is non-zero: false over the wire, which brings no reply,
    /// and false when the client is gone or the proxy has no remote.
    bool notify(unsigned int a, unsigned int b, unsigned int c) override;
};

}  // namespace TTS

#endif
