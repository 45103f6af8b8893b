// SPDX-License-Identifier: Apache-2.0
#include "ipc/ICallback.h"

#include "ipc/BpCallback.h"

namespace TTS {

IMPLEMENT_META_INTERFACE(Callback, "tavix.ICallback")

}  // namespace TTS
