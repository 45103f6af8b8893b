// SPDX-License-Identifier: Apache-2.0
#include "socket/Syscalls.h"

namespace android::transport::sys {

std::atomic<Fault> gFault{nullptr};

void setFault(Fault fault) {
    gFault = fault;
}

}  // namespace android::transport::sys
