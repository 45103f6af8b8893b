// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_CALLEND_H
#define VOXTREL_BINDER_TRANSPORT_CALLEND_H

#include "binder/transport/ServedEnd.h"

namespace android::transport {

/// The served end of a socket for two-way calls. The thread that is woken by a request serves it
/// and answers, and then sleeps on the socket itself for a while: a busy caller is served with one
/// receive and one send a call.
class CallEnd final : public ServedEnd {
public:
    using ServedEnd::ServedEnd;
    void onReady() override;

private:
    /// Serves what comes until the thread is to go back to the reactor; true: the socket stays.
    bool serve(bool& staying);
    bool serveOne(Incoming& incoming);
};

}  // namespace android::transport

#endif
