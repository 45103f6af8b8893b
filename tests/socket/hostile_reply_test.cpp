// SPDX-License-Identifier: Apache-2.0
// A service that answers with descriptors that its answer says nothing of.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::OK;
using android::sp;
using raw::Bytes;
using raw::Words;
using voxtrel_test::eventually;

class AReplyWithTooManyDescriptors : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        add();
        mHostile = probe::find("hostile");
        ASSERT_TRUE(mHostile != nullptr);
        // The end that the service manager has had served for us.
        mControl.push_back(raw::receiveFd(mOwn.ours.get()));
    }

    // Names a socket of the test's own as a service.
    void add() {
        const raw::Fd manager = raw::connectTo(mRuntime.socket());
        const raw::Fd calls = raw::openCalls(manager.get());
        const Bytes name = raw::managerRequest("hostile");
        Words words;
        words.code = 3;
        words.payloadSize = static_cast<uint32_t>(name.size()) + 24;
        words.objects = 1;
        Bytes binder(24);
        std::memcpy(binder.data(), "1dnb", 4);
        const Bytes record = raw::record(static_cast<uint32_t>(name.size()), 5);
        ASSERT_TRUE(raw::send(calls.get(),
                              raw::packet(words, raw::joined(raw::joined(name, binder), record)),
                              {mOwn.theirs.get()}));
        ASSERT_EQ(36U, raw::receive(calls.get()).size());
    }

    // Answers one call with so many descriptors; what the caller gets.
    android::status_t answerWith(size_t count) {
        std::thread server([this, count] {
            const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
            const raw::Fd calls = raw::receiveFd(mControl.back().get());
            EXPECT_EQ(32U, raw::receive(calls.get()).size());
            Words reply;
            reply.kind = raw::kReply;
            EXPECT_TRUE(
                raw::send(calls.get(), raw::packet(reply), std::vector<int>(count, null.get())));
            EXPECT_TRUE(raw::hangsUp(calls.get()));
        });
        const android::status_t status = mHostile->pingBinder();
        server.join();
        return status;
    }

    raw::Pair mOwn = raw::makePair();
    std::vector<raw::Fd> mControl;
    sp<android::IBinder> mHostile;
};

TEST_F(AReplyWithTooManyDescriptors, FailsTheCallAndLeavesNoneBehind) {
    EXPECT_EQ(android::FAILED_TRANSACTION, answerWith(1));
    EXPECT_EQ(OK, mNode->pingBinder());
    const int before = probe::descriptors();
    for (int round = 0; round < 3; ++round) {
        for (const size_t count : {1U, 2U, 64U, 65U, 66U, 67U, 100U, 250U}) {
            SCOPED_TRACE(count);
            EXPECT_EQ(android::FAILED_TRANSACTION, answerWith(count));
            EXPECT_TRUE(eventually([before] { return probe::descriptors() <= before; }));
            EXPECT_EQ(OK, mNode->pingBinder());
        }
    }
    EXPECT_TRUE(mHostile->isBinderAlive());
}

}  // namespace
