// SPDX-License-Identifier: Apache-2.0
#include "socket/SocketReference.h"

#include <poll.h>
#include <sys/socket.h>

#include "binder/BpBinder.h"
#include "socket/BinderTransfer.h"
#include "socket/ImportTable.h"
#include "socket/ThreadPool.h"
#include "support/ForkGuard.h"
#include "support/Log.h"
#include "support/Manners.h"

namespace android::transport {

namespace {

constexpr size_t kMaxIdle = 16;

constexpr uint32_t kOneWay = IBinder::FLAG_ONEWAY;

// Only so many threads that serve may wait at a time until other processes listen to them: the rest
// serve those who have nothing to do with it.
class BlockingSlot {
public:
    BlockingSlot()
        : mServes(ThreadPool::servesHere()), mGranted(!mServes || waiting().fetch_add(1) < kMax) {}
    ~BlockingSlot() {
        if (mServes) {
            --waiting();
        }
    }
    BlockingSlot(const BlockingSlot&) = delete;
    BlockingSlot& operator=(const BlockingSlot&) = delete;
    bool granted() const { return mGranted; }

private:
    static constexpr int kMax = 4;
    static std::atomic<int>& waiting() {
        static std::atomic<int> count{0};
        return count;
    }
    const bool mServes;
    const bool mGranted;
};

// A reference to a node that has died: its other end is closed.
Fd deadReference() {
    return std::move(makeSocketPair().held);
}

status_t trySend(const Fd& socket, const Header& header, const Parcel& data,
                 const Attachments& attachments, PollTarget& target) {
    target = {socket.get(), POLLOUT};
    return sendMessage(socket, header, data, attachments);
}

// The caller may not hear of it: what an interface's proxy answers to a one-way call is its own.
status_t refuseAsTooLarge(const char* kind, uint32_t code, size_t size, size_t limit) {
    logLimited(
        "%s call %u of %zu bytes is not sent: %zu fit into one, so it has to be split (status %d)",
        kind, code, size, limit, static_cast<int>(FAILED_TRANSACTION));
    return FAILED_TRANSACTION;
}

void waitForData(const Fd& socket) {
    pollfd request = {socket.get(), POLLIN, 0};
    (void)poll(&request, 1, -1);  // whatever it says, receiving tells
}

}  // namespace

// Waits for the control socket to hang up.
class SocketReference::Watch final : public EventHandler {
public:
    explicit Watch(const wp<BpBinder>& proxy) : EventHandler(Fd()), mProxy(proxy) {}

    void onReady() override {
        // Nothing is ever said through a control socket to its holder: only its end makes it ready.
        const sp<BpBinder> proxy = mProxy.promote();
        if (proxy != nullptr) {
            proxy->reportDeath();
        }
    }

private:
    const wp<BpBinder> mProxy;
};

SocketReference::SocketReference(const NodeId& id, Fd control,
                                 std::shared_ptr<const DrainingSocket> predecessor,
                                 bool leadsToManager)
    : mId(id),
      mControl(std::move(control)),
      mLeadsToManager(leadsToManager),
      mPredecessor(std::move(predecessor)),
      mBudget(gManners.ofDriver ? std::make_unique<PeerBudget>() : nullptr) {}

SocketReference::~SocketReference() {
    // A child shares the sockets with its parent, and may have copied a lock that is held.
    if (!isForkedChild()) {
        unwatch();
        forgetImport(*this);
    }
}

Fd SocketReference::takeUndrained() {
    Mutex::Autolock held(mSendLock);
    if (mMainIsClosed) {
        return std::move(mSecondMain);
    }
    return mOneWaysSent != mOneWaysDone.load() ? std::move(mMain) : Fd();
}

status_t SocketReference::call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    if (data.errorCheck() != OK) {
        return data.errorCheck();
    }
    if ((flags & kOneWay) != 0) {
        const Header header = {0, Kind::OneWay, code, 0, flags, 0, 0, 0};
        return mBudget != nullptr ? callOneWayWithinBudget(header, data) : callOneWay(header, data);
    }
    const Header header = {0, Kind::Request, code, 0, flags, 0, 0, 0};
    if (reply != nullptr) {
        return callTwoWay(header, data, reply);
    }
    Parcel unwanted;
    return callTwoWay(header, data, &unwanted);
}

