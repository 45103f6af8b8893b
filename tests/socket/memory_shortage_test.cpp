// SPDX-License-Identifier: Apache-2.0
// A process that has no memory for what comes in a message: that call fails, and no other.
// Sanitizers have an allocator of their own.
#ifndef VOXTREL_TESTS_SANITIZED
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <string>
#include <thread>

#include "socket/Syscalls.h"
#include "tests/platform/ProbeTest.h"

extern "C" void* __libc_realloc(void* old, size_t size);

namespace {

/// In this process no parcel grows.
std::atomic<bool> gNoParcelGrows{false};
/// See NoMemory.
thread_local bool tNoMemory = false;

void* allocate(std::size_t size) {
    void* const memory = tNoMemory ? nullptr : malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

extern "C" void* realloc(void* old, size_t size) {
    return gNoParcelGrows ? nullptr : __libc_realloc(old, size);
}

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    free(memory);
}

void operator delete[](void* memory) noexcept {
    free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    free(memory);
}

namespace {

using android::BBinder;
using android::FAILED_TRANSACTION;
using android::IBinder;
using android::NO_MEMORY;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using probe::Call;
namespace sys = android::transport::sys;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

/// While it lives this thread can make no object.
struct NoMemory {
    NoMemory() { tNoMemory = true; }
    ~NoMemory() { tNoMemory = false; }
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};

/// Larger than a parcel's own room: in one packet, and with a memfd.
constexpr size_t kSizes[] = {2000, 60000, 300000};

// The test node, whose process is starved of memory, and fed, in place of descriptors.
class Node : public BBinder {
protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code != probe::kStarve && code != probe::kFeed) {
            return mProbe->transact(code, data, reply, flags);
        }
        gNoParcelGrows = code == probe::kStarve;
        return OK;
    }

private:
    const sp<IBinder> mProbe = probe::makeNode();
};

const voxtrel_test::Role kServer("server_without_memory", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<IBinder> node = new Node();
    const status_t status =
        android::defaultServiceManager()->addService(android::String16(probe::kName), node);
    voxtrel_test::tell(status == OK ? "ready" : "failed");
    (void)voxtrel_test::hear();
    return 0;
});

class AProcessWithoutMemory : public testing::Test {
protected:
    void SetUp() override {
        probe::startPool();
        ASSERT_EQ("ready", mServer.readLine());
        mNode = probe::find();
        ASSERT_TRUE(mNode != nullptr);
        // The connections that it takes are there from here on.
        ASSERT_EQ(OK, probe::note(mNode, 1, mNotes++));
        ASSERT_EQ(OK, mNode->pingBinder());
    }

    status_t sendLarge(size_t size, const sp<IBinder>& binder = nullptr) {
        Call call;
        call.data.writeStrongBinder(binder);
        (void)call.data.writeInplace(size);
        return call.to(mNode, probe::kKeep);
    }

    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    ChildProcess mServer = ChildProcess::asRoleWithErrors("server_without_memory");
    sp<IBinder> mNode;
    int32_t mNotes = 0;
};

TEST_F(AProcessWithoutMemory, AnswersARequestWithThatAndServesTheNext) {
    const int connections = probe::descriptorsOf(mServer.pid());
    for (const size_t size : kSizes) {
        SCOPED_TRACE(size);
        const sp<IBinder> binder = probe::makeNode();
        ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
        EXPECT_EQ(NO_MEMORY, sendLarge(size));
        EXPECT_EQ(NO_MEMORY, sendLarge(size, binder));
        EXPECT_EQ(OK, mNode->pingBinder());
        EXPECT_TRUE(eventually([&] { return binder->getStrongCount() == 1; })) << "it is let go";
        EXPECT_EQ(connections, probe::descriptorsOf(mServer.pid())) << "the connection is kept";
        ASSERT_EQ(0, probe::ask(mNode, probe::kFeed));
        EXPECT_EQ(OK, sendLarge(size));
    }
}

TEST_F(AProcessWithoutMemory, LosesAOneWayCallAndServesTheNext) {
    for (const size_t size : kSizes) {
        SCOPED_TRACE(size);
        ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
        EXPECT_EQ(OK, probe::note(mNode, 2, 0, size)) << "nobody waits for its status";
        EXPECT_EQ(OK, probe::note(mNode, 1, mNotes++));
        EXPECT_EQ(OK, probe::note(mNode, 1, mNotes++));
        const std::string line = "binder[" + std::to_string(mServer.pid()) +
                                 "]: out of memory: call " + std::to_string(probe::kNote) +
                                 " of process " + std::to_string(getpid()) + " fails";
        EXPECT_EQ(line, mServer.readLine());
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == mNotes; }));
        ASSERT_EQ(0, probe::ask(mNode, probe::kFeed));
    }
}

