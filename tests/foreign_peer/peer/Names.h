// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_PEER_NAMES_H
#define VOXTREL_TESTS_FOREIGN_PEER_PEER_NAMES_H

#include <functional>
#include <map>
#include <string>

#include "tests/foreign_peer/peer/Peer.h"

namespace foreign {

/// What a service manager answers for a name that it does not know, and whether a word with the
/// stability of an object follows each.
enum class Shape {
    Number,  ///< an int32 of 0; what it does not know, a ping as well, it answers with the status
             ///< -1, as early managers in C do
    Object,  ///< a flat object that is none; an unknown code gives UNKNOWN_TRANSACTION
    Stable,  ///< the same, followed by its stability
};

/// The names of a service manager in the classic protocol.
class Names {
public:
    using WatchDeath = std::function<void(uint32_t handle, uint64_t cookie)>;
    explicit Names(WatchDeath watchDeath) : mWatchDeath(std::move(watchDeath)) {}

    void setShape(Shape shape) { mShape = shape; }
    Outgoing serve(const Incoming& call);
    void died(uint64_t cookie);
    void forget() { mHandles.clear(); }

private:
    Outgoing find(ImageReader& request) const;
    Outgoing add(ImageReader& request);
    Outgoing nameOf(ImageReader& request) const;

    const WatchDeath mWatchDeath;
    Shape mShape = Shape::Number;
    std::map<std::string, uint32_t> mHandles;
};

}  // namespace foreign

#endif
