// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_ICALLBACK_H
#define VOXTREL_IPC_ICALLBACK_H

#include "ipc/BinderHeaders.h"

namespace TTS {

/// What the service calls to notify a client; descriptor "tavix.ICallback".
///
/// `asInterface(binder)` gives null for a null binder, the local object when the binder is of this
/// process, and otherwise a new `BpCallback`.
///
/// Called on: any thread. Locks: none.
class ICallback : public android::IInterface {
public:
    DECLARE_META_INTERFACE(Callback)

    /// Code of `notify`, the interface's only transaction. One-way: int32 a, b and c go out, and
    /// the int32 that the receiver answers is dropped by the runtime.
    static constexpr uint32_t kNotify = 1;

    /// Delivers one event; its numbers are passed through as they are.
    /// @return true when delivered in this process. A proxy returns false whenever the call went
    /// over the wire, so false does not mean failure.
    virtual bool notify(unsigned int a, unsigned int b, unsigned int c) = 0;
};

}  // namespace TTS

#endif