TEST_F(AProcessWithoutMemory, LosesAOneWayCallThatWouldHaveWaited) {
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
    EXPECT_EQ(OK, probe::note(mNode, 2, 0, 2000));
    EXPECT_EQ(OK, probe::note(mNode, 1, mNotes++));
    EXPECT_NE(std::string::npos, mServer.readLine().find("out of memory: call"));
    ASSERT_EQ(0, probe::ask(mNode, probe::kFeed));
    ASSERT_EQ(0, probe::ask(mNode, probe::kUnblock));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == mNotes; }));
}

// Else two-way calls would go over further sockets, since so many one-way calls were ahead of them.
TEST_F(AProcessWithoutMemory, TellsThatOneWayCallsThatItLostAreDone) {
    const int connections = probe::descriptorsOf(mServer.pid());
    ASSERT_EQ(0, probe::ask(mNode, probe::kStarve));
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(OK, probe::note(mNode, 2, i, 2000));
        ASSERT_EQ(OK, mNode->pingBinder());
    }
    EXPECT_EQ(connections, probe::descriptorsOf(mServer.pid()));
}

TEST_F(AProcessWithoutMemory, FailsInACallWhoseReplyItCannotTakeAndMakesTheNext) {
    const int connections = probe::descriptors();
    for (const size_t size : kSizes) {
        SCOPED_TRACE(size);
        Call big;
        big.data.writeInt32(static_cast<int32_t>(size));
        gNoParcelGrows = true;
        EXPECT_EQ(NO_MEMORY, big.to(mNode, probe::kBig));
        EXPECT_EQ(0U, big.reply.dataSize());
        EXPECT_EQ(OK, mNode->pingBinder());
        gNoParcelGrows = false;
        EXPECT_EQ(OK, big.to(mNode, probe::kBig));
        EXPECT_EQ(size, big.reply.dataSize());
        EXPECT_EQ(connections, probe::descriptors()) << "the connection is kept";
    }
}

TEST_F(AProcessWithoutMemory, FailsInACallWhoseReplyBringsABinderAndMakesTheNext) {
    const int connections = probe::descriptors();
    Call made;
    {
        const NoMemory none;
        EXPECT_EQ(NO_MEMORY, made.to(mNode, probe::kMake));
    }
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
    EXPECT_EQ(connections, probe::descriptors()) << "the connection is kept";
    EXPECT_EQ(OK, made.to(mNode, probe::kMake));
}

/// While it lives the kernel has no memory for what this process receives.
class NoMemoryToReceive {
public:
    NoMemoryToReceive() { sys::gFault = &failToReceive; }
    ~NoMemoryToReceive() { sys::gFault = nullptr; }
    NoMemoryToReceive(const NoMemoryToReceive&) = delete;
    NoMemoryToReceive& operator=(const NoMemoryToReceive&) = delete;

private:
    static int failToReceive(sys::Call call) { return call == sys::Call::Receive ? ENOMEM : 0; }
};

TEST_F(AProcessWithoutMemory, FailsInACallForWhoseReplyTheKernelHasNoneAndMakesTheNext) {
    const int connections = probe::descriptors();
    for (int times = 0; times < 3; ++times) {
        {
            const NoMemoryToReceive none;
            EXPECT_EQ(NO_MEMORY, mNode->pingBinder());
        }
        EXPECT_EQ(OK, mNode->pingBinder());
    }
    EXPECT_LE(probe::descriptors(), connections + 1) << "those sockets are closed";
    EXPECT_EQ(FAILED_TRANSACTION, probe::note(mNode, 1, mNotes))
        << "its socket was closed with the first reply";
    EXPECT_EQ(OK, probe::note(mNode, 1, mNotes++));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == mNotes; }));
}

TEST_F(AProcessWithoutMemory, MakesNoCallWhoseReplyItCouldNotTake) {
    bool thrown = false;
    std::thread caller([&] {  // which has not received anything yet
        const NoMemory none;
        Call call;
        try {
            (void)call.to(mNode, probe::kAnswer);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
    });
    caller.join();
    EXPECT_TRUE(thrown);
    EXPECT_EQ(0, probe::ask(mNode, probe::kAnswered));
}

}  // namespace
#endif
