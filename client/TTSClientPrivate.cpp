// SPDX-License-Identifier: Apache-2.0
#include "client/TTSClientPrivate.h"

#include <unistd.h>

#include "client/SharedConnection.h"
#include "client/internal/Log.h"

namespace TTS {

TTSClientPrivate::TTSClientPrivate(const std::string& appName, NotifyFunction cb)
    : mCbFunc(cb),
      mPid(static_cast<uint32_t>(getpid())),
      mAppName(appName),
      mLockOwner(false),
      mSetting(appName),
      mProfileName("Default") {
    dbgPrint(kLogTrace, "[Client] %s() appName = %s, pid = %d\n", "TTSClientPrivate",
             appName.c_str(), getpid());
    gttsbinder.clear();
}

TTSClientPrivate::~TTSClientPrivate() {
    traceCall("~TTSClientPrivate");
    gttsbinder.clear();
}

}  // namespace TTS
