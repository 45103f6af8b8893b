// SPDX-License-Identifier: Apache-2.0
// The threads of a process that serves: how few there may be, and how many.
#include <gtest/gtest.h>
#include <poll.h>

#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/platform/RawWire.h"

namespace {

using android::OK;
using android::sp;
using voxtrel_test::ChildProcess;

using AThreadPool = probe::ProbeTest;

TEST_F(AThreadPool, ThatMayHaveNoThreadsHasOneOnceItIsStarted) {
    ChildProcess small = ChildProcess::asRole("server", {"small", "0"});
    ASSERT_EQ("ready", small.readLine());
    EXPECT_EQ(OK, probe::find("small")->pingBinder());
}

TEST_F(AThreadPool, OfOneThreadIsNeverLeftByAll) {
    ChildProcess small = ChildProcess::asRole("server", {"small", "1"});
    ASSERT_EQ("ready", small.readLine());
    const sp<android::IBinder> node = probe::find("small");
    const sp<android::IBinder> own = probe::makeNode();
#ifdef __SANITIZE_THREAD__
    constexpr int kCalls = 1500;  // each takes some 8 ms there
#else
    constexpr int kCalls = 8000;  // the pool was gone after as many, two times in three
#endif
    for (int i = 0; i < kCalls; ++i) {
        probe::Call call;
        call.data.writeStrongBinder(own);
        call.data.writeInt32(3);
        ASSERT_EQ(OK, call.to(node, probe::kCallBack));
    }
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
    const raw::Bytes name = raw::nameOf(probe::kName);
    raw::Words words;
    words.code = 1;
    words.payloadSize = static_cast<uint32_t>(name.size());
    ASSERT_TRUE(raw::send(asking.get(), raw::packet(words, name)));
    const raw::Fd door = raw::receiveFd(asking.get());
    std::vector<raw::Pair> silent;
    std::vector<raw::Fd> calls;
    std::vector<pollfd> answers;
    for (size_t i = 0; i < kCalls; ++i) {
        silent.push_back(raw::makePair());
        calls.push_back(raw::openCalls(door.get()));
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
