// SPDX-License-Identifier: Apache-2.0
// A process that speaks the wire badly, on purpose, to a service manager: it alone suffers.
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "socket/Deadline.h"
#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using raw::Bytes;
using raw::Words;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

class AHostilePeer : public probe::ProbeTest {
protected:
    // The control socket of the hostile peer, and that of a peer that behaves.
    raw::Fd mControl = raw::connectTo(mRuntime.socket());

    void othersAreServed() {
        EXPECT_TRUE(android::defaultServiceManager()->getService(android::String16(probe::kName)) ==
                    mNode);
        EXPECT_EQ(OK, mNode->pingBinder());
    }

    void expectRefused(int socket, const Bytes& bytes, const std::vector<int>& fds = {}) {
        ASSERT_TRUE(raw::send(socket, bytes, fds)) << std::strerror(errno);
        EXPECT_TRUE(raw::hangsUp(socket));
        othersAreServed();
    }
};

Words words(uint32_t kind, uint32_t code = 0) {
    Words made;
    made.kind = kind;
    made.code = code;
    made.flags = kind == raw::kOneWay ? 1 : 0;
    return made;
}

Words sized(Words made, uint32_t payload, uint32_t objects = 0, uint32_t options = 0) {
    made.payloadSize = payload;
    made.objects = objects;
    made.options = options;
    return made;
}

struct Case {
    const char* name;
    Bytes bytes;
};

std::vector<Case> badCalls() {
    Words foreign = words(raw::kRequest);
    foreign.magic = 0x12345678;
    Words flagged = words(raw::kRequest);
    flagged.flags = 1;
    Words waiting = words(raw::kOneWay);
    waiting.flags = 0;
    const Bytes binder(24);
    return {
        {"one byte", Bytes(1)},
        {"a header cut short", Bytes(31)},
        {"another protocol", raw::packet(foreign)},
        {"an unknown kind", raw::packet(words(9))},
        {"a reply", raw::packet(words(raw::kReply))},
        {"a one-way flag on a request", raw::packet(flagged)},
        {"a one-way call without its flag", raw::packet(waiting)},
        {"less payload than announced", raw::packet(sized(words(raw::kRequest), 8), Bytes(4))},
        {"more payload than announced", raw::packet(sized(words(raw::kRequest), 4), Bytes(8))},
        {"a payload beyond all limits", raw::packet(sized(words(raw::kRequest), 0xFFFFFFF0))},
        {"an unknown option", raw::packet(sized(words(raw::kRequest), 0, 0, 4))},
        {"a request that is counted", raw::packet(sized(words(raw::kRequest), 0, 0, 2))},
        {"a memfd that is not there", raw::packet(sized(words(raw::kRequest), 100, 0, 1))},
        {"a binder without a descriptor",
         raw::packet(sized(words(raw::kRequest), 24, 1), raw::joined(binder, raw::record(0, 1)))},
        {"objects without records", raw::packet(sized(words(raw::kRequest), 0, 1000000000))},
    };
}

TEST_F(AHostilePeer, IsCutOffForACallThatMakesNoSense) {
    for (const Case& one : badCalls()) {
        SCOPED_TRACE(one.name);
        const raw::Fd calls = raw::openCalls(mControl.get());
        expectRefused(calls.get(), one.bytes);
    }
}

TEST_F(AHostilePeer, IsCutOffForABinderThatIsNoReference) {
    int pipes[2];
    int stream[2];
    ASSERT_EQ(0, pipe(pipes));
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, stream));
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const Words call = sized(words(raw::kRequest, 99), 24, 1);
    const Bytes sound = raw::packet(call, raw::joined(Bytes(24), raw::record(0, 77)));
    for (const int fd : {pipes[0], stream[0], null.get()}) {
        const raw::Fd calls = raw::openCalls(mControl.get());
        expectRefused(calls.get(), sound, {fd});
    }
    for (const int fd : {pipes[0], pipes[1], stream[0], stream[1]}) {
        close(fd);
    }
}

TEST_F(AHostilePeer, IsCutOffForRecordsInTheWrongPlaces) {
    int pair[2];
    ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_SEQPACKET, 0, pair));
    const auto one = [](uint32_t payload, const Bytes& record) {
        return raw::packet(sized(words(raw::kRequest), payload, 1),
                           raw::joined(Bytes(payload), record));
    };
    for (const Bytes& bytes :
         {one(24, raw::record(4, 1)), one(28, raw::record(2, 1)), one(24, raw::record(0, 1, 5)),
          one(20, raw::record(0, 1)), one(24, raw::record(0xFFFFFFFC, 1))}) {
        const raw::Fd calls = raw::openCalls(mControl.get());
        expectRefused(calls.get(), bytes, {pair[0]});
    }
    const raw::Fd calls = raw::openCalls(mControl.get());
    expectRefused(
        calls.get(),
        raw::packet(sized(words(raw::kRequest), 48, 2),
                    raw::joined(Bytes(48), raw::joined(raw::record(0, 1), raw::record(20, 2)))),
        {pair[0], pair[1]});
    close(pair[0]);
    close(pair[1]);
}

