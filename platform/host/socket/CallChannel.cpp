// SPDX-License-Identifier: Apache-2.0
#include "socket/CallChannel.h"

#include <new>
#include <utility>

#include "binder/internal/ServeCall.h"
#include "socket/BinderTranslator.h"
#include "socket/Deadline.h"
#include "socket/ExportTable.h"
#include "socket/OneWayBudget.h"
#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// What one thread does at one channel, from the event that woke it until it goes back to the
// reactor.
class ConnectionServer {
public:
    explicit ConnectionServer(std::shared_ptr<CallChannel> channel)
        : mChannel(std::move(channel)),
          mContext(mChannel->context()),
          mMessage(std::make_unique<Incoming>()),
          mQueue(mContext.exports.of(*mChannel->node()).oneWayQueue),
          mWatched(mContext.stallMonitor.enter(mChannel, mChannel->progress())) {}
    ~ConnectionServer();
    ConnectionServer(const ConnectionServer&) = delete;
    ConnectionServer& operator=(const ConnectionServer&) = delete;

    void run();

private:
    enum class After {
        ReadOn,  ///< this thread reads the channel on
        Left,    ///< another thread does, or it has been closed
    };
    After handle(Received received);
    After serveTwoWay();
    [[gnu::cold]] After overtake(Overtaking& overtaking);
    status_t carryOut(Parcel* reply, Attachments* attachments);
    bool answer(status_t status, const Parcel& reply, const Attachments& attachments);
    After enterOneWay();
    /// False when this socket has been closed for what came over it.
    bool serveQueue();
    bool serveOneWay(CallChannel& channel, Incoming& message);
    After drop();
    bool importBinders(Incoming& message);
    bool mayStay();
    After refuse(const char* what);

    const std::shared_ptr<CallChannel> mChannel;
    const Context& mContext;
    std::unique_ptr<Incoming> mMessage;
    OneWayQueue& mQueue;
    const bool mWatched;
    bool mStaying = false;
};

void lose(Incoming& message, status_t status) {
    message.parcel.freeData();
    message.lost = status;
    logLimited("out of %s: call %u of process %d fails",
               status == NO_MEMORY ? "memory" : "file descriptors", message.envelope.header().code,
               static_cast<int>(message.envelope.senderPid()));
}

status_t call(BBinder& node, Incoming& incoming, pid_t caller, Parcel* reply) {
    const Header& header = incoming.envelope.header();
    return serveCall(node, {caller, incoming.envelope.senderUid()}, header.code, incoming.parcel,
                     reply, header.flags);
}

ConnectionServer::~ConnectionServer() {
    mContext.stallMonitor.leave(mChannel->progress());
    if (mStaying) {
        mContext.pool.endStay();
    }
}

void ConnectionServer::run() {
    while (handle(receiveMessage(mChannel->socket(), mStaying, mMessage->parcel,
                                 mMessage->envelope)) == After::ReadOn) {
        if (!mayStay()) {
            mContext.reactor.rearm(*mChannel);
            return;
        }
    }
}

bool ConnectionServer::mayStay() {
    if (mStaying) {
        mContext.reactor.pause(*mChannel);
        return !mContext.pool.nobodyWaits();
    }
    mStaying = mWatched && mContext.pool.tryStay();
    return mStaying;
}

ConnectionServer::After ConnectionServer::handle(Received received) {
    const Envelope& envelope = mMessage->envelope;
    switch (mChannel->check(received, envelope)) {
        case ServerChannel::Next::Serve:
            break;
        case ServerChannel::Next::Wait:
            mContext.reactor.rearm(*mChannel);
            return After::Left;
        case ServerChannel::Next::Closed:
            return After::Left;
    }
    mMessage->lost = OK;
    if (received != Received::Message) {
        lose(*mMessage, received == Received::OutOfMemory ? NO_MEMORY : FAILED_TRANSACTION);
    }
    Overtaking* const overtaking = mChannel->shared().overtaking.get();
    switch (envelope.header().kind) {
        case Kind::Request:
            return overtaking == nullptr ? serveTwoWay() : overtake(*overtaking);
        case Kind::OneWay:
            if (overtaking != nullptr) {
                mMessage->arrival = overtaking->arrive();
            }
            return enterOneWay();
        case Kind::Reply:
        case Kind::Adopt:
            break;
    }
    return refuse("a message out of place");
}

ConnectionServer::After ConnectionServer::refuse(const char* what) {
    mChannel->refuse(what, mMessage->envelope);
    return After::Left;
}

ConnectionServer::After ConnectionServer::serveTwoWay() {
    const uint32_t number = mChannel->progress().begin();
    if (!importBinders(*mMessage)) {
        (void)mChannel->progress().finish(number);
        return refuse("a descriptor that is no reference");
    }
    Parcel reply;
    Attachments attachments;
    const status_t status = carryOut(&reply, &attachments);
    if (status != OK) {
        reply.freeData();
        attachments = {};
    }
    const bool answered = answer(status, reply, attachments);
    const bool ours = mChannel->progress().finish(number);
    if (!answered) {
        mChannel->close();
        return After::Left;
    }
    return ours ? After::ReadOn : After::Left;
}

