// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_DISPATCH_H
#define VOXTREL_SOCKET_DISPATCH_H

#include <atomic>

#include "binder/Binder.h"
#include "socket/BinderTranslator.h"
#include "socket/Incoming.h"

namespace android::transport {

/// How a received call went.
enum class Served {
    Done,
    Malformed,    ///< what came along made no sense
    Undelivered,  ///< the caller does not take its reply
};

/// Carries out a received call in the name of its sender, and answers it on `socket`; the answer
/// also says how many one-way calls of the sender's are done.
Served serveRequest(BinderTranslator& translator, BBinder& node, Incoming& incoming,
                    const Fd& socket, const std::atomic<uint32_t>& oneWaysDone);

/// Answers a request that cannot be carried out with `FAILED_TRANSACTION`.
Served failRequest(const Fd& socket, const std::atomic<uint32_t>& oneWaysDone);

/// Carries out a received one-way call in the name of its sender.
Served serveOneWay(BinderTranslator& translator, BBinder& node, Incoming& incoming);

}  // namespace android::transport

#endif
