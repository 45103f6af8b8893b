// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LANEEND_H
#define VOXTREL_BINDER_TRANSPORT_LANEEND_H

#include <memory>

#include "binder/transport/ServedEnd.h"

namespace android::transport {

/// The served end of a socket for one-way calls. Served in order, and only while it is this lane's
/// turn at the node.
class LaneEnd final : public ServedEnd, public std::enable_shared_from_this<LaneEnd> {
public:
    using ServedEnd::ServedEnd;
    void onReady() override;

    /// Carries out one received call; false: the lane has been let go.
    bool serveOne(Incoming& incoming);
};

}  // namespace android::transport

#endif
