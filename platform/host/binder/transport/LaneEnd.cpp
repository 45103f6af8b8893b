// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/LaneEnd.h"

#include "binder/transport/Dispatch.h"
#include "binder/transport/LocalNodes.h"
#include "binder/transport/ThreadPool.h"

namespace android::transport {

namespace {

// A busy lane is left for another one after so many calls.
constexpr int kCallsInOneTurn = 16;

enum class Left { Empty, More, Gone };

// One thread's stretch of work on the lanes of one node: it goes on, from lane to lane, for as long
// as it has the turn there.
class Shift {
public:
    Shift(std::shared_ptr<LaneEnd> lane, Turns& turns)
        : mTurns(turns), mTurn{std::move(lane), {}} {}
    ~Shift() {
        if (mStaying) {
            threadPool().endStay();
        }
    }
    Shift(const Shift&) = delete;
    Shift& operator=(const Shift&) = delete;

    void run() {
        bool mine = mTurns.enter(mTurn);
        while (mine) {
            const Left left = serveSome();
            std::optional<Turn> next = mTurns.leave();
            if (next.has_value()) {
                if (left != Left::Gone) {
                    reactor().rearm(*mTurn.lane);
                }
                mTurn = std::move(*next);
            } else {
                mine = hasMore(left) && mTurns.enter(mTurn);
            }
        }
    }

private:
    Incoming& buffer() {
        if (mBuffer == nullptr) {
            mBuffer = std::make_unique<Incoming>();
        }
        return *mBuffer;
    }

    Received receive(bool wait) {
        return receiveMessage(mTurn.lane->socket(), wait, buffer().parcel, buffer().envelope);
    }

    Left serveSome() {
        if (mTurn.message != nullptr) {
            mBuffer = std::move(mTurn.message);
            if (!mTurn.lane->serveOne(*mBuffer)) {
                return Left::Gone;
            }
        }
        for (int served = 0; served < kCallsInOneTurn; ++served) {
            const Received received = receive(false);
            if (received != Received::Message) {
                return mTurn.lane->survives(received, buffer().envelope) ? Left::Empty : Left::Gone;
            }
            if (!mTurn.lane->serveOne(*mBuffer)) {
                return Left::Gone;
            }
        }
        return Left::More;
    }

    // No other lane waits. False: this one has been given back to the reactor, or let go.
    bool hasMore(Left left) {
        if (left != Left::Empty) {
            return left == Left::More;
        }
        if (mStaying ? threadPool().nobodyWaits() : !threadPool().tryStay()) {
            reactor().rearm(*mTurn.lane);
            return false;
        }
        mStaying = true;
        const Received received = receive(true);
        if (received == Received::Message) {
            mTurn.message = std::move(mBuffer);
            return true;
        }
        if (mTurn.lane->survives(received, buffer().envelope)) {
            reactor().rearm(*mTurn.lane);
        }
        return false;
    }

    Turns& mTurns;
    Turn mTurn;
    bool mStaying = false;
    std::unique_ptr<Incoming> mBuffer;
};

}  // namespace

void LaneEnd::onReady() {
    // The shift may end on another lane; the turns belong to the node.
    const sp<BBinder> held = node();
    Shift(shared_from_this(), recordOf(*held).oneWayTurns).run();
}

bool LaneEnd::serveOne(Incoming& incoming) {
    if (incoming.envelope.header().kind != Kind::OneWay) {
        refuse("a message out of place", incoming.envelope);
        return false;
    }
    if (serveOneWay(*node(), incoming) != Served::Well) {
        refuse("a descriptor that is no reference", incoming.envelope);
        return false;
    }
    return true;
}

}  // namespace android::transport
