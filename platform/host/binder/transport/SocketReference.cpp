// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/SocketReference.h"

#include <poll.h>
#include <sys/socket.h>

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

// Only so many threads that serve may wait at a time until other processes listen to them: the rest
// serve those who have nothing to do with it.
class PlaceToWait {
public:
    PlaceToWait()
        : mServes(ThreadPool::servesHere()), mGranted(!mServes || waiting().fetch_add(1) < kMost) {}
    ~PlaceToWait() {
        if (mServes) {
            --waiting();
        }
    }
    PlaceToWait(const PlaceToWait&) = delete;
    PlaceToWait& operator=(const PlaceToWait&) = delete;
    bool granted() const { return mGranted; }

private:
    static constexpr int kMost = 4;
    static std::atomic<int>& waiting() {
        static std::atomic<int> count{0};
        return count;
    }
    const bool mServes;
    const bool mGranted;
};

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
}

status_t SocketReference::call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    if (data.errorCheck() != OK) {
        return data.errorCheck();
    }
    if ((flags & kOneWay) != 0) {
        return callOneWay({0, Kind::OneWay, code, 0, flags, 0, 0, 0}, data);
    }
    const Header header = {0, Kind::Request, code, 0, flags, 0, 0, 0};
    if (reply != nullptr) {
        return callTwoWay(header, data, reply);
    }
    Parcel unwanted;
    return callTwoWay(header, data, &unwanted);
}

status_t SocketReference::callTwoWay(const Header& header, const Parcel& data, Parcel* reply) {
    const ThreadPool::Blocked blocked;
    if (!blocked.granted()) {
        return FAILED_TRANSACTION;
    }
    Attachments attachments;
    const status_t status = detachBinders(data, &attachments);
    if (status != OK) {
        return status;
    }
    if (!mMainIsTaken.exchange(true)) {
        const status_t sent = tryMain(header, data, attachments);
        if (sent != WOULD_BLOCK) {
            return finishOnMain(sent, reply);
        }
        mMainIsTaken = false;
    }
    return callBeside(header, data, attachments, reply);
}

status_t SocketReference::finishOnMain(status_t sent, Parcel* reply) {
    status_t status = sent;
    bool broken = status == DEAD_OBJECT;
    if (status == OK) {
        status = receiveReply(mMain, reply, &broken);
    }
    if (!broken) {
        mMainIsTaken = false;
    }
    return status;
}

status_t SocketReference::callBeside(const Header& header, const Parcel& data,
                                     const Attachments& attachments, Parcel* reply) {
    Fd socket;
    status_t status = takeIdle(&socket);
    if (status != OK) {
        return status;
    }
    status = patiently(socket, [&] { return sendMessage(socket, header, data, attachments); });
    bool broken = status == DEAD_OBJECT;
    if (status == OK) {
        status = receiveReply(socket, reply, &broken);
    } else if (broken) {
        status = whyClosed();
    }
    if (!broken) {
        giveBack(std::move(socket));
    }
    return status;
}

status_t SocketReference::callOneWay(const Header& header, const Parcel& data) {
    Attachments attachments;
    const status_t status = detachBinders(data, &attachments);
    return status != OK ? status
                        : patiently(mMain, [&] { return tryMain(header, data, attachments); });
}

status_t SocketReference::tryMain(const Header& header, const Parcel& data,
                                  const Attachments& attachments) {
    status_t status = openMain();
    if (status == OK) {
        Mutex::Autolock held(mSendLock);
        const bool oneWay = header.kind == Kind::OneWay;
        if (!oneWay && !mayGoBehind()) {
            return WOULD_BLOCK;
        }
        status = sendMessage(mMain, header, data, attachments);
        if (oneWay && status == OK) {
            mBytesUpTo[++mOneWaysSent % kRemembered] = mBytesSent +=
                static_cast<uint32_t>(data.dataSize());
        }
    }
    return status == DEAD_OBJECT ? whyClosed() : status;
}

// With more ahead that is not done, the other side may not be reading the main socket (see Turns).
bool SocketReference::mayGoBehind() const {
    const uint32_t ahead = mOneWaysSent - mOneWaysDone.load();
    return ahead == 0 ||
           (ahead <= kMostAhead &&
            mBytesSent - mBytesUpTo[(mOneWaysSent - ahead) % kRemembered] <= kMostBytesAhead);
}

status_t SocketReference::receiveReply(const Fd& socket, Parcel* reply, bool* broken) {
    reply->freeData();
    Envelope envelope;
    Received received = receiveMessage(socket, true, *reply, envelope);
    while (received == Received::Nothing) {
        waitForData(socket);
        received = receiveMessage(socket, true, *reply, envelope);
    }
    if (received == Received::Message && envelope.header().kind == Kind::Reply &&
        attachBinders(envelope, *reply)) {
        noteDone(envelope.header().code);
        const status_t status = envelope.header().status;
        if (status != OK) {
            reply->freeData();
        }
        return status;
    }
    reply->freeData();
    *broken = true;
    if (received == Received::HungUp) {
        return whyClosed();
    }
    logLine("a reply that makes no sense: its connection is closed");
    // Not closed here: other threads may be sending on it.
    (void)shutdown(socket.get(), SHUT_RDWR);
    return FAILED_TRANSACTION;
}

// Replies may be read in another order than they were written.
void SocketReference::noteDone(uint32_t done) {
    uint32_t known = mOneWaysDone.load();
    while (static_cast<int32_t>(done - known) > 0 &&
           !mOneWaysDone.compare_exchange_weak(known, done)) {
    }
}

status_t SocketReference::openMain() {
    if (mMainIsOpen.load(std::memory_order_acquire)) {
        return OK;
    }
    Mutex::Autolock held(mLock);
    status_t status = OK;
    if (!mMainIsOpen.load(std::memory_order_relaxed)) {
        status = open(Role::Calls, &mMain);
        mMainIsOpen.store(status == OK, std::memory_order_release);
    }
    return status;
}

status_t SocketReference::takeIdle(Fd* out) {
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

bool SocketReference::hasEnded() const {
    return hasHungUp(mDoor);
}

Fd SocketReference::share(pid_t holder) {
    Fd held;
    SocketPair pair = makeSocketPair();
    if (pair.held.valid()) {
        const PlaceToWait place;
        const bool wait = place.granted() && !mDoesNotListen;
        const status_t status = sendAdopt(mDoor, Role::Door, pair.served, holder, wait);
        mDoesNotListen = status != OK;
        if (status == OK || status == DEAD_OBJECT) {
            held = std::move(pair.held);
        }
    }
    return held;
}

status_t SocketReference::watch(const wp<BpBinder>& proxy) {
    if (refusedAfterFork()) {
        return INVALID_OPERATION;
    }
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
