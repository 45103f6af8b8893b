// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_CALLBACK_H
#define VOXTREL_IPC_CALLBACK_H

#include "ipc/BinderHeaders.h"
#include "ipc/BnCallback.h"

namespace TTS {

/// A client's own callback object, which calls the application's notification function.
///
/// Called on: binder threads, several at once; so is the function. Locks: none.
class Callback : public android::BinderService<Callback>, public BnCallback {
public:
    /// @param func must not be null and must be callable from any thread for as long as anyone,
    /// the service included, holds this object.
    explicit Callback(void (*func)(unsigned, unsigned, unsigned));

    /// Calls the function with the three numbers as they came.
    /// @return true.
    bool notify(unsigned int a, unsigned int b, unsigned int c) override;

private:
    void (*const mFunc)(unsigned, unsigned, unsigned);
};

}  // namespace TTS

#endif
