// SPDX-License-Identifier: Apache-2.0
#include "socket/SocketReference.h"

#include <poll.h>
#include <sys/socket.h>

#include <new>

#include "binder/BpBinder.h"
#include "socket/BinderTranslator.h"
#include "socket/Reactor.h"
#include "socket/ThreadPool.h"
#include "support/ForkGuard.h"
#include "support/Log.h"
#include "support/Manners.h"

namespace android::transport {

namespace {

constexpr uint32_t kOneWay = IBinder::FLAG_ONEWAY;

// A reference to a node that has died: its other end is closed.
Fd deadReference() {
    return std::move(makeSocketPair().held);
}

// Logged, since the proxy of an interface may drop the status of a one-way call.
status_t refuseAsTooLarge(const char* kind, uint32_t code, size_t size, size_t limit) {
    logLimited(
        "%s call %u of %zu bytes is not sent: %zu fit into one, so it has to be split (status %d)",
        kind, code, size, limit, static_cast<int>(FAILED_TRANSACTION));
    return FAILED_TRANSACTION;
}

// The reply to a call; any other message is malformed here.
Received receiveWithBinders(BinderTranslator& translator, const Fd& socket, uint8_t* room,
                            Parcel& reply, Envelope& envelope) {
    const Received received = receiveReply(socket, room, reply, envelope);
    const bool isMessage = received == Received::Message;
    if (!isMessage && received != Received::OutOfDescriptors && received != Received::OutOfMemory) {
        return received;
    }
    if (envelope.header().kind != Kind::Reply) {
        return Received::Malformed;
    }
    if (!isMessage || envelope.header().objectCount == 0) {
        return received;
    }
    try {
        return translator.importBinders(envelope, reply) ? received : Received::Malformed;
    } catch (const std::bad_alloc&) {
        return Received::OutOfMemory;
    }
}

}  // namespace

// Waits for the control socket to hang up.
class SocketReference::Watch final : public EventHandler {
public:
    explicit Watch(const wp<BpBinder>& proxy) : EventHandler(Fd()), mProxy(proxy) {}

