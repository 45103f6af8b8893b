// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_PEER_PEER_H
#define VOXTREL_TESTS_FOREIGN_PEER_PEER_PEER_H

#include <functional>
#include <set>
#include <string>

#include "tests/foreign_peer/peer/Driver.h"
#include "tests/foreign_peer/peer/Image.h"

namespace foreign {

/// A call that came to a node of this process; the context manager's node has the number 0.
struct Incoming {
    uint64_t node;
    uint32_t code;
    uint32_t flags;
    int32_t pid;
    uint32_t uid;
    Image data;
};

/// What is answered: an image, or a status that is not 0.
struct Outgoing {
    int32_t status = 0;
    Image data;
};

/// What became of a call.
struct Answer {
    enum class Kind { Reply, Status, Sent, Failed, Dead };
    Kind kind;
    int32_t status = 0;
    Image data;
};

/// A process of one thread in the driver's protocol: calls, also those that come while it waits for
/// a reply, counts, deaths. It acquires each handle that it receives, once.
class Peer {
public:
    using Serve = std::function<Outgoing(const Incoming&)>;
    /// Is told what happens aside of calls, one line each.
    using Tell = std::function<void(const std::string& line)>;
    using Died = std::function<void(uint64_t cookie)>;

    Peer(const char* path, Serve serve, Tell tell, Died died);

    int descriptor() const { return mDriver.descriptor(); }
    bool becomeContextManager() { return mDriver.becomeContextManager(); }

    Answer call(uint32_t handle, uint32_t code, uint32_t flags, const Image& data);
    void release(uint32_t handle);
    void requestDeath(uint32_t handle, uint64_t cookie);
    void clearDeath(uint32_t handle, uint64_t cookie);
    /// Does what the driver has for this process; waits where there is nothing.
    void work();

private:
    Answer await(bool isOneWay);
    bool settle(const Return& one, bool isOneWay, Answer* answer);
    void handle(const Return& one);
    void count(const Return& one);
    void serve(const binder_transaction_data& transaction);
    void reply(const Outgoing& answer);
    Image receive(const binder_transaction_data& transaction);

    Driver mDriver;
    const Serve mServe;
    const Tell mTell;
    const Died mDied;
    std::set<uint32_t> mHeld;
};

}  // namespace foreign

#endif
