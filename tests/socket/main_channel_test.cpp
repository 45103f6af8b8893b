// SPDX-License-Identifier: Apache-2.0
// The holder's side of a reference, without a process at the other end of it.
#include "socket/MainChannel.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <vector>

#include "socket/IdleSockets.h"

namespace {

using android::DEAD_OBJECT;
using android::OK;
using android::Parcel;
using android::status_t;
using android::WOULD_BLOCK;
using namespace android::transport;

TEST(AFlowWindow, LetsATwoWayCallGoBehindFewAndSmallOneWayCalls) {
    FlowWindow window;
    EXPECT_TRUE(window.mayGoBehind());
    for (size_t i = 0; i < kMaxAhead; ++i) {
        window.noteSent(100);
        EXPECT_TRUE(window.mayGoBehind());
    }
    window.noteSent(0);
    EXPECT_FALSE(window.mayGoBehind()) << "one more than may be ahead";
    window.noteDone(1);
    EXPECT_TRUE(window.mayGoBehind());
}

TEST(AFlowWindow, LetsNothingGoBehindALargeOneThatIsNotDone) {
    FlowWindow window;
    window.noteSent(kMaxBytesOfOneAhead);
    EXPECT_TRUE(window.mayGoBehind());
    window.noteSent(kMaxBytesOfOneAhead + 1);
    EXPECT_FALSE(window.mayGoBehind());
    window.noteSent(4);
    window.noteDone(1);
    EXPECT_FALSE(window.mayGoBehind());
    window.noteDone(2);
    EXPECT_TRUE(window.mayGoBehind()) << "the large one is done";
}

TEST(AFlowWindow, TakesRepliesInAnyOrder) {
    FlowWindow window;
    for (int i = 0; i < 3; ++i) {
        window.noteSent(8);
    }
    window.noteDone(3);
    EXPECT_TRUE(window.allDone());
    window.noteDone(2);
    EXPECT_TRUE(window.allDone()) << "an older reply that is read later";
}

// What a node's process has been sent through a control socket, and what came over it since.
class AMainChannel : public testing::Test {
protected:
    static constexpr Header kOneWayCall = {0, Kind::OneWay, 1, 0, 1, 0, 0, 0};
    static constexpr Header kRequest = {0, Kind::Request, 2, 0, 0, 0, 0, 0};

    status_t send(MainChannel& channel, const Header& header, size_t size = 4) {
        Parcel data;
        EXPECT_EQ(OK, data.setDataSize(size));
        mTarget = {};
        return channel.trySend(header, data, {}, mTarget);
    }

    /// The end that a node's process serves; invalid when it has not been sent another one.
    Fd adopted() const {
        Parcel none;
        Envelope envelope;
        const bool got = receiveMessage(mOwner, false, none, envelope) == Received::Message &&
                         envelope.header().kind == Kind::Adopt &&
                         envelope.header().code == static_cast<uint32_t>(Role::Calls);
        return got ? envelope.takeFd(0) : Fd();
    }

    /// The code of the next call on a served end; 0 without one.
    static uint32_t nextCall(const Fd& served) {
        Parcel data;
        Envelope envelope;
        return receiveMessage(served, false, data, envelope) == Received::Message
                   ? envelope.header().code
                   : 0;
    }

