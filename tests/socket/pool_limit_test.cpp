// SPDX-License-Identifier: Apache-2.0
// How many calls a process carries out at a time: as many as its pool may have threads, no more.
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <condition_variable>
#include <future>
#include <mutex>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::IBinder;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

constexpr uint32_t kPass = 1;      // waits inside until the gate is opened
constexpr uint32_t kGoToSide = 2;  // binder: waits for its kBlock
constexpr uint32_t kPassOn = 3;    // two binders: calls the first one with the second

// Counts the calls that are inside, and can let them out without another call.
class Gate : public android::BBinder {
public:
    void set(bool open) {
        const std::lock_guard<std::mutex> held(mLock);
        mOpen = open;
        mChanged.notify_all();
    }
    int inside() const {
        const std::lock_guard<std::mutex> held(mLock);
        return mInside;
    }
    int most() const {
        const std::lock_guard<std::mutex> held(mLock);
        return mMax;
    }

protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code == kPass) {
            pass();
            return OK;
        }
        if (code == kGoToSide) {
            return data.readStrongBinder()->transact(probe::kBlock, Parcel(), reply);
        }
        if (code == kPassOn) {
            const sp<IBinder> called = data.readStrongBinder();
            Parcel passed;
            passed.writeStrongBinder(data.readStrongBinder());
            return called->transact(kPass, passed, reply);
        }
        return BBinder::onTransact(code, data, reply, flags);
    }

private:
    void pass() {
        std::unique_lock<std::mutex> held(mLock);
        mMax = std::max(mMax, ++mInside);
        mChanged.wait(held, [this] { return mOpen; });
        --mInside;
    }

    mutable std::mutex mLock;
    std::condition_variable mChanged;
    bool mOpen = false;
    int mInside = 0;
    int mMax = 0;
};

// A process whose only service is a gate; it is asked through its input, which needs no thread of
// the pool.
const voxtrel_test::Role kGateServer("gate", [](const voxtrel_test::Arguments& arguments) {
    if (!arguments.empty()) {
        android::ProcessState::self()->setThreadPoolMaxThreadCount(std::stoul(arguments[0]));
    }
    probe::startPool();
    const sp<Gate> gate = new Gate();
    android::defaultServiceManager()->addService(android::String16("gate"), gate);
    voxtrel_test::tell("ready");
    for (std::string line = voxtrel_test::hear(); !line.empty(); line = voxtrel_test::hear()) {
        gate->set(line == "open");
        voxtrel_test::tell(std::to_string(line == "most" ? gate->most() : gate->inside()));
    }
    return 0;
});

class APoolOfThreads : public probe::ProbeTest {
protected:
    void startGate(const voxtrel_test::Arguments& limit) {
        mGate = ChildProcess::asRole("gate", limit);
        ASSERT_EQ("ready", mGate.readLine());
    }

    // All of them are with the kernel when this returns.
    static std::vector<raw::Fd> sendCalls(const raw::Fd& control, int count) {
        raw::Words words;
        words.code = kPass;
        std::vector<raw::Fd> calls;
        for (int i = 0; i < count; ++i) {
            calls.push_back(raw::openCalls(control.get()));
            EXPECT_TRUE(raw::send(calls.back().get(), raw::packet(words)));
        }
        return calls;
    }

    int asked(const std::string& question) {
        const std::string answer = mGate.ask(question);
        return answer.empty() ? -1 : std::stoi(answer);
    }

    // More calls than there are threads, round after round: an additional thread need not be quick
    // to be noticed in one of them.
    void expectAtOnce(int limit) {
        const raw::Fd manager = raw::connectTo(mRuntime.socket());
        const raw::Fd control = raw::controlOf(manager.get(), "gate");
        for (int round = 0; round < 10; ++round) {
            const std::vector<raw::Fd> calls = sendCalls(control, limit + 10);
            ASSERT_TRUE(eventually([&] { return asked("inside") >= limit; }));
            mGate.ask("open");
            for (const raw::Fd& call : calls) {
                EXPECT_EQ(32U, raw::receive(call.get()).size());
            }
            ASSERT_EQ(0, asked("inside"));
        }
        EXPECT_EQ(limit, asked("most"));
    }

