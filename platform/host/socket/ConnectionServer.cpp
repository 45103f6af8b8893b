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

ConnectionServer::ConnectionServer(std::shared_ptr<CallChannel> end)
    : mEnd(std::move(end)),
      mMessage(std::make_unique<Incoming>()),
      mQueue(exportedNode(*mEnd->node()).oneWayQueue),
      mWatched(stallMonitor().enter(mEnd, mSleeps)) {}

ConnectionServer::~ConnectionServer() {
    stallMonitor().leave(mSleeps);
    if (mStaying) {
        threadPool().endStay();
    }
}

void ConnectionServer::run() {
    After after = After::ReadOn;
    while (after == After::ReadOn) {
        after = handle(receive());
        if (after == After::ReadOn && !mayStay()) {
            reactor().rearm(*mEnd);
            after = After::Left;
        }
    }
}

Received ConnectionServer::receive() {
    const uint32_t sleep = mStaying ? mSleeps.load(std::memory_order_relaxed) + 1 : 0;
    mSleeps.store(sleep, std::memory_order_relaxed);
    const Received received =
        receiveMessage(mEnd->socket(), mStaying, mMessage->parcel, mMessage->envelope);
    mSleeps.store(sleep + (sleep & 1U), std::memory_order_relaxed);
    return received;
}

bool ConnectionServer::mayStay() {
    if (mStaying) {
        reactor().pause(*mEnd);
        return !threadPool().nobodyWaits();
    }
    mStaying = mWatched && threadPool().tryStay();
    return mStaying;
}

ConnectionServer::After ConnectionServer::handle(Received received) {
    if (received == Received::Message) {
        return mEnd->accepts(mMessage->envelope) ? serveOne() : After::Left;
    }
    if (received == Received::OutOfDescriptors) {
        return mEnd->accepts(mMessage->envelope) ? failLost() : After::Left;
    }
    if (mEnd->survives(received, mMessage->envelope)) {
        reactor().rearm(*mEnd);
    }
    return After::Left;
}

ConnectionServer::After ConnectionServer::serveOne() {
    switch (mMessage->envelope.header().kind) {
        case Kind::Request:
            return mEnd->overtaking() == nullptr ? serveTwoWay() : overtake();
        case Kind::OneWay:
            return enterOneWay();
        case Kind::Reply:
        case Kind::Adopt:
            break;
    }
    return refuse("a message out of place");
}

ConnectionServer::After ConnectionServer::refuse(const char* what) {
    mEnd->refuse(what, mMessage->envelope);
    return After::Left;
}

ConnectionServer::After ConnectionServer::serveTwoWay() {
    const uint32_t call = mEnd->beginCall();
    const Served served =
        serveRequest(*mEnd->node(), *mMessage, mEnd->socket(), mEnd->oneWaysDone());
    const bool ours = mEnd->finishCall(call);
    if (served == Served::Badly) {
        return refuse("a descriptor that is no reference");
    }
    if (served == Served::InVain) {
        mEnd->close();
        return After::Left;
    }
    return ours ? After::ReadOn : After::Left;
}

ConnectionServer::After ConnectionServer::overtake() {
    Overtaking& overtaking = *mEnd->overtaking();
    const uint32_t before = overtaking.arrived();
    const After after = serveTwoWay();
    overtaking.overtake(before);
    return after;
}

// A call whose binders or bytes could not be taken, for want of descriptors.
ConnectionServer::After ConnectionServer::failLost() {
    const Envelope& envelope = mMessage->envelope;
    logLimited("out of file descriptors: call %u of process %d fails", envelope.header().code,
               static_cast<int>(envelope.senderPid()));
    switch (envelope.header().kind) {
        case Kind::Request: {
            const Served served = failRequest(mEnd->socket(), mEnd->oneWaysDone());
            if (served == Served::InVain) {
                mEnd->close();
            }
            return served == Served::Well ? After::ReadOn : After::Left;
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
    if (Overtaking* overtaking = mEnd->overtaking()) {
        mMessage->arrival = overtaking->arrive();
    }
    switch (mQueue.enter(mEnd, mMessage)) {
        case OneWayQueue::Place::Mine: {
            const uint32_t call = mEnd->beginCall();
            const bool sound = serveQueue();
            return mEnd->finishCall(call) && sound ? After::ReadOn : After::Left;
        }
        case OneWayQueue::Place::Waiting:
            mMessage = std::make_unique<Incoming>();
            return After::ReadOn;
        case OneWayQueue::Place::Full:
            break;
        case OneWayQueue::Place::Refused:
            return refuse("more that waits than one process may have");
    }
    return After::Left;
}

bool ConnectionServer::serveQueue() {
    const bool sound = serveOneWayFrom(*mEnd, *mMessage);
    for (OneWayQueue::Next next = mQueue.next(); next.message != nullptr; next = mQueue.next()) {
        if (next.readOn) {
            reactor().rearm(*next.end);
        }
        (void)serveOneWayFrom(*next.end, *next.message);
    }
    return sound;
}

bool ConnectionServer::serveOneWayFrom(CallChannel& end, Incoming& message) {
    if (Overtaking* overtaking = end.overtaking()) {
        overtaking->holdBack(message.arrival, message.envelope.header().code);
    }
    const bool lost = std::exchange(message.lost, false);
    const bool sound = lost || serveOneWay(*end.node(), message) != Served::Badly;
    if (!sound) {
        end.refuse("a descriptor that is no reference", message.envelope);
    }
    message.charge.reset();
    if (isCounted(message.envelope.header())) {
        OneWayBudget::own().giveBack(message.envelope.header().payloadSize);
    }
    end.oneWaysDone().fetch_add(1, std::memory_order_relaxed);
    return sound;
}

}  // namespace android::transport
