// SPDX-License-Identifier: Apache-2.0
// A process whose one-way calls to a slow object would fill its process with what waits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::OK;
using raw::Bytes;
using raw::Words;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

Words oneWay(uint32_t payload) {
    Words words;
    words.kind = raw::kOneWay;
    words.code = probe::kAdd;
    words.flags = 1;
    words.payloadSize = payload;
    return words;
}

struct Message {
    Bytes bytes;
    std::vector<int> fds;
};

Message ofManyBinders(int fd) {
    constexpr uint32_t kBinders = 64;
    Words words = oneWay(kBinders * 24);
    words.objects = kBinders;
    Bytes rest(size_t{kBinders} * 24);
    for (uint32_t i = 0; i < kBinders; ++i) {
        rest = raw::joined(rest, raw::record(i * 24, 1000 + i));
    }
    return {raw::packet(words, rest), std::vector<int>(kBinders, fd)};
}

Message ofManyBytes(int memfd) {
    constexpr uint32_t kMax = 520192;
    constexpr uint32_t kInPacket = 32768;
    (void)ftruncate(memfd, kMax - kInPacket);
    (void)fcntl(memfd, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE);
    Words words = oneWay(kMax);
    words.options = 1;
    return {raw::packet(words, Bytes(kInPacket)), {memfd}};
}

void raiseDescriptorLimit() {
    rlimit most = {};
    getrlimit(RLIMIT_NOFILE, &most);
    most.rlim_cur = most.rlim_max;
    setrlimit(RLIMIT_NOFILE, &most);
}

// How many of these connections the other side has closed.
int hungUp(const std::vector<raw::Fd>& sockets) {
    int count = 0;
    for (const raw::Fd& one : sockets) {
        pollfd request = {one.get(), POLLRDHUP, 0};
        count += poll(&request, 1, 0) == 1 ? 1 : 0;
    }
    return count;
}

// Sends one-way calls over 120 sockets, and then tells as often as it is asked how many of them
// have been refused.
const voxtrel_test::Role kHeaper("heaper", [](const voxtrel_test::Arguments& arguments) {
    raiseDescriptorLimit();
    const raw::Fd manager = raw::connectTo(arguments[0]);
    const raw::Fd control = raw::controlOf(manager.get(), probe::kName);
    const raw::Pair peer = raw::makePair();
    const raw::Fd memfd(memfd_create("heap", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const Message message =
        arguments[1] == "bytes" ? ofManyBytes(memfd.get()) : ofManyBinders(peer.theirs.get());
    std::vector<raw::Fd> sockets;
    for (int i = 0; i < 120; ++i) {
        sockets.push_back(raw::openCalls(control.get()));
        (void)raw::send(sockets.back().get(), message.bytes, message.fds);
    }
    while (!voxtrel_test::hear().empty()) {
        voxtrel_test::tell(std::to_string(hungUp(sockets)));
    }
    return 0;
});

// False when the other side has hung up.
bool waitsForRoom(int socket) {
    pollfd request = {socket, POLLOUT, 0};
    return poll(&request, 1, 60000) == 1 && (request.revents & (POLLHUP | POLLERR)) == 0;
}

// Of connections that still stand: how many are not read to their end.
int heldBack(const std::vector<raw::Fd>& sockets) {
    int count = 0;
    for (const raw::Fd& one : sockets) {
        int unread = 0;
        pollfd request = {one.get(), POLLRDHUP, 0};
        if (poll(&request, 1, 0) == 0 && ioctl(one.get(), SIOCOUTQ, &unread) == 0) {
            count += unread > 0 ? 1 : 0;
        }
    }
    return count;
}

// Sends the smallest one-way calls over thousands of connections, more than one may leave waiting.
// Tells whether any was refused, and then, as often as it is asked, how many are held back.
const voxtrel_test::Role kCrumbler("crumbler", [](const voxtrel_test::Arguments& arguments) {
    raiseDescriptorLimit();
    const raw::Fd manager = raw::connectTo(arguments[0]);
    const raw::Fd control = raw::controlOf(manager.get(), probe::kName);
    const Bytes message = raw::packet(oneWay(8), Bytes(8));
    std::vector<raw::Fd> sockets;
    bool refused = false;
    for (int i = 0; i < 3000 && waitsForRoom(control.get()); ++i) {
        sockets.push_back(raw::openCalls(control.get()));
        for (int k = 0; k < 20 && waitsForRoom(sockets.back().get()); ++k) {
            (void)raw::send(sockets.back().get(), message);
        }
    }
    for (const raw::Fd& one : sockets) {
        refused = refused || !waitsForRoom(one.get());
    }
    voxtrel_test::tell(refused ? "refused" : "has all");
    while (!voxtrel_test::hear().empty()) {
        voxtrel_test::tell(std::to_string(heldBack(sockets)));
    }
    return 0;
});

#ifdef VOXTREL_TESTS_SANITIZED
constexpr long kOverhead = 200 * 1024;  // the sanitizers' own
#else
constexpr long kOverhead = 8 * 1024;
#endif

class AHeapOfOneWayCalls : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        probe::Call call;
        ASSERT_EQ(OK, call.to(mNode, probe::kBlock, android::IBinder::FLAG_ONEWAY));
        ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    }
    void TearDown() override { (void)probe::ask(mNode, probe::kUnblock); }
};

