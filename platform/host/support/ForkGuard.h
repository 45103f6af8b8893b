// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_FORKGUARD_H
#define VOXTREL_SUPPORT_FORKGUARD_H

namespace android::transport {

/// Keeps processes that are forked from this one from using the runtime; `inChild` runs there
/// first. Called once, when the runtime is first used.
void armForkGuard(void (*inChild)());

/// True in a process forked from one that had used the runtime.
bool isForkedChild();
/// The same; says so in the log the first time.
bool refusedAfterFork();

}  // namespace android::transport

#endif
