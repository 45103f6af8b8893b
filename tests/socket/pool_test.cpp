// SPDX-License-Identifier: Apache-2.0
// The threads of a process that serves sockets: what takes them, and that there are others.
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::OK;
using android::sp;
using voxtrel_test::ChildProcess;

using AThreadPool = probe::ProbeTest;

// A connection of which the peer keeps a copy of the other end, too.
struct Meddler {
    raw::Pair pair = raw::makePair();

    explicit Meddler(int control) {
        const int on = 1;
        EXPECT_EQ(0, setsockopt(pair.theirs.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)));
        raw::Words words;
        words.kind = raw::kAdopt;
        words.code = raw::kCalls;
        EXPECT_TRUE(raw::send(control, raw::packet(words), {pair.theirs.get()}));
    }
    int ours() const { return pair.ours.get(); }
    void limitStay(timeval most) const {
        EXPECT_EQ(0, setsockopt(pair.theirs.get(), SOL_SOCKET, SO_RCVTIMEO, &most, sizeof(most)));
    }
};

raw::Bytes callOf(uint32_t code, const raw::Bytes& payload = {}) {
    raw::Words words;
    words.code = code;
    words.payloadSize = static_cast<uint32_t>(payload.size());
    return raw::packet(words, payload);
}

TEST_F(AThreadPool, OfOneThreadHasAnotherAfterACallThatEndedIt) {
    ChildProcess small = ChildProcess::asRole("server", {"small", "1"});
    ASSERT_EQ("ready", small.readLine());
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), "small");
    for (int32_t ended = 1; ended <= 20; ++ended) {
        const raw::Fd calls = raw::openCalls(control.get());
        ASSERT_TRUE(raw::send(calls.get(), callOf(probe::kEndThread)));
        ASSERT_TRUE(voxtrel_test::eventually(
            [ended] { return probe::ask(probe::find("small"), probe::kEnded) == ended; }));
    }
}

// Offers a test node, and can open no descriptor between "starve" and "feed".
const voxtrel_test::Role kStarved("starved", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<android::IBinder> node = probe::makeNode();
    (void)android::defaultServiceManager()->addService(android::String16("starved"), node);
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t usual = limit.rlim_cur;
#ifdef VOXTREL_TESTS_SANITIZED
    const rlim_t starved = usual;  // the sanitizer opens pipes to look at memory, and gives up
#else
    const rlim_t starved = 1;
#endif
    voxtrel_test::tell("ready");
    for (std::string line = voxtrel_test::hear(); !line.empty(); line = voxtrel_test::hear()) {
        limit.rlim_cur = line == "starve" ? starved : usual;
        voxtrel_test::tell(setrlimit(RLIMIT_NOFILE, &limit) == 0 ? "done" : "failed");
    }
    return 0;
});

bool isRead(int socket) {
    int unread = 0;
    return ioctl(socket, SIOCOUTQ, &unread) == 0 && unread == 0;
}

TEST_F(AThreadPool, ThatBeganWithoutDescriptorsIsNotHeldUpByASlowCallOnceItHasSome) {
    ChildProcess starved = ChildProcess::asRole("starved");
    ASSERT_EQ("ready", starved.readLine());
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), "starved");
    const raw::Fd calls = raw::openCalls(control.get());
    const raw::Fd next = raw::openCalls(control.get());
    ASSERT_TRUE(voxtrel_test::eventually([&control] { return isRead(control.get()); }))
        << "the next one is read when the first one is served";
    ASSERT_EQ("done", starved.ask("starve"));
    const raw::Bytes add = callOf(probe::kAdd, raw::Bytes(8));
    ASSERT_TRUE(raw::send(calls.get(), add));
    EXPECT_EQ(36U, raw::receive(calls.get()).size());
    ASSERT_EQ("done", starved.ask("feed"));
    ASSERT_TRUE(raw::send(calls.get(), callOf(probe::kBlock)));
    ASSERT_TRUE(raw::send(calls.get(), add));
    EXPECT_EQ(36U, raw::receive(calls.get()).size()) << "it waits behind the slow one";
    const raw::Fd other = raw::openCalls(control.get());
    ASSERT_TRUE(raw::send(other.get(), callOf(probe::kUnblock)));
    EXPECT_EQ(32U, raw::receive(calls.get()).size());
}