    ChildProcess mGate = ChildProcess({"true"});
};

TEST_F(APoolOfThreads, CarriesOutFifteenCallsAtOnceUnlessToldOtherwise) {
    startGate({});
    expectAtOnce(15);
}

TEST_F(APoolOfThreads, CarriesOutAsManyCallsAtOnceAsItIsTold) {
    for (const int limit : {1, 2, 5, 30}) {
        SCOPED_TRACE(limit);
        startGate({std::to_string(limit)});
        expectAtOnce(limit);
    }
}

TEST_F(APoolOfThreads, DoesNotCountThoseThatWaitForAReply) {
    constexpr int kWaiting = 5;
    startGate({"2"});
    const sp<IBinder> gate = probe::find("gate");
    const sp<IBinder> side = probe::makeNode();
    std::vector<std::future<status_t>> callers;
    for (int i = 0; i < kWaiting; ++i) {
        callers.push_back(std::async(std::launch::async, [&] {
            probe::Call call;
            call.data.writeStrongBinder(side);
            return call.to(gate, kGoToSide);
        }));
    }
    EXPECT_TRUE(eventually([&] { return probe::ask(side, probe::kBlocked) == kWaiting; }));
    expectAtOnce(2);
    probe::ask(side, probe::kUnblock);
    for (auto& caller : callers) {
        EXPECT_EQ(OK, caller.get());
    }
}

// A control socket whose owner takes no further one.
raw::Pair makeFull() {
    raw::Pair pair = raw::makePair();
    while (raw::send(pair.theirs.get(), raw::Bytes(32))) {
    }
    return pair;
}

// On a socket that has the call in it when it is given away: it is the next one to be served.
raw::Fd sendFirst(const raw::Fd& control, const raw::Bytes& call, const std::vector<int>& fds) {
    raw::Pair pair = raw::makePair();
    const int on = 1;
    EXPECT_EQ(0, setsockopt(pair.theirs.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof(on)));
    EXPECT_TRUE(raw::send(pair.ours.get(), call, fds));
    raw::Words adopt;
    adopt.kind = raw::kAdopt;
    adopt.code = raw::kCalls;
    EXPECT_TRUE(raw::send(control.get(), raw::packet(adopt), {pair.theirs.get()}));
    return std::move(pair.ours);
}

raw::Bytes passOn(uint64_t called, uint64_t passed) {
    raw::Words words;
    words.code = kPassOn;
    words.payloadSize = 48;
    words.objects = 2;
    const raw::Bytes records = raw::joined(raw::record(0, called), raw::record(24, passed));
    return raw::packet(words, raw::joined(raw::Bytes(48), records));
}

TEST_F(APoolOfThreads, CountsOneThatWaitsForAnOwnerInTheMiddleOfACallOnce) {
    startGate({"1"});
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), "gate");
    for (uint64_t round = 1; round <= 10; ++round) {
        const raw::Pair called = raw::makePair();
        const raw::Pair full = makeFull();
        const raw::Fd waiting = sendFirst(control, passOn(2 * round, 2 * round + 1),
                                          {called.theirs.get(), full.theirs.get()});
        const std::vector<raw::Fd> calls = sendCalls(control, 2);
        EXPECT_EQ(android::FAILED_TRANSACTION, raw::statusOf(raw::receive(waiting.get())));
        ASSERT_TRUE(eventually([&] { return asked("inside") >= 1; }));
        mGate.ask("open");
        for (const raw::Fd& call : calls) {
            EXPECT_EQ(32U, raw::receive(call.get()).size());
        }
        ASSERT_EQ(0, asked("inside"));
    }
    EXPECT_EQ(1, asked("most"));
}

}  // namespace
