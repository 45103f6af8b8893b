// SPDX-License-Identifier: Apache-2.0
#include "socket/ConnectionServer.h"

#include <utility>

#include "socket/Dispatch.h"
#include "socket/ExportTable.h"
#include "socket/OneWayBudget.h"
#include "socket/StallMonitor.h"
#include "socket/ThreadPool.h"
#include "support/Log.h"

namespace android::transport {

namespace {

class ServedCallChannel final : public CallChannel,
                                public std::enable_shared_from_this<ServedCallChannel> {
public:
    using CallChannel::CallChannel;
    void onReady() override { ConnectionServer(shared_from_this()).run(); }
};

}  // namespace

std::shared_ptr<CallChannel> makeCallChannel(const Context& context, Fd socket,
                                             const sp<BBinder>& node, QuotaCharge charge,
                                             std::shared_ptr<CallChannel::Shared> shared) {
    return std::make_shared<ServedCallChannel>(context, std::move(socket), node, std::move(charge),
                                               std::move(shared));
}

ConnectionServer::ConnectionServer(std::shared_ptr<CallChannel> channel)
    : mChannel(std::move(channel)),
      mContext(mChannel->context()),
      mMessage(std::make_unique<Incoming>()),
      mQueue(mContext.exports.of(*mChannel->node()).oneWayQueue),
      mWatched(mContext.stallMonitor.enter(mChannel)) {}

ConnectionServer::~ConnectionServer() {
    mContext.stallMonitor.leave(mChannel);
    if (mStaying) {
        mContext.pool.endStay();
    }
}

void ConnectionServer::run() {
    After after = After::ReadOn;
    while (after == After::ReadOn) {
        after = handle(receive());
        if (after == After::ReadOn && !mayStay()) {
            mContext.reactor.rearm(*mChannel);
            after = After::Left;
        }
    }
}

Received ConnectionServer::receive() {
    return receiveMessage(mChannel->socket(), mStaying, mMessage->parcel, mMessage->envelope);
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
    if (received == Received::Message) {
        return mChannel->accepts(mMessage->envelope) ? serveOne() : After::Left;
    }
    if (received == Received::OutOfDescriptors) {
        return mChannel->accepts(mMessage->envelope) ? failLost() : After::Left;
    }
    if (mChannel->survives(received, mMessage->envelope)) {
        mContext.reactor.rearm(*mChannel);
    }
    return After::Left;
}

ConnectionServer::After ConnectionServer::serveOne() {
    switch (mMessage->envelope.header().kind) {
        case Kind::Request:
            return mChannel->overtaking() == nullptr ? serveTwoWay() : overtake();
        case Kind::OneWay:
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
    const uint32_t call = mChannel->beginCall();
    const Served served = serveRequest(mContext.translator, *mChannel->node(), *mMessage,
                                       mChannel->socket(), mChannel->oneWaysDone());
    const bool ours = mChannel->finishCall(call);
    if (served == Served::Malformed) {
        return refuse("a descriptor that is no reference");
    }
    if (served == Served::Undelivered) {
        mChannel->close();
        return After::Left;
    }
    return ours ? After::ReadOn : After::Left;
}

ConnectionServer::After ConnectionServer::overtake() {
    Overtaking& overtaking = *mChannel->overtaking();
    const uint32_t before = overtaking.arrived();
    const After after = serveTwoWay();
    overtaking.overtake(before);
    return after;
}

// A call whose binders or bytes could not be received, for want of descriptors.
ConnectionServer::After ConnectionServer::failLost() {
    const Envelope& envelope = mMessage->envelope;
    logLimited("out of file descriptors: call %u of process %d fails", envelope.header().code,
               static_cast<int>(envelope.senderPid()));
    switch (envelope.header().kind) {
        case Kind::Request: {
            const Served served = failRequest(mChannel->socket(), mChannel->oneWaysDone());
            if (served == Served::Undelivered) {
                mChannel->close();
            }
            return served == Served::Done ? After::ReadOn : After::Left;
        }
        case Kind::OneWay:
            mMessage->lost = true;
            return enterOneWay();
        case Kind::Reply:
        case Kind::Adopt:
            break;
    }
    return refuse("a message out of place");
}

ConnectionServer::After ConnectionServer::enterOneWay() {
    if (Overtaking* overtaking = mChannel->overtaking()) {
        mMessage->arrival = overtaking->arrive();
    }
    switch (mQueue.enter(mContext.quotas, mChannel, mMessage)) {
        case OneWayQueue::Entry::ServeNow: {
            const uint32_t call = mChannel->beginCall();
            const bool sound = serveQueue();
            return mChannel->finishCall(call) && sound ? After::ReadOn : After::Left;
        }
        case OneWayQueue::Entry::Queued:
            mMessage = std::make_unique<Incoming>();
            return After::ReadOn;
        case OneWayQueue::Entry::Full:
            break;
        case OneWayQueue::Entry::Refused:
            return refuse("more that waits than one process may have");
    }
    return After::Left;
}

bool ConnectionServer::serveQueue() {
    const bool sound = serveOneWayFrom(*mChannel, *mMessage);
    for (OneWayQueue::Next next = mQueue.next(); next.message != nullptr; next = mQueue.next()) {
        if (next.readOn) {
            mContext.reactor.rearm(*next.channel);
        }
        (void)serveOneWayFrom(*next.channel, *next.message);
    }
    return sound;
}

bool ConnectionServer::serveOneWayFrom(CallChannel& channel, Incoming& message) {
    if (Overtaking* overtaking = channel.overtaking()) {
        overtaking->holdBack(message.arrival, message.envelope.header().code);
    }
    const bool lost = std::exchange(message.lost, false);
    const bool sound =
        lost || serveOneWay(mContext.translator, *channel.node(), message) != Served::Malformed;
    if (!sound) {
        channel.refuse("a descriptor that is no reference", message.envelope);
    }
    message.charge.reset();
    if (isCounted(message.envelope.header())) {
        mContext.budget->giveBack(message.envelope.header().payloadSize);
    }
    channel.oneWaysDone().fetch_add(1, std::memory_order_relaxed);
    return sound;
}

}  // namespace android::transport
