// SPDX-License-Identifier: Apache-2.0
#include "socket/Farewell.h"

#include <sys/socket.h>

#include <algorithm>

#include "socket/Message.h"

namespace android::transport {

Farewell::Farewell(const NodeId& id, Fd socket) : Source(std::move(socket)), mId(id) {
    (void)shutdown(this->socket().get(), SHUT_WR);  // fails where the owner has hung up already
}

void Farewell::onReady() {
    farewells().remove(*this);
}

bool Farewell::isOver() const {
    return hasHungUp(socket());
}

void Farewells::add(const NodeId& id, Fd socket) {
    const auto farewell = std::make_shared<Farewell>(id, std::move(socket));
    Mutex::Autolock held(mLock);
    // A process without a thread pool is not told that they are over.
    for (size_t i = mOldestFirst.size(); i-- > 0;) {
        if (mOldestFirst[i]->isOver()) {
            letGo(mOldestFirst.begin() + static_cast<List::difference_type>(i));
        }
    }
    if (mOldestFirst.size() >= kMost) {
        letGo(mOldestFirst.begin());
    }
    mOldestFirst.push_back(farewell);
    (void)reactor().add(farewell);  // else it stays until the next one comes
}

std::shared_ptr<Farewell> Farewells::find(const NodeId& id) {
    Mutex::Autolock held(mLock);
    const auto found = std::find_if(mOldestFirst.rbegin(), mOldestFirst.rend(),
                                    [&id](const auto& one) { return one->id() == id; });
    return found != mOldestFirst.rend() && !(*found)->isOver() ? *found : nullptr;
}

void Farewells::remove(const Farewell& farewell) {
    Mutex::Autolock held(mLock);
    const auto found = std::find_if(mOldestFirst.begin(), mOldestFirst.end(),
                                    [&](const auto& one) { return one.get() == &farewell; });
    if (found != mOldestFirst.end()) {
        letGo(found);
    }
}

void Farewells::letGo(List::iterator one) {
    reactor().remove(**one);
    mOldestFirst.erase(one);
}

Farewells& farewells() {
    static auto* const instance = new Farewells();
    return *instance;
}

}  // namespace android::transport