    SocketPair mPair = makeSocketPair();
    const Fd mOwner = std::move(mPair.served);
    const ControlSocket mControl{std::move(mPair.held)};
    PollTarget mTarget;
};

TEST_F(AMainChannel, IsOpenedByItsFirstCallAndKeepsTheOrder) {
    MainChannel channel(mControl, nullptr);
    EXPECT_FALSE(adopted().valid());
    EXPECT_EQ(OK, send(channel, kOneWayCall));
    const Fd served = adopted();
    ASSERT_TRUE(served.valid());
    ASSERT_TRUE(channel.tryTake());
    EXPECT_EQ(OK, send(channel, kRequest));
    EXPECT_FALSE(adopted().valid()) << "one socket carries both";
    EXPECT_EQ(1U, nextCall(served));
    EXPECT_EQ(2U, nextCall(served));
}

TEST_F(AMainChannel, HasOnePlaceForATwoWayCall) {
    MainChannel channel(mControl, nullptr);
    EXPECT_TRUE(channel.tryTake());
    EXPECT_FALSE(channel.tryTake());
    channel.release();
    EXPECT_TRUE(channel.tryTake());
}

TEST_F(AMainChannel, SendsATwoWayCallElsewhereWhileMuchIsAhead) {
    MainChannel channel(mControl, nullptr);
    for (size_t i = 0; i <= kMaxAhead; ++i) {
        ASSERT_EQ(OK, send(channel, kOneWayCall));
    }
    EXPECT_EQ(WOULD_BLOCK, send(channel, kRequest));
    EXPECT_EQ(OK, send(channel, kOneWayCall)) << "those are limited by the socket alone";
    channel.noteDone(kMaxAhead);
    EXPECT_EQ(OK, send(channel, kRequest));
}

TEST_F(AMainChannel, NamesWhatItWaitsForWhenTheSocketIsFull) {
    MainChannel channel(mControl, nullptr);
    status_t status = OK;
    for (int i = 0; i < 100000 && status == OK; ++i) {
        status = send(channel, kOneWayCall, 4096);
    }
    EXPECT_EQ(WOULD_BLOCK, status);
    EXPECT_EQ(POLLOUT, mTarget.events);
    EXPECT_EQ(channel.socket().get(), mTarget.fd);
}

TEST_F(AMainChannel, WaitsUntilItsPredecessorIsDrained) {
    DrainingSockets draining;
    SocketPair old = makeSocketPair();
    const NodeId id = {{1, 2}};
    draining.add(id, std::move(old.held));
    EXPECT_EQ(nullptr, draining.find({{1, 3}}));
    const auto predecessor = draining.find(id);
    ASSERT_NE(nullptr, predecessor);
    MainChannel channel(mControl, predecessor);
    EXPECT_EQ(WOULD_BLOCK, send(channel, kOneWayCall));
    EXPECT_EQ(predecessor->socket.get(), mTarget.fd);
    old.served.reset();  // the owner has read it to the end
    EXPECT_EQ(OK, send(channel, kOneWayCall));
    EXPECT_EQ(nullptr, draining.find(id));
}

TEST(DrainingSocketsOfAProcess, AreGivenUpOldestFirstWhenThereAreTooMany) {
    DrainingSockets draining;
    std::vector<Fd> owners;
    for (uint64_t i = 0; i <= DrainingSockets::kMax; ++i) {
        SocketPair pair = makeSocketPair();
        owners.push_back(std::move(pair.served));
        draining.add({{i, i}}, std::move(pair.held));
    }
    EXPECT_EQ(nullptr, draining.find({{0, 0}}));
    EXPECT_NE(nullptr, draining.find({{1, 1}}));
}

TEST_F(AMainChannel, OpensAnotherSocketForOneWayCallsWhenTheOwnerHasClosedIt) {
    MainChannel channel(mControl, nullptr);
    ASSERT_EQ(OK, send(channel, kOneWayCall));
    adopted().reset();
    EXPECT_EQ(DEAD_OBJECT, send(channel, kOneWayCall)) << "those before it may be lost";
    EXPECT_EQ(OK, send(channel, kOneWayCall));
    const Fd second = adopted();
    ASSERT_TRUE(second.valid());
    EXPECT_EQ(1U, nextCall(second));
    EXPECT_EQ(DEAD_OBJECT, send(channel, kRequest)) << "two-way calls stay away from it";
}

TEST_F(AMainChannel, LeavesASocketToBeDrainedWhenOneWayCallsMayBeInIt) {
    MainChannel channel(mControl, nullptr);
    EXPECT_FALSE(channel.takeUndrained().valid());
    ASSERT_EQ(OK, send(channel, kOneWayCall));
    channel.noteDone(1);
    EXPECT_FALSE(channel.takeUndrained().valid());
    ASSERT_EQ(OK, send(channel, kOneWayCall));
    EXPECT_TRUE(channel.takeUndrained().valid());
}

TEST_F(AMainChannel, IsDeadWhenTheNodesProcessIs) {
    SocketPair pair = makeSocketPair();
    const ControlSocket control(std::move(pair.held));
    pair.served.reset();
    MainChannel channel(control, nullptr);
    EXPECT_EQ(DEAD_OBJECT, send(channel, kOneWayCall));
    Deadline deadline;
    EXPECT_EQ(DEAD_OBJECT, control.whyClosed(deadline));
}

TEST(IdleSocketsOfAReference, AreTakenLastInFirstOut) {
    IdleSockets idle;
    EXPECT_FALSE(idle.take().valid());
    SocketPair pair = makeSocketPair();
    const int first = pair.served.get();
    const int second = pair.held.get();
    idle.giveBack(std::move(pair.served));
    idle.giveBack(std::move(pair.held));
    EXPECT_EQ(second, idle.take().get());
    EXPECT_EQ(first, idle.take().get());
}

TEST(IdleSocketsOfAReference, AreClosedWhenThereAreEnough) {
    IdleSockets idle;
    for (size_t i = 0; i < IdleSockets::kMax; ++i) {
        idle.giveBack(std::move(makeSocketPair().held));
    }
    SocketPair pair = makeSocketPair();
    idle.giveBack(std::move(pair.held));
    EXPECT_TRUE(hasHungUp(pair.served));
}

}  // namespace
