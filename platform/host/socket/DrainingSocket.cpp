// SPDX-License-Identifier: Apache-2.0
#include "socket/DrainingSocket.h"

#include <sys/socket.h>

#include <algorithm>

#include "socket/Message.h"

namespace android::transport {

bool DrainingSocket::isDrained() const {
    return hasHungUp(socket);
}

void DrainingSockets::add(const NodeId& id, Fd socket) {
    (void)shutdown(socket.get(), SHUT_WR);  // fails where the owner has hung up already
    Mutex::Autolock held(mLock);
    closeDrained();
    if (mOldestFirst.size() >= kMax) {
        mOldestFirst.erase(mOldestFirst.begin());
    }
    mOldestFirst.push_back(
        std::make_shared<const DrainingSocket>(DrainingSocket{id, std::move(socket)}));
}

std::shared_ptr<const DrainingSocket> DrainingSockets::find(const NodeId& id) {
    Mutex::Autolock held(mLock);
    closeDrained();
    const auto found = std::find_if(mOldestFirst.rbegin(), mOldestFirst.rend(),
                                    [&id](const auto& one) { return one->id == id; });
    return found != mOldestFirst.rend() ? *found : nullptr;
}

void DrainingSockets::closeDrained() {
    mOldestFirst.erase(std::remove_if(mOldestFirst.begin(), mOldestFirst.end(),
                                      [](const auto& one) { return one->isDrained(); }),
                       mOldestFirst.end());
}

}  // namespace android::transport