TEST_F(AHeapOfOneWayCalls, HoldsNoMoreDescriptorsThanItsSendersShare) {
    ChildProcess heaper = ChildProcess::asRole("heaper", {mRuntime.socket(), "descriptors"});
    EXPECT_TRUE(eventually([&] { return std::stoi(heaper.ask("refused?")) >= 120 - 4096 / 65; }));
    EXPECT_LE(std::stoi(heaper.ask("refused?")), 120 - 4096 / 65 + 1) << "it has its share";
    // What is being refused is still open for a moment.
    EXPECT_TRUE(eventually([this] { return probe::descriptorsOf(mServer.pid()) <= 4096 + 100; }));
    EXPECT_EQ(OK, mNode->pingBinder());
    heaper.killNow();
    (void)probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::descriptorsOf(mServer.pid()) < 100; }));
}

TEST_F(AHeapOfOneWayCalls, HoldsNoMoreBytesThanItsSendersShare) {
    ChildProcess heaper = ChildProcess::asRole("heaper", {mRuntime.socket(), "bytes"});
    EXPECT_TRUE(eventually([&] { return std::stoi(heaper.ask("refused?")) == 120 - 32; }))
        << "16 MiB hold 32 of them";
    probe::Call call;
    (void)call.data.writeInplace(100000);
    EXPECT_EQ(OK, call.to(mNode, probe::kAdd, android::IBinder::FLAG_ONEWAY))
        << "the share of others is their own";
    EXPECT_EQ(OK, mNode->pingBinder());
}

TEST_F(AHeapOfOneWayCalls, HoldsNoMoreMemoryOfSmallOnesThanItsSendersShare) {
    const long before = probe::residentKiB(mServer.pid());
    ChildProcess crumbler = ChildProcess::asRole("crumbler", {mRuntime.socket()});
    EXPECT_EQ("refused", crumbler.readLine());
    const long grown = probe::residentKiB(mServer.pid()) - before;
    EXPECT_LE(grown, 16 * 1024 + kOverhead) << "the share, and what 3,000 sockets take";
    probe::Call call;
    EXPECT_EQ(OK, call.to(mNode, probe::kAdd, android::IBinder::FLAG_ONEWAY))
        << "the share of others is their own";
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_GT(std::stoi(crumbler.ask("held back?")), 200) << "most feel it before one is refused";
    (void)probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([&] { return crumbler.ask("held back?") == "0"; }));
}

}  // namespace
