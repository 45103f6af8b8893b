// SPDX-License-Identifier: Apache-2.0
// What the transport does when the kernel refuses it something, without a process that is starved.
#include "socket/Syscalls.h"

#include <binder/Binder.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <memory>

#include "socket/ControlSocket.h"
#include "socket/Listener.h"
#include "socket/Memfd.h"
#include "socket/SocketReference.h"
#include "socket/SocketRuntime.h"
#include "socket/StallMonitor.h"
#include "tests/support/TempFolder.h"

namespace {

using android::BBinder;
using android::FAILED_TRANSACTION;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using namespace android::transport;

// Faults are a plain function: what it answers stands here.
sys::Call gFailing;
int gError;
int gSpared;
int gTimes;

int failSome(sys::Call call) {
    return call == gFailing && gSpared-- <= 0 && gTimes-- > 0 ? gError : 0;
}

// Has a system call fail, so many times, while it lives, in which it has to be made as often. The
// first `spared` calls do not fail.
class Failing {
public:
    Failing(sys::Call call, int error, int times = 1, int spared = 0) {
        gFailing = call;
        gError = error;
        gSpared = spared;
        gTimes = times;
        sys::gFault = &failSome;
    }
    ~Failing() {
        sys::gFault = nullptr;
        EXPECT_LE(gTimes, 0) << "so many more calls were to fail, and were not made";
    }
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;
};

Parcel& withText(Parcel& parcel, size_t size) {
    EXPECT_EQ(OK, parcel.setDataSize(size));
    return parcel;
}

/// How often a call is made for which the kernel has no memory.
constexpr int kAttempts = 6;

constexpr Header kRequest = {0, Kind::Request, 7, 0, 0, 0, 0, 0};

class AMessageThat : public testing::Test {
protected:
    /// More than goes without a memfd.
    status_t sendLarge() const {
        Parcel large;
        return sendMessage(mPair.held, kRequest, withText(large, 200000), {});
    }

    Received receive(Parcel& parcel) { return receiveMessage(mPair.served, false, parcel, mGot); }