status_t SocketReference::callTwoWay(const Header& header, const Parcel& data, Parcel* reply) {
    if (data.dataSize() > kLargestRequest) {
        return refuseAsTooLarge("two-way", header.code, data.dataSize(), kLargestRequest);
    }
    const ThreadPool::BlockedScope blocked;
    if (!blocked.granted()) {
        return FAILED_TRANSACTION;
    }
    Deadline deadline;
    Attachments attachments;
    const status_t status = exportBinders(data, &attachments, deadline, {0, mLeadsToManager});
    if (status != OK) {
        return status;
    }
    if (!mMainIsTaken.exchange(true)) {
        PollTarget target;
        const status_t sent = tryMain(header, data, attachments, target);
        if (sent != WOULD_BLOCK) {
            return finishOnMain(sent, reply, deadline);
        }
        mMainIsTaken = false;
    }
    return callBeside(header, data, attachments, reply, deadline);
}

status_t SocketReference::finishOnMain(status_t sent, Parcel* reply, Deadline& deadline) {
    status_t status = sent;
    bool broken = status == DEAD_OBJECT;
    if (status == OK) {
        status = receiveReply(mMain, reply, &broken);
    } else if (broken) {
        status = whyClosed(deadline);
    }
    if (!broken) {
        mMainIsTaken = false;
    }
    return status;
}

status_t SocketReference::callBeside(const Header& header, const Parcel& data,
                                     const Attachments& attachments, Parcel* reply,
                                     Deadline& deadline) {
    Fd socket;
    const auto attempt = [&](PollTarget& target) {
        const status_t status = socket.valid() ? OK : takeSocket(&socket, target);
        return status == OK ? trySend(socket, header, data, attachments, target) : status;
    };
    status_t status = retryUntil(deadline, attempt);
    bool broken = status == DEAD_OBJECT;
    if (status == OK) {
        status = receiveReply(socket, reply, &broken);
    } else if (broken) {
        status = whyClosed(deadline);
    }
    if (!broken && socket.valid()) {
        giveBack(std::move(socket));
    }
    return status;
}

status_t SocketReference::callOneWay(const Header& header, const Parcel& data) {
    if (data.dataSize() > kLargestOneWay) {
        return refuseAsTooLarge("one-way", header.code, data.dataSize(), kLargestOneWay);
    }
    Deadline deadline;
    Attachments attachments;
    status_t status = exportBinders(data, &attachments, deadline, {0, mLeadsToManager});
    if (status == OK) {
        status = retryUntil(deadline, [&](PollTarget& target) {
            return tryMain(header, data, attachments, target);
        });
    }
    if (status == DEAD_OBJECT) {
        status = whyClosed(deadline);
        if (status != DEAD_OBJECT) {
            logLimited(
                "a connection was refused by the process that it leads to: a one-way call fails, "
                "and those before it may be lost");
        }
    }
    return status;
}

status_t SocketReference::callOneWayWithinBudget(Header header, const Parcel& data) {
    OneWayBudget* budget = mBudget->find(mControl);
    if (budget == nullptr || data.dataSize() > kLargestOneWay) {
        return callOneWay(header, data);
    }
    if (!budget->take(data.dataSize())) {
        return hasEnded() ? DEAD_OBJECT : FAILED_TRANSACTION;
    }
    header.options = kCounted;
    const status_t status = callOneWay(header, data);
    if (status != OK) {
        budget->giveBack(data.dataSize());
    }
    return status;
}

status_t SocketReference::tryMain(const Header& header, const Parcel& data,
                                  const Attachments& attachments, PollTarget& target) {
    const bool oneWay = header.kind == Kind::OneWay;
    Mutex::Autolock held(mSendLock);
    Fd& socket = oneWay && mMainIsClosed ? mSecondMain : mMain;
    status_t status = socket.valid() ? OK : open(Role::Calls, 0, &socket, target);
    if (status == OK && (oneWay ? !mayFollow(target) : !mayGoBehind())) {
        status = WOULD_BLOCK;
    }
    if (status != OK) {
        return status;
    }
    status = trySend(socket, header, data, attachments, target);
    if (status == DEAD_OBJECT) {
        mMainIsClosed = true;
        mSecondMain.reset();
    } else if (oneWay && status == OK) {
        mBytesUpTo[++mOneWaysSent % kRemembered] = mBytesSent +=
            static_cast<uint32_t>(data.dataSize());
    }
    return status;
}

