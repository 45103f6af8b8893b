// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LOG_H
#define VOXTREL_BINDER_TRANSPORT_LOG_H

namespace android::transport {

/// One line of the runtime on standard error, with the program's process id in front.
void logLine(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace android::transport

#endif