    void onReady() override {
        // The owner sends nothing through a control socket: this is a hang-up.
        const sp<BpBinder> proxy = mProxy.promote();
        if (proxy != nullptr) {
            proxy->reportDeath();
        }
    }

private:
    const wp<BpBinder> mProxy;
};

SocketReference::SocketReference(const Context& context, const NodeId& id, Fd control,
                                 std::shared_ptr<const DrainingSocket> predecessor,
                                 bool leadsToManager, std::function<void(SocketReference&)> atEnd)
    : mContext(context),
      mId(id),
      mControl(std::move(control)),
      mLeadsToManager(leadsToManager),
      mAtEnd(std::move(atEnd)),
      mMain(mControl, std::move(predecessor)),
      mBudget(gManners.ofDriver ? std::make_unique<BudgetPage>(id.words[1]) : nullptr) {}

SocketReference::~SocketReference() {
    // A child shares the sockets with its parent, and may have copied a lock that is held.
    if (!isForkedChild()) {
        mAtEnd(*this);
        unwatch();
    }
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
    (void)mContext.pool.keepOneThread();  // it says why not, once
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
    uint8_t* const room = prepareToReceive();
    Deadline deadline;
    Attachments attachments;
    const status_t status =
        mContext.translator.exportBinders(data, &attachments, deadline, {{}, mLeadsToManager});
    if (status != OK) {
        return status;
    }
    // Only now: a thread that waits meanwhile for the owner of one of the binders counts itself.
    const ThreadPool::BlockedScope blocked = mContext.pool.blockOnReply();
    if (!blocked.granted()) {
        return FAILED_TRANSACTION;
    }
    bool broken = false;
    if (mMain.tryTake()) {
        PollTarget unused;
        const status_t sent = mMain.trySend(header, data, attachments, unused);
        if (sent != WOULD_BLOCK) {
            const status_t ended = finish(sent, mMain.socket(), reply, room, deadline, &broken);
            if (!broken) {
                mMain.release();
            }
            return ended;
        }
        mMain.release();
    }
    Fd socket;
    const status_t sent = sendBeside(header, data, attachments, deadline, &socket);
    const status_t ended = finish(sent, socket, reply, room, deadline, &broken);
    if (!broken && socket.valid()) {
        mIdle.giveBack(std::move(socket));
    }
    return ended;
}

status_t SocketReference::sendBeside(const Header& header, const Parcel& data,
                                     const Attachments& attachments, Deadline& deadline,
                                     Fd* socket) {
    return retryUntil(deadline, [&](PollTarget& target) {
        if (!socket->valid()) {
            *socket = mIdle.take();  // another call may have given one back meanwhile
        }
        const status_t status =
            socket->valid() ? OK : mControl.open(Role::Calls, {}, socket, target);
        if (status != OK) {
            return status;
        }
        target = {socket->get(), POLLOUT};
        return sendMessage(*socket, header, data, attachments);
    });
}

// `sent` is what became of sending the call. `broken`: the socket can carry no other one.
status_t SocketReference::finish(status_t sent, const Fd& socket, Parcel* reply, uint8_t* room,
                                 Deadline& deadline, bool* broken) {
    if (sent == OK) {
        return receiveReply(socket, room, reply, broken);
    }
    *broken = sent == DEAD_OBJECT;
    return *broken ? mControl.whyClosed(deadline) : sent;
}

status_t SocketReference::callOneWay(const Header& header, const Parcel& data) {
    if (data.dataSize() > kLargestOneWay) {
        return refuseAsTooLarge("one-way", header.code, data.dataSize(), kLargestOneWay);
    }
    Deadline deadline;
    Attachments attachments;
    status_t status =
        mContext.translator.exportBinders(data, &attachments, deadline, {{}, mLeadsToManager});
    if (status == OK) {
        status = retryUntil(deadline, [&](PollTarget& target) {
            return mMain.trySend(header, data, attachments, target);
        });
    }
    if (status == DEAD_OBJECT) {
        status = mControl.whyClosed(deadline);
        if (status != DEAD_OBJECT) {
            logLimited(
                "a connection has been closed, here or by the process that it leads to: a one-way "
                "call fails, and those before it may be lost");
        }
    }
    return status;
}

status_t SocketReference::callOneWayWithinBudget(Header header, const Parcel& data) {
    if (!mBudget->valid() || data.dataSize() > kLargestOneWay) {
        return callOneWay(header, data);
    }
    if (!mBudget->take(data.dataSize())) {
        return hasEnded() ? DEAD_OBJECT : FAILED_TRANSACTION;
    }
    header.options = kCounted;
    const status_t status = callOneWay(header, data);
    if (status != OK) {
        mBudget->giveBack(data.dataSize());
    }
    return status;
}

status_t SocketReference::receiveReply(const Fd& socket, uint8_t* room, Parcel* reply,
                                       bool* broken) {
    reply->freeData();
    Envelope envelope;
    const Received received =
        receiveWithBinders(mContext.translator, socket, room, *reply, envelope);
    if (received == Received::Message) {
        mMain.noteDone(envelope.header().code);
        const status_t status = envelope.header().status;
        if (status != OK) {
            reply->freeData();
        }
        return status;
    }
    reply->freeData();
    if (received == Received::OutOfDescriptors || received == Received::OutOfMemory) {
        const bool memory = received == Received::OutOfMemory;
        logLimited("out of %s: the reply to a call is lost",
                   memory ? "memory" : "file descriptors");
        mMain.noteDone(envelope.header().code);
        return memory ? NO_MEMORY : FAILED_TRANSACTION;
    }
    *broken = true;
    if (received == Received::HungUp) {
        Deadline deadline(kEndTimeoutMs);  // its process may be dying, one socket after another
        return mControl.whyClosed(deadline);
    }
    // Not closed here: other threads may be sending on it.
    (void)shutdown(socket.get(), SHUT_RDWR);
    if (received == Received::Nothing) {
        logLimited("the kernel has no memory for a reply: its connection is closed");
        return NO_MEMORY;
    }
    logLimited("a reply that makes no sense: its connection is closed");
    return FAILED_TRANSACTION;
}

bool SocketReference::hasEnded() const {
    return mControl.hasEnded();
}

Fd SocketReference::share(const PeerIdentity& holder, Deadline& deadline) {
    Fd control;
    status_t last = OK;  // retryUntil gives another status when the time is up
    const auto attempt = [&](PollTarget& target) {
        return last = mControl.open(Role::Control, holder, &control, target);
    };
    PollTarget target;
    status_t status = attempt(target);
    if (status == WOULD_BLOCK && !mDoesNotListen) {
        const ThreadPool::BlockedScope blocked = mContext.pool.blockOnReply();
        status = blocked.granted() ? retryUntil(deadline, attempt) : status;
    }
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
        if (!mContext.reactor.add(mWatch, mControl.fd())) {
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
        mContext.reactor.remove(*watch);
    }
}

}  // namespace android::transport
