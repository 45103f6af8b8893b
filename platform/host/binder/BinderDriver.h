// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_BINDERDRIVER_H
#define VOXTREL_BINDER_BINDERDRIVER_H

#include <string>

namespace android {

/// The device of the kernel's driver that carries this process's calls, as $VOXTREL_BINDER_DRIVER
/// names it; empty: they travel over sockets. Of this stand-in alone. Called on: any thread.
const std::string& binderDriver();

}  // namespace android

#endif
