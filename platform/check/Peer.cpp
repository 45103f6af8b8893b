// SPDX-License-Identifier: Apache-2.0
#include "check/Peer.h"

#include <unistd.h>

#include "check/Row.h"

namespace check {

Peer::Peer()
    : mName("voxtrel.platform.check." + std::to_string(getpid())),
      mProcess({"--peer", mName}, false) {
    std::string line;
    if (!mProcess.readLine(line, soon())) {
        throw CannotCheck("the second process did not register itself within 5 s");
    }
    if (line != "ready") {
        throw CannotCheck("the service manager took no service of the second process: " + line);
    }
    mNode = android::defaultServiceManager()->checkService(android::String16(mName.c_str()));
    if (mNode == nullptr) {
        throw CannotCheck("the service manager does not know the second process");
    }
}

void Peer::kill() {
    mProcess.kill();
    int status = 0;
    (void)mProcess.waitForEnd(status, soon());
}

}  // namespace check