TEST_F(AHostilePeer, IsCutOffForAMemfdThatCouldChange) {
    const auto memfd = [](off_t size, int seals) {
        raw::Fd made(memfd_create("hostile", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        EXPECT_EQ(0, ftruncate(made.get(), size));
        EXPECT_EQ(0, fcntl(made.get(), F_ADD_SEALS, seals));
        return made;
    };
    constexpr int kAll = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
    constexpr off_t kApart = 70000 - 32768;
    const Bytes call = raw::packet(sized(words(raw::kRequest, 99), 70000, 0, 1), Bytes(32768));
    struct Bad {
        off_t size;
        int seals;
    };
    for (const Bad& bad : {Bad{kApart, 0}, Bad{kApart, F_SEAL_SHRINK | F_SEAL_GROW},
                           Bad{kApart, F_SEAL_WRITE | F_SEAL_GROW}, Bad{kApart - 1, kAll},
                           Bad{kApart + 1, kAll}, Bad{70000, kAll}}) {
        const raw::Fd calls = raw::openCalls(mControl.get());
        expectRefused(calls.get(), call, {memfd(bad.size, bad.seals).get()});
    }
    int pipes[2];
    ASSERT_EQ(0, pipe(pipes));
    const raw::Fd calls = raw::openCalls(mControl.get());
    expectRefused(calls.get(), call, {pipes[0]});
    close(pipes[0]);
    close(pipes[1]);
    // And a sound one is not: the call reaches the node, which does not know its code.
    const raw::Fd sound = raw::openCalls(mControl.get());
    ASSERT_TRUE(raw::send(sound.get(), call, {memfd(kApart, kAll).get()}));
    EXPECT_EQ(32U, raw::receive(sound.get()).size());
}

TEST_F(AHostilePeer, IsCutOffForWhatDoesNotBelongThroughAControlSocket) {
    for (const Bytes& bytes :
         {raw::packet(words(raw::kRequest, 1)), Bytes(5),
          raw::packet(words(raw::kAdopt, raw::kControl)), raw::packet(words(raw::kAdopt, 3))}) {
        const raw::Fd control = raw::connectTo(mRuntime.socket());
        expectRefused(control.get(), bytes);
    }
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const raw::Fd first = raw::connectTo(mRuntime.socket());
    expectRefused(first.get(), raw::packet(words(raw::kAdopt, raw::kCalls)), {null.get()});
    const raw::Fd second = raw::connectTo(mRuntime.socket());
    expectRefused(second.get(), raw::packet(words(raw::kAdopt, raw::kCalls)),
                  {mControl.get(), mControl.get()});
}

TEST_F(AHostilePeer, IsCutOffForTooManyDescriptors) {
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    othersAreServed();
    const int before = probe::descriptors();
    for (const size_t count : {1U, 65U, 66U, 67U, 74U, 250U}) {
        const raw::Fd calls = raw::openCalls(mControl.get());
        expectRefused(calls.get(), raw::packet(words(raw::kRequest, 99)),
                      std::vector<int>(count, null.get()));
    }
    EXPECT_EQ(before, probe::descriptors());
}

TEST_F(AHostilePeer, SendingRandomBytesHarmsNobody) {
    std::mt19937 random(7);
    for (int i = 0; i < 500; ++i) {
        Bytes bytes(random() % 200 + 1);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(random());
        }
        if (i % 2 == 0 && bytes.size() >= 8) {
            std::memcpy(bytes.data(), "VXX1\1\0\0\0", 8);
        }
        const raw::Fd calls = raw::openCalls(mControl.get());
        (void)raw::send(calls.get(), bytes);
        const raw::Fd control = raw::connectTo(mRuntime.socket());
        (void)raw::send(control.get(), bytes);
    }
    othersAreServed();
}

TEST_F(AHostilePeer, ThatTakesNoRepliesIsCutOff) {
    const raw::Fd calls = raw::openCalls(mControl.get());
    const Bytes list = raw::packet(words(raw::kRequest, 4));
    EXPECT_TRUE(
        eventually([&] { return !raw::send(calls.get(), list) && raw::hangsUp(calls.get()); }));
    othersAreServed();
}

// Connects again and again, and opens call sockets without end; holds all that it gets.
const voxtrel_test::Role kFlooder("flooder", [](const voxtrel_test::Arguments& arguments) {
    rlimit most = {};
    getrlimit(RLIMIT_NOFILE, &most);
    most.rlim_cur = most.rlim_max;
    setrlimit(RLIMIT_NOFILE, &most);
    std::vector<raw::Fd> held;
    for (int i = 0; i < 6000; ++i) {
        held.push_back(raw::connectTo(arguments[0]));
        if (i % 2 == 0) {
            held.push_back(raw::openCalls(held.back().get()));
        }
    }
    voxtrel_test::tell("flooded");
    (void)voxtrel_test::hear();
    return 0;
});

TEST_F(AHostilePeer, ThatFloodsConnectionsUsesUpItsOwnShareOnly) {
    ChildProcess flooder = ChildProcess::asRole("flooder", {mRuntime.socket()});
    othersAreServed();
    EXPECT_EQ("flooded", flooder.readLine());
    othersAreServed();
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    EXPECT_EQ("ready", other.readLine());
    EXPECT_LE(probe::descriptorsOf(mRuntime.manager().pid()), 4096 + 100);
    flooder.killNow();
    EXPECT_TRUE(
        eventually([this] { return probe::descriptorsOf(mRuntime.manager().pid()) < 100; }));
}

// Keeps sending sockets through its control sockets, to be served too.
const voxtrel_test::Role kControlFlooder(
    "control-flooder", [](const voxtrel_test::Arguments& arguments) {
        constexpr int kControls = 20;  // more than the pool has threads
        std::vector<std::thread> threads;
        for (int i = 0; i < kControls; ++i) {
            threads.emplace_back([&arguments] {
                const raw::Fd control = raw::connectTo(arguments[0]);
                const raw::Pair pair = raw::makePair();
                for (;;) {
                    (void)raw::send(control.get(), raw::packet(words(raw::kAdopt, raw::kCalls)),
                                    {pair.theirs.get()});
                }
            });
        }
        voxtrel_test::tell("flooding");
        for (std::thread& thread : threads) {
            thread.join();
        }
        return 0;
    });

TEST_F(AHostilePeer, ThatFloodsControlSocketsLeavesTheThreadsToOthersToo) {
    ChildProcess flooder = ChildProcess::asRole("control-flooder", {mRuntime.socket()});
    EXPECT_EQ("flooding", flooder.readLine());
    for (int i = 0; i < 20; ++i) {
        othersAreServed();
    }
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    EXPECT_EQ("ready", other.readLine());
}

TEST_F(AHostilePeer, ThatFloodsAManagerWithFewDescriptorsUsesUpItsOwnShareOnly) {
    mRuntime.killManager();
    const ChildProcess limited({"sh", "-c", "ulimit -n 1024; exec " VOXTREL_SERVICEMANAGER});
    EXPECT_TRUE(eventually(
        [] { return android::ProcessState::self()->getContextObject(nullptr) != nullptr; }));
    ChildProcess flooder = ChildProcess::asRole("flooder", {mRuntime.socket()});
    EXPECT_EQ("flooded", flooder.readLine());
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    EXPECT_EQ("ready", other.readLine());
    EXPECT_LE(probe::descriptorsOf(limited.pid()), 1024 / 4 + 50);
}

Bytes askFor(const std::string& name) {
    const Bytes payload = raw::managerRequest(name);
    return raw::packet(sized(words(raw::kRequest, 1), static_cast<uint32_t>(payload.size())),
                       payload);
}

// Asks for a service over and over, and keeps each reference.
const voxtrel_test::Role kHoarder("hoarder", [](const voxtrel_test::Arguments& arguments) {
    rlimit most = {};
    getrlimit(RLIMIT_NOFILE, &most);
    most.rlim_cur = most.rlim_max;
    setrlimit(RLIMIT_NOFILE, &most);
    const raw::Fd control = raw::connectTo(arguments[0]);
    const raw::Fd calls = raw::openCalls(control.get());
    std::vector<raw::Fd> held;
    for (int i = 0; i < 4200; ++i) {
        (void)raw::send(calls.get(), askFor(probe::kName));
        held.push_back(raw::receiveFd(calls.get()));
    }
    voxtrel_test::tell(raw::hangsUp(held.back().get()) ? "hoarded" : "has all");
    (void)voxtrel_test::hear();
    return 0;
});

TEST_F(AHostilePeer, ThatHoardsReferencesUsesUpItsOwnShareOnly) {
    ChildProcess hoarder = ChildProcess::asRole("hoarder", {mRuntime.socket()});
    EXPECT_EQ("hoarded", hoarder.readLine());
    mNode.clear();
    mNode = probe::find();
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_LE(probe::descriptorsOf(mServer.pid()), 4096 + 100);
}

// Listens for a service manager, as systemd does, and starts one, which ends with this process.
const voxtrel_test::Role kUnit("unit", [](const voxtrel_test::Arguments& arguments) {
    constexpr int kFirstPassed = 3;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    arguments[0].copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int on = 1;
    const raw::Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    (void)unlink(arguments[0].c_str());
    if (setsockopt(socket.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)) != 0 ||
        bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(socket.get(), 128) != 0) {
        return 1;
    }
    const pid_t parent = getpid();
    if (fork() == 0) {
        (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
        const bool isLate = getppid() != parent;
        const bool isPassed = socket.get() == kFirstPassed
                                  ? fcntl(kFirstPassed, F_SETFD, 0) == 0
                                  : dup2(socket.get(), kFirstPassed) == kFirstPassed;
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
        setenv("LISTEN_FDS", "1", 1);
        if (!isLate && isPassed) {
            (void)execl(VOXTREL_SERVICEMANAGER, VOXTREL_SERVICEMANAGER, nullptr);
        }
        _exit(1);
    }
    voxtrel_test::tell("started");
    (void)voxtrel_test::hear();
    return 0;
});

TEST_F(AHostilePeer, ThatHoardsReferencesOfAnActivatedManagerUsesUpItsOwnShareOnly) {
    mRuntime.killManager();
    ChildProcess unit = ChildProcess::asRole("unit", {mRuntime.socket()});
    ASSERT_EQ("started", unit.readLine());
    // Answered, so that all who come later find the manager.
    ASSERT_TRUE(eventually([] { return android::defaultServiceManager() != nullptr; }));
    EXPECT_EQ(0U, android::defaultServiceManager()->listServices().size());
    ChildProcess server = ChildProcess::asRole("server");
    ASSERT_EQ("ready", server.readLine());
    ChildProcess hoarder = ChildProcess::asRole("hoarder", {mRuntime.socket()});
    EXPECT_EQ("hoarded", hoarder.readLine());
    mNode = probe::find();
    EXPECT_EQ(OK, mNode->pingBinder()) << "the manager's share is used up for all";
    EXPECT_LE(probe::descriptorsOf(server.pid()), 4096 + 100);
}

TEST_F(AHostilePeer, IsCutOffForAMessageWithoutASender) {
    // Sent into a socket before it is given away, so that nobody has told the kernel to name
    // senders.
    const auto hangsUpAs = [this](uint32_t role, const Bytes& first, const std::vector<int>& fds) {
        raw::Pair pair = raw::makePair();
        const raw::Fd ours = std::move(pair.ours);
        {
            const raw::Fd theirs = std::move(pair.theirs);
            EXPECT_TRUE(raw::send(ours.get(), first, fds));
            EXPECT_TRUE(
                raw::send(mControl.get(), raw::packet(words(raw::kAdopt, role)), {theirs.get()}));
        }
        return raw::receive(ours.get()).empty();
    };
    const raw::Pair other = raw::makePair();
    EXPECT_TRUE(hangsUpAs(raw::kCalls, askFor(probe::kName), {}));
    EXPECT_TRUE(hangsUpAs(raw::kControl, raw::packet(words(raw::kAdopt, raw::kCalls)),
                          {other.theirs.get()}));
    othersAreServed();
}

TEST_F(AHostilePeer, WhoseServiceDoesNotListenCostsTheManagerNoTime) {
    const raw::Pair stuck = raw::makePair();
    const raw::Fd calls = raw::openCalls(mControl.get());
    const Bytes name = raw::managerRequest("stuck");
    const auto offset = static_cast<uint32_t>(name.size());
    Bytes binder(24);
    std::memcpy(binder.data(), "1dnb", 4);
    ASSERT_TRUE(
        raw::send(calls.get(),
                  raw::packet(sized(words(raw::kRequest, 3), offset + 24, 1),
                              raw::joined(raw::joined(name, binder), raw::record(offset, 5))),
                  {stuck.theirs.get()}));
    ASSERT_EQ(36U, raw::receive(calls.get()).size());
    const auto ask = [&calls] {
        (void)raw::send(calls.get(), askFor("stuck"));
        return raw::statusOf(raw::receive(calls.get()));
    };
    ASSERT_TRUE(eventually([&ask] { return ask() == android::FAILED_TRANSACTION; }));
    // On a busy machine an answer may take as long as the wait, but not each of so many.
    int quickInARow = 0;
    for (int i = 0; i < 300 && quickInARow < 2; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(android::FAILED_TRANSACTION, ask());
        const bool waited = std::chrono::steady_clock::now() - begin >=
                            std::chrono::milliseconds(android::transport::kSendTimeoutMs);
        quickInARow = waited ? 0 : quickInARow + 1;
    }
    EXPECT_EQ(2, quickInARow) << "the manager waits for it again";
    othersAreServed();
}

}  // namespace
