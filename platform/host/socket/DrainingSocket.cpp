// SPDX-License-Identifier: Apache-2.0
#include "socket/DrainingSocket.h"

#include <sys/socket.h>

#include <algorithm>

#include "socket/Message.h"

namespace android::transport {

DrainingSocket::DrainingSocket(DrainingSockets& all, const NodeId& id, Fd socket)
    : EventHandler(std::move(socket)), mAll(all), mId(id) {
    (void)shutdown(this->socket().get(), SHUT_WR);  // fails where the owner has hung up already
}

void DrainingSocket::onReady() {
    mAll.remove(*this);
}

bool DrainingSocket::isDrained() const {
    return hasHungUp(socket());
}

void DrainingSockets::add(const NodeId& id, Fd socket) {
    const auto draining = std::make_shared<DrainingSocket>(*this, id, std::move(socket));
    Mutex::Autolock held(mLock);
    // A process without a thread pool is not told that they are drained.
    for (size_t i = mOldestFirst.size(); i-- > 0;) {
        if (mOldestFirst[i]->isDrained()) {
            letGo(mOldestFirst.begin() + static_cast<List::difference_type>(i));
        }
    }
    if (mOldestFirst.size() >= kMax) {
        letGo(mOldestFirst.begin());
    }
    mOldestFirst.push_back(draining);
    (void)mReactor.add(draining);  // else it stays until the next one comes
}

std::shared_ptr<DrainingSocket> DrainingSockets::find(const NodeId& id) {
    Mutex::Autolock held(mLock);
    const auto found = std::find_if(mOldestFirst.rbegin(), mOldestFirst.rend(),
                                    [&id](const auto& one) { return one->id() == id; });
    return found != mOldestFirst.rend() && !(*found)->isDrained() ? *found : nullptr;
}

void DrainingSockets::remove(const DrainingSocket& draining) {
    Mutex::Autolock held(mLock);
    const auto found = std::find_if(mOldestFirst.begin(), mOldestFirst.end(),
                                    [&](const auto& one) { return one.get() == &draining; });
    if (found != mOldestFirst.end()) {
        letGo(found);
    }
}

void DrainingSockets::letGo(List::iterator one) {
    mReactor.remove(**one);
    mOldestFirst.erase(one);
}

}  // namespace android::transport
