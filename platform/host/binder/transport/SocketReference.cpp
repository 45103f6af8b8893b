// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/SocketReference.h"

#include <poll.h>

#include "binder/BpBinder.h"
#include "binder/transport/Log.h"
#include "binder/transport/Objects.h"
#include "binder/transport/ThreadPool.h"

namespace android::transport {

namespace {

constexpr size_t kMostIdle = 16;
// A process that is killed closes its sockets one by one: how long the door may still be open when
// another socket has hung up.
constexpr int kClosingMs = 100;

constexpr uint32_t kOneWay = IBinder::FLAG_ONEWAY;

void waitForData(const Fd& socket) {
    pollfd request = {socket.get(), POLLIN, 0};
    (void)poll(&request, 1, -1);  // whatever it says, receiving tells
}

}  // namespace

// Waits for the door to hang up.
class SocketReference::Watch final : public Source {
public:
    explicit Watch(const wp<BpBinder>& proxy) : Source(Fd()), mProxy(proxy) {}

    void onReady() override {
        // Nothing is ever said through a door to its holder: only its end makes it ready.
        const sp<BpBinder> proxy = mProxy.promote();
        if (proxy != nullptr) {
            proxy->reportDeath();
        }
    }

private:
    const wp<BpBinder> mProxy;
};

SocketReference::SocketReference(const NodeId& id, Fd door) : mId(id), mDoor(std::move(door)) {}

SocketReference::~SocketReference() {
    unwatch();
    forgetReference(mId, this);
    const Fd last(mFirstIdle.exchange(-1));
}

status_t SocketReference::call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    if (data.errorCheck() != OK) {
        return data.errorCheck();
    }
    if ((flags & kOneWay) != 0) {
        return callOneWay(code, data, flags);
    }
    if (reply != nullptr) {
        return callTwoWay(code, data, reply, flags);
    }
    Parcel unwanted;
    return callTwoWay(code, data, &unwanted, flags);
}

status_t SocketReference::callTwoWay(uint32_t code, const Parcel& data, Parcel* reply,
                                     uint32_t flags) {
    Attachments attachments;
    status_t status = detachBinders(data, &attachments);
    Fd socket;
    if (status == OK) {
        status = takeCallSocket(&socket);
    }
    if (status != OK) {
        return status;
    }
    status = sendMessage(socket, {0, Kind::Request, code, 0, flags, 0, 0, 0}, data, attachments);
    if (status == OK) {
        status = receiveReply(socket, reply);
    } else if (status == DEAD_OBJECT) {
        socket.reset();
        status = whyClosed();
    }
    if (socket.valid()) {
        giveBack(std::move(socket));
    }
    return status;
}

status_t SocketReference::receiveReply(Fd& socket, Parcel* reply) const {
    reply->freeData();
    Envelope envelope;
    const ThreadPool::Blocked blocked;
    Received received = receiveMessage(socket, true, *reply, envelope);
    while (received == Received::Nothing) {
        waitForData(socket);
        received = receiveMessage(socket, true, *reply, envelope);
    }
    if (received == Received::Message && envelope.header().kind == Kind::Reply &&
        attachBinders(envelope, *reply)) {
        const status_t status = envelope.header().status;
        if (status != OK) {
            reply->freeData();
        }
        return status;
    }
    reply->freeData();
    socket.reset();
    if (received == Received::HungUp) {
        return whyClosed();
    }
    logLine("a reply that makes no sense: its connection is closed");
    return FAILED_TRANSACTION;
}

status_t SocketReference::callOneWay(uint32_t code, const Parcel& data, uint32_t flags) {
    Attachments attachments;
    status_t status = detachBinders(data, &attachments);
    const Fd* socket = status == OK ? lane(&status) : nullptr;
    if (socket == nullptr) {
        return status;
    }
    status = sendMessage(*socket, {0, Kind::OneWay, code, 0, flags, 0, 0, 0}, data, attachments);
    return status == DEAD_OBJECT ? whyClosed() : status;
}

const Fd* SocketReference::lane(status_t* status) {
    if (!mLaneIsOpen.load(std::memory_order_acquire)) {
        Mutex::Autolock held(mLock);
        if (!mLaneIsOpen.load(std::memory_order_relaxed)) {
            *status = open(Role::Lane, &mLane);
            if (*status != OK) {
                return nullptr;
            }
            mLaneIsOpen.store(true, std::memory_order_release);
        }
    }
    return &mLane;
}

status_t SocketReference::takeCallSocket(Fd* out) {
    const int first = mFirstIdle.exchange(-1);
    if (first >= 0) {
        *out = Fd(first);
        return OK;
    }
    {
        Mutex::Autolock held(mLock);
        if (!mIdle.empty()) {
            *out = std::move(mIdle.back());
            mIdle.pop_back();
            return OK;
        }
    }
    return open(Role::Calls, out);
}

void SocketReference::giveBack(Fd socket) {
    int none = -1;
    if (mFirstIdle.compare_exchange_strong(none, socket.get())) {
        (void)socket.release();  // mFirstIdle owns it now
        return;
    }
    Mutex::Autolock held(mLock);
    if (mIdle.size() < kMostIdle) {
        mIdle.push_back(std::move(socket));
    }
}

status_t SocketReference::open(Role role, Fd* out) const {
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        logLine("out of file descriptors: a call fails");
        return FAILED_TRANSACTION;
    }
    const status_t status = sendAdopt(mDoor, role, pair.served);
    if (status == OK) {
        *out = std::move(pair.held);
    }
    return status;
}

status_t SocketReference::whyClosed() const {
    return hangsUpWithin(mDoor, kClosingMs) ? static_cast<status_t>(DEAD_OBJECT)
                                            : static_cast<status_t>(FAILED_TRANSACTION);
}

Fd SocketReference::share() {
    Fd held;
    SocketPair pair = makeSocketPair();
    if (pair.held.valid()) {
        const status_t status = sendAdopt(mDoor, Role::Door, pair.served);
        if (status == OK || status == DEAD_OBJECT) {
            held = std::move(pair.held);
        }
    }
    return held;
}

status_t SocketReference::watch(const wp<BpBinder>& proxy) {
    Mutex::Autolock held(mLock);
    if (hasHungUp(mDoor)) {
        return DEAD_OBJECT;
    }
    if (mWatch == nullptr) {
        mWatch = std::make_shared<Watch>(proxy);
        if (!reactor().add(mWatch, mDoor)) {
            mWatch.reset();
            return NO_MEMORY;
        }
    }
    return OK;
}

void SocketReference::unwatch() {
    std::shared_ptr<Watch> watch;
    Mutex::Autolock held(mLock);
    watch.swap(mWatch);
    if (watch != nullptr) {
        reactor().remove(*watch);
    }
}

}  // namespace android::transport