ConnectionServer::After ConnectionServer::overtake(Overtaking& overtaking) {
    const uint32_t before = overtaking.arrived();
    const After after = serveTwoWay();
    overtaking.overtake(before);
    return after;
}

// In the name of its sender. OK when there is a reply to be sent.
status_t ConnectionServer::carryOut(Parcel* reply, Attachments* attachments) {
    if (mMessage->lost != OK) {
        return mMessage->lost;
    }
    const pid_t caller = mMessage->envelope.senderPid();
    status_t status = call(*mChannel->node(), *mMessage, caller, reply);
    if (status == OK) {
        status = reply->errorCheck();
    }
    if (status == OK && reply->dataSize() > largestPayload(Kind::Reply)) {
        status = FAILED_TRANSACTION;
    }
    if (status != OK) {
        return status;
    }
    Deadline deadline;
    try {
        return mContext.translator.exportBinders(*reply, attachments, deadline,
                                                 {{caller, mMessage->envelope.senderUid()}, false});
    } catch (const std::bad_alloc&) {
        return NO_MEMORY;
    }
}

// Without waiting: a caller has read its last reply when it makes the next call on a socket, so
// there is room. A client that does not read its replies must not block the pool.
bool ConnectionServer::answer(status_t status, const Parcel& reply,
                              const Attachments& attachments) {
    const Header header = {0, Kind::Reply, mChannel->shared().oneWaysDone, status, 0, 0, 0, 0};
    const status_t sent = sendMessage(mChannel->socket(), header, reply, attachments);
    if (sent == FAILED_TRANSACTION && status == OK) {
        // Perhaps there are no descriptors for what goes with it: the caller hears that at least.
        return answer(FAILED_TRANSACTION, Parcel(), Attachments());
    }
    return sent == OK;
}

// Done with, without a call.
ConnectionServer::After ConnectionServer::drop() {
    lose(*mMessage, NO_MEMORY);
    (void)serveOneWay(*mChannel, *mMessage);
    return After::ReadOn;
}

ConnectionServer::After ConnectionServer::enterOneWay() {
    switch (mQueue.enter(mContext.quotas, mChannel, mMessage)) {
        case OneWayQueue::Entry::ServeNow: {
            const uint32_t number = mChannel->progress().begin();
            const bool sound = serveQueue();
            return mChannel->progress().finish(number) && sound ? After::ReadOn : After::Left;
        }
        case OneWayQueue::Entry::Queued:
            mMessage = std::make_unique<Incoming>();
            return After::ReadOn;
        case OneWayQueue::Entry::Full:
            return After::Left;
        case OneWayQueue::Entry::OutOfMemory:
            return drop();
        case OneWayQueue::Entry::Refused:
            break;
    }
    return refuse("more that waits than one process may have");
}

bool ConnectionServer::serveQueue() {
    const bool sound = serveOneWay(*mChannel, *mMessage);
    for (OneWayQueue::Next next = mQueue.next(); next.message != nullptr; next = mQueue.next()) {
        if (next.readOn) {
            mContext.reactor.rearm(*next.channel);
        }
        (void)serveOneWay(*next.channel, *next.message);
    }
    return sound;
}

bool ConnectionServer::serveOneWay(CallChannel& channel, Incoming& message) {
    const Envelope& envelope = message.envelope;
    if (Overtaking* overtaking = channel.shared().overtaking.get()) {
        overtaking->holdBack(message.arrival, envelope.header().code);
    }
    const bool sound = importBinders(message);
    if (!sound) {
        channel.refuse("a descriptor that is no reference", envelope);
    } else if (message.lost == OK) {
        Parcel unread;
        // Nobody waits for its status.
        (void)call(*channel.node(), message, gManners.ofDriver ? 0 : envelope.senderPid(), &unread);
    }
    message.charge.reset();
    if (isCounted(envelope.header())) {
        mContext.budget->giveBack(envelope.header().payloadSize);
    }
    channel.shared().oneWaysDone.fetch_add(1, std::memory_order_relaxed);
    return sound;
}

bool ConnectionServer::importBinders(Incoming& message) {
    try {
        const bool sound = message.lost != OK || message.envelope.header().objectCount == 0 ||
                           mContext.translator.importBinders(message.envelope, message.parcel);
        if (!sound) {
            message.parcel.freeData();  // of the binders that were
        }
        return sound;
    } catch (const std::bad_alloc&) {
        lose(message, NO_MEMORY);
        return true;
    }
}

}  // namespace

void CallChannel::onReady() {
    ConnectionServer(shared_from_this()).run();
}

}  // namespace android::transport
