// SPDX-License-Identifier: Apache-2.0
#include "service/Readiness.h"

#ifdef VOXTREL_HAVE_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

#include "service/Log.h"

namespace voxtreld {

void Readiness::stepDone() {
    if (--mStepsLeft > 0) {
        return;
    }
    logLine(LogLevel::Info, "ready");
#ifdef VOXTREL_HAVE_SYSTEMD
    (void)sd_notify(0, "READY=1\nSTATUS=Ready to speak");  // fails where systemd did not start us
#endif
}

}  // namespace voxtreld