    const SocketPair mPair = makeSocketPair();
    Envelope mGot;
};

TEST_F(AMessageThat, IsInterruptedIsSentAndReceivedAllTheSame) {
    Parcel sent;
    Parcel received;
    {
        const Failing send(sys::Call::Send, EINTR, 3);
        EXPECT_EQ(OK, sendMessage(mPair.held, kRequest, withText(sent, 8), {}));
    }
    const Failing receiving(sys::Call::Receive, EINTR, 3);
    EXPECT_EQ(Received::Message, receive(received));
    EXPECT_EQ(8U, received.dataSize());
}

TEST_F(AMessageThat, AnswersIsInterruptedAndReceivedAllTheSame) {
    constexpr Header reply = {0, Kind::Reply, 7, 0, 0, 0, 0, 0};
    for (const size_t size : {size_t{8}, size_t{60000}, size_t{200000}}) {
        SCOPED_TRACE(size);
        Parcel sent;
        Parcel received;
        ASSERT_EQ(OK, sendMessage(mPair.held, reply, withText(sent, size), {}));
        const Failing receiving(sys::Call::Receive, EINTR, 3);
        EXPECT_EQ(Received::Message,
                  receiveReply(mPair.served, prepareToReceive(), received, mGot));
        EXPECT_EQ(size, received.dataSize());
        EXPECT_EQ(7U, mGot.header().code);
    }
}

TEST_F(AMessageThat, AnswersAndCannotFollowItsAnnouncementLeavesRoomForAnotherAnswer) {
    Parcel large;
    withText(large, 200000);
    {
        const Failing second(sys::Call::Send, ETOOMANYREFS, 1, 1);
        EXPECT_EQ(FAILED_TRANSACTION,
                  sendMessage(mPair.held, {0, Kind::Reply, 7, 0, 0, 0, 0, 0}, large, {}));
    }
    constexpr Header failed = {0, Kind::Reply, 7, FAILED_TRANSACTION, 0, 0, 0, 0};
    ASSERT_EQ(OK, sendMessage(mPair.held, failed, Parcel(), {}));
    Parcel received;
    ASSERT_EQ(Received::Message, receiveReply(mPair.served, prepareToReceive(), received, mGot));
    EXPECT_EQ(FAILED_TRANSACTION, mGot.header().status);
    EXPECT_EQ(0U, received.dataSize());
}

TEST_F(AMessageThat, TheKernelHasNoMemoryForFailsAlone) {
    Parcel sent;
    withText(sent, 8);
    {
        const Failing send(sys::Call::Send, ENOBUFS, kAttempts);
        EXPECT_EQ(FAILED_TRANSACTION, sendMessage(mPair.held, kRequest, sent, {}));
    }
    EXPECT_EQ(OK, sendMessage(mPair.held, kRequest, sent, {}));
}

TEST_F(AMessageThat, TheKernelHasNoMemoryForAtThisMomentIsSentAndReceivedAllTheSame) {
    Parcel sent;
    withText(sent, 8);
    {
        const Failing send(sys::Call::Send, ENOBUFS, kAttempts - 1);
        EXPECT_EQ(OK, sendMessage(mPair.held, kRequest, sent, {}));
    }
    const Failing receipt(sys::Call::Receive, ENOMEM, kAttempts - 1);
    Parcel received;
    EXPECT_EQ(Received::Message, receive(received));
}

TEST_F(AMessageThat, TheKernelHasNoMemoryForWaitsToBeReceived) {
    Parcel sent;
    ASSERT_EQ(OK, sendMessage(mPair.held, kRequest, withText(sent, 8), {}));
    Parcel received;
    {
        const Failing receipt(sys::Call::Receive, ENOMEM, kAttempts);
        EXPECT_EQ(Received::Nothing, receive(received)) << "not a hang-up";
    }
    EXPECT_EQ(Received::Message, receive(received));
}

TEST_F(AMessageThat, NeedsAMemfdFailsWithoutOne) {
    Parcel large;
    withText(large, 200000);
    const Failing memfd(sys::Call::Memfd, EMFILE);
    EXPECT_EQ(FAILED_TRANSACTION, sendMessage(mPair.held, kRequest, large, {}));
    Parcel received;
    EXPECT_EQ(Received::Nothing, receive(received)) << "nothing of it has been sent";
}

TEST_F(AMessageThat, IsWrittenInPiecesArrivesWhole) {
    Parcel large;
    for (int i = 0; i < 50000; ++i) {
        large.writeInt32(i);
    }
    {
        const Failing shortly(sys::Call::Write, sys::kShort, 100);
        ASSERT_EQ(OK, sendMessage(mPair.held, kRequest, large, {}));
    }
    Parcel received;
    ASSERT_EQ(Received::Message, receive(received));
    for (int i = 0; i < 50000; ++i) {
        ASSERT_EQ(i, received.readInt32());
    }
}

TEST_F(AMessageThat, FindsNoRoomInTheMemfdFails) {
    const Failing full(sys::Call::Write, ENOSPC);
    EXPECT_EQ(FAILED_TRANSACTION, sendLarge());
}

TEST_F(AMessageThat, LosesItsDescriptorsIsKnownByItsHeader) {
    ASSERT_EQ(OK, sendLarge());
    const Failing lost(sys::Call::ReceiveDescriptors, EMFILE);
    Parcel received;
    ASSERT_EQ(Received::OutOfDescriptors, receive(received));
    EXPECT_EQ(7U, mGot.header().code);
    EXPECT_EQ(0U, mGot.fdCount());
}

TEST_F(AMessageThat, TheKernelHasNoMemoryToReadFromItsMemfdIsKnownByItsHeader) {
    ASSERT_EQ(OK, sendLarge());
    const Failing read(sys::Call::Read, ENOMEM);
    Parcel received;
    ASSERT_EQ(Received::OutOfMemory, receive(received));
    EXPECT_EQ(7U, mGot.header().code);
    EXPECT_EQ(0U, mGot.fdCount());
    EXPECT_EQ(0U, received.dataSize());
}

TEST_F(AMessageThat, CannotBeReadFromItsMemfdIsMalformed) {
    ASSERT_EQ(OK, sendLarge());
    const Failing read(sys::Call::Read, EBADF);
    Parcel received;
    EXPECT_EQ(Received::Malformed, receive(received)) << "it was opened for writing alone";
}

TEST(AProcessWithoutDescriptors, OpensNoSocketAndGivesNoBinderAway) {
    SocketRuntime runtime;
    SocketPair pair = makeSocketPair();
    const ControlSocket control(std::move(pair.held));
    const Failing none(sys::Call::SocketPair, EMFILE, 2);
    PollTarget target;
    Fd socket;
    EXPECT_EQ(FAILED_TRANSACTION, control.open(Role::Calls, {}, &socket, target));
    const sp<BBinder> object = new BBinder();
    Parcel parcel;
    parcel.writeStrongBinder(object);
    Attachments attachments;
    Deadline deadline;
    EXPECT_EQ(FAILED_TRANSACTION, runtime.exportBinders(parcel, &attachments, deadline, {}));
    EXPECT_EQ(OK, runtime.exportBinders(parcel, &attachments, deadline, {}))
        << "there are some again";
    EXPECT_EQ(1U, attachments.fds.size());
}

// How long a reference waits for an owner who takes no socket, in at most `milliseconds`.
std::chrono::steady_clock::duration waitToShare(SocketReference& reference, int milliseconds) {
    const auto begin = std::chrono::steady_clock::now();
    Deadline deadline(milliseconds);
    EXPECT_FALSE(reference.share({}, deadline).valid());
    return std::chrono::steady_clock::now() - begin;
}

TEST(AProcessWithoutDescriptors, DoesNotTakeItForItsPeersFault) {
    SocketRuntime runtime;
    SocketPair pair = makeSocketPair();
    const Fd sameSocket(dup(pair.held.get()));
    SocketReference reference(runtime.context(), NodeId{{1, 2}}, std::move(pair.held), nullptr,
                              false, [](SocketReference&) {});
    {
        const Failing none(sys::Call::SocketPair, EMFILE);
        (void)waitToShare(reference, 0);
    }
    while (sendMessage(sameSocket, kRequest, Parcel(), {}) == OK) {
    }
    EXPECT_GE(waitToShare(reference, 50), std::chrono::milliseconds(50));
    EXPECT_LT(waitToShare(reference, 60000), std::chrono::seconds(30))
        << "the owner did not take the last one";
}

TEST(AManagerWithoutDescriptors, LetsAConnectionWaitUntilThereAreSome) {
    const voxtrel_test::TempFolder folder;
    const std::string path = folder.path("binder");
    SocketRuntime runtime;
    const auto listener = Listener::open(runtime.context(), path, new BBinder());
    ASSERT_NE(nullptr, listener);
    const Fd client = connectTo(path);
    ASSERT_TRUE(client.valid());
    {
        const Failing accept(sys::Call::Accept, EMFILE);
        listener->onReady();
    }
    EXPECT_FALSE(hasHungUp(client));
    EXPECT_TRUE(runtime.context().quotas.unusedSince().has_value()) << "it is not accepted yet";
    listener->onReady();
    EXPECT_FALSE(hasHungUp(client));
    EXPECT_FALSE(runtime.context().quotas.unusedSince().has_value());
}

TEST(AKernelThatWaitsForNoMoreSockets, KeepsABinderFromBeingGivenAway) {
    SocketRuntime runtime;
    const sp<BBinder> object = new BBinder();
    Parcel parcel;
    parcel.writeStrongBinder(object);
    Attachments attachments;
    Deadline deadline;
    {
        const Failing full(sys::Call::EpollAdd, ENOSPC);
        EXPECT_EQ(FAILED_TRANSACTION, runtime.exportBinders(parcel, &attachments, deadline, {}));
    }
    EXPECT_EQ(2, object->getStrongCount()) << "the parcel's and this one; nobody else holds it";
}

class Waiting final : public EventHandler {
public:
    using EventHandler::EventHandler;
    void onReady() override {}
};

TEST(AKernelThatWaitsForNoMoreSockets, ClosesOneThatWasPausedRatherThanLeaveItUnread) {
    Reactor reactor;
    SocketPair pair = makeSocketPair();
    auto handler = std::make_shared<Waiting>(std::move(pair.served));
    const std::weak_ptr<Waiting> kept = handler;
    reactor.addPaused(handler);
    {
        const Failing full(sys::Call::EpollAdd, ENOSPC);
        reactor.rearm(*handler);
    }
    EXPECT_TRUE(hasHungUp(pair.held));
    handler.reset();
    EXPECT_TRUE(kept.expired());
}

// A shortage at the moment in which a process first uses the runtime.
class ARuntimeThatBegan : public testing::Test {
protected:
    void beginWhile(sys::Call call, int error) {
        const Failing failing(call, error);
        mRuntime = std::make_unique<SocketRuntime>();
        const Entered entered(*this);
    }

