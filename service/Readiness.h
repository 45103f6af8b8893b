// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_READINESS_H
#define VOXTREL_SERVICE_READINESS_H

#include <atomic>

namespace voxtreld {

/// Says in the log, and to systemd where that started the program, that the service can speak: when
/// its voices are loaded and clients can find it, whichever comes last.
/// Called on: any thread, once each.
class Readiness {
public:
    void voicesLoaded() { stepDone(); }
    void registered() { stepDone(); }

private:
    void stepDone();

    std::atomic<int> mStepsLeft{2};
};

}  // namespace voxtreld

#endif
