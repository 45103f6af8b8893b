// SPDX-License-Identifier: Apache-2.0
#include "ipc/ITextToSpeechFestival.h"

#include "ipc/BpTextToSpeechFestival.h"

namespace TTS {

IMPLEMENT_META_INTERFACE(TextToSpeechFestival, "tavix.ITextToSpeechFestival")

}  // namespace TTS