    void expectToHandASlowCallsSocketOver() {
        Reactor& reactor = mRuntime->context().reactor;
        reactor.addPaused(mChannel);
        const Entered entered(*this);
        const uint32_t call = mProgress.begin();
        for (int look = 0; look < 2; ++look) {
            const auto timer = reactor.wait(10000);
            ASSERT_NE(nullptr, timer) << "nobody looks";
            timer->onReady();
        }
        EXPECT_FALSE(mProgress.finish(call)) << "it is this thread's still";
    }

private:
    // A thread that serves the channel meanwhile.
    struct Entered {
        explicit Entered(ARuntimeThatBegan& test) : mTest(test) {
            (void)monitor().enter(mTest.mChannel, mTest.mProgress);
        }
        ~Entered() { monitor().leave(mTest.mProgress); }
        StallMonitor& monitor() const { return mTest.mRuntime->context().stallMonitor; }
        ARuntimeThatBegan& mTest;
    };

    SocketPair mPair = makeSocketPair();
    const std::shared_ptr<Waiting> mChannel = std::make_shared<Waiting>(std::move(mPair.served));
    CallProgress mProgress;
    std::unique_ptr<SocketRuntime> mRuntime;
};

TEST_F(ARuntimeThatBegan, WithoutADescriptorForItsTimerHandsASlowCallsSocketOver) {
    beginWhile(sys::Call::Timer, EMFILE);
    expectToHandASlowCallsSocketOver();
}

TEST_F(ARuntimeThatBegan, WithoutADescriptorToWaitWithWaitsAllTheSame) {
    beginWhile(sys::Call::Epoll, EMFILE);
    expectToHandASlowCallsSocketOver();
}

TEST_F(ARuntimeThatBegan, WhileEpollTookNoMoreHandsASlowCallsSocketOver) {
    beginWhile(sys::Call::EpollAdd, ENOSPC);
    expectToHandASlowCallsSocketOver();
}

}  // namespace