TEST_F(AThreadPool, WhosePeersKeepThreadsAsleepServesOthersWithTheRest) {
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), probe::kName);
    const raw::Bytes add = callOf(probe::kAdd, raw::Bytes(8));
    constexpr int kMeddlers = 30;  // twice as many as the pool has threads
    std::vector<std::unique_ptr<Meddler>> meddlers;
    for (int i = 0; i < kMeddlers; ++i) {
        meddlers.push_back(std::make_unique<Meddler>(control.get()));
        const Meddler& meddler = *meddlers.back();
        ASSERT_TRUE(raw::send(meddler.ours(), add));
        ASSERT_EQ(36U, raw::receive(meddler.ours()).size());
        meddler.limitStay({0, 0});
        ASSERT_TRUE(raw::send(meddler.ours(), add));  // its thread sleeps without end behind this
        ASSERT_EQ(36U, raw::receive(meddler.ours()).size());
        ASSERT_EQ(OK, mNode->pingBinder());
    }
}

// A process without a pool: gives objects away, and starts one in the end.
const voxtrel_test::Role kLoner("loner", [](const voxtrel_test::Arguments&) {
    const sp<android::IBinder> service = probe::find();
    const sp<android::IBinder> first = probe::makeNode();
    const auto giveAway = [&service](const sp<android::IBinder>& node) {
        probe::Call call;
        call.data.writeStrongBinder(node);
        return call.to(service, probe::kKeep);
    };
    voxtrel_test::tell(giveAway(first) == OK ? "ready" : "failed");
    for (std::string line = voxtrel_test::hear(); !line.empty(); line = voxtrel_test::hear()) {
        if (line == "give away") {
            for (int i = 0; i < 300; ++i) {
                (void)giveAway(probe::makeNode());
            }
        } else if (line == "start") {
            probe::startPool();
        }
        voxtrel_test::tell(std::to_string(line == "answered?" ? probe::ask(first, probe::kAnswered)
                                                              : probe::descriptors()));
    }
    return 0;
});

TEST_F(AThreadPool, ThatIsNotStartedLetsObjectsGoWhileOthersAreGivenAwayAndServesNobody) {
    ChildProcess loner = ChildProcess::asRole("loner");
    ASSERT_EQ("ready", loner.readLine());
    probe::Call give;
    ASSERT_EQ(OK, give.to(mNode, probe::kGive));
    const sp<android::IBinder> first = give.reply.readStrongBinder();
    probe::Call call;
    ASSERT_EQ(OK, call.to(first, probe::kAnswer, android::IBinder::FLAG_ONEWAY));
    const int before = std::stoi(loner.ask("count"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_LE(std::stoi(loner.ask("give away")), before + 20);
    }
    EXPECT_EQ("0", loner.ask("answered?")) << "no thread has been told to serve";
    (void)loner.ask("start");
    EXPECT_TRUE(voxtrel_test::eventually([&loner] { return loner.ask("answered?") == "1"; }));
}

// One call whose service calls back somebody who never answers.
raw::Bytes callBackOf(uint64_t id) {
    raw::Words words;
    words.code = probe::kCallBack;
    words.payloadSize = 28;
    words.objects = 1;
    raw::Bytes payload(28);
    payload[24] = 1;
    return raw::packet(words, raw::joined(payload, raw::record(0, id)));
}

TEST_F(AThreadPool, WhoseThreadsAllWaitForRepliesFailsACallInsteadOfWaitingToo) {
    constexpr size_t kCalls = 300;
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd asking = raw::openCalls(manager.get());
    const raw::Bytes name = raw::managerRequest(probe::kName);
    raw::Words words;
    words.code = 1;
    words.payloadSize = static_cast<uint32_t>(name.size());
    ASSERT_TRUE(raw::send(asking.get(), raw::packet(words, name)));
    const raw::Fd control = raw::receiveFd(asking.get());
    std::vector<raw::Pair> silent;
    std::vector<raw::Fd> calls;
    std::vector<pollfd> answers;
    for (size_t i = 0; i < kCalls; ++i) {
        pollfd room = {control.get(), POLLOUT, 0};
        ASSERT_EQ(1, poll(&room, 1, 60000));
        silent.push_back(raw::makePair());
        calls.push_back(raw::openCalls(control.get()));
        ASSERT_TRUE(
            raw::send(calls.back().get(), callBackOf(1000 + i), {silent.back().theirs.get()}));
        answers.push_back({calls.back().get(), POLLIN, 0});
    }
    ASSERT_GT(poll(answers.data(), answers.size(), 60000), 0) << "nobody is left to serve";
    for (const pollfd& answer : answers) {
        if (answer.revents != 0) {
            EXPECT_EQ(android::FAILED_TRANSACTION, raw::statusOf(raw::receive(answer.fd)));
        }
    }
    EXPECT_EQ(OK, mNode->pingBinder());
}

}  // namespace