// Has everything been received that was sent through an earlier reference?
bool SocketReference::mayFollow(PollTarget& target) {
    if (mPredecessor != nullptr && !mPredecessor->isDrained()) {
        target = {mPredecessor->socket().get(), POLLRDHUP};
        return false;
    }
    mPredecessor.reset();
    return true;
}

// With more ahead that is not done, the other side may not be reading the main socket (see
// OneWayQueue).
bool SocketReference::mayGoBehind() const {
    const uint32_t ahead = mOneWaysSent - mOneWaysDone.load();
    return ahead == 0 ||
           (ahead <= kMaxAhead &&
            mBytesSent - mBytesUpTo[(mOneWaysSent - ahead) % kRemembered] <= kMaxBytesAhead);
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
        importBinders(envelope, *reply)) {
        noteDone(envelope.header().code);
        const status_t status = envelope.header().status;
        if (status != OK) {
            reply->freeData();
        }
        return status;
    }
    reply->freeData();
    if (received == Received::OutOfDescriptors && envelope.header().kind == Kind::Reply) {
        logLimited("out of file descriptors: the reply to a call is lost");
        noteDone(envelope.header().code);
        return FAILED_TRANSACTION;
    }
    *broken = true;
    if (received == Received::HungUp) {
        Deadline deadline(kEndTimeoutMs);  // its process may be dying, one socket after another
        return whyClosed(deadline);
    }
    logLimited("a reply that makes no sense: its connection is closed");
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

status_t SocketReference::takeSocket(Fd* out, PollTarget& target) {
    {
        Mutex::Autolock held(mLock);
        if (!mIdle.empty()) {
            *out = std::move(mIdle.back());
            mIdle.pop_back();
            return OK;
        }
    }
    return open(Role::Calls, 0, out, target);
}

void SocketReference::giveBack(Fd socket) {
    Mutex::Autolock held(mLock);
    if (mIdle.size() < kMaxIdle) {
        mIdle.push_back(std::move(socket));
    }
}

status_t SocketReference::open(Role role, pid_t holder, Fd* out, PollTarget& target) const {
    SocketPair pair = makeSocketPair();
    if (!pair.held.valid()) {
        logLimited("out of file descriptors: a call fails");
        return FAILED_TRANSACTION;
    }
    target = {mControl.get(), POLLOUT};
    const status_t status = sendAdopt(mControl, role, pair.served, holder);
    if (status == OK) {
        *out = std::move(pair.held);
    }
    return status;
}

// The owner has closed a socket: with the control socket, since it has died, or that one alone.
status_t SocketReference::whyClosed(Deadline& deadline) const {
    return retryUntil(deadline, [this](PollTarget& target) {
        target = {mControl.get(), POLLRDHUP};
        return hasHungUp(mControl) ? DEAD_OBJECT : WOULD_BLOCK;
    });
}

bool SocketReference::hasEnded() const {
    return hasHungUp(mControl);
}

Fd SocketReference::share(pid_t holder, Deadline& deadline) {
    Fd control;
    status_t last = OK;
    const auto attempt = [&](PollTarget& target) {
        return last = open(Role::Control, holder, &control, target);
    };
    const BlockingSlot place;
    PollTarget unused;
    const bool wait = place.granted() && !mDoesNotListen;
    const status_t status = wait ? retryUntil(deadline, attempt) : attempt(unused);
    mDoesNotListen = last == WOULD_BLOCK;
    return status == DEAD_OBJECT ? deadReference() : std::move(control);
}

status_t SocketReference::watch(const wp<BpBinder>& proxy) {
    if (refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    Mutex::Autolock held(mLock);
    if (mWatch == nullptr) {
        mWatch = std::make_shared<Watch>(proxy);
        if (!reactor().add(mWatch, mControl)) {
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
