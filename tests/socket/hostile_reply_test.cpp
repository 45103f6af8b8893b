// SPDX-License-Identifier: Apache-2.0
// A service that answers with descriptors in ways that nobody of good will does.
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

class AReplyWithDescriptors : public probe::ProbeTest {
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

    // Answers one call with these packets, of which the last one has so many descriptors, on a
    // connection that then ends; what the caller gets.
    android::status_t answerWith(const std::vector<Bytes>& packets, size_t count) {
        std::thread server([&] {
            const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
            const raw::Fd calls = raw::receiveFd(mControl.back().get());
            EXPECT_EQ(32U, raw::receive(calls.get()).size());
            for (const Bytes& packet : packets) {
                const bool isLast = &packet == &packets.back();
                EXPECT_TRUE(raw::send(calls.get(), packet,
                                      std::vector<int>(isLast ? count : 0, null.get())));
            }
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

Bytes reply(uint32_t options) {
    Words words;
    words.kind = raw::kReply;
    words.options = options;
    return raw::packet(words);
}

constexpr uint32_t kDescriptorsFollow = 4;

TEST_F(AReplyWithDescriptors, ThatItSaysNothingOfFailsTheCallAndLeavesNoneBehind) {
    const std::vector<Bytes> packets = {reply(kDescriptorsFollow), reply(0)};
    EXPECT_EQ(android::FAILED_TRANSACTION, answerWith(packets, 1));
    EXPECT_EQ(OK, mNode->pingBinder());
    const int before = probe::descriptors();
    for (int round = 0; round < 3; ++round) {
        for (const size_t count : {1U, 2U, 64U, 65U, 66U, 67U, 100U, 250U}) {
            SCOPED_TRACE(count);
            EXPECT_EQ(android::FAILED_TRANSACTION, answerWith(packets, count));
            EXPECT_TRUE(eventually([before] { return probe::descriptors() <= before; }));
            EXPECT_EQ(OK, mNode->pingBinder());
        }
    }
    EXPECT_TRUE(mHostile->isBinderAlive());
}

TEST_F(AReplyWithDescriptors, ThatAnnouncesThemTwiceFailsTheCall) {
    EXPECT_EQ(android::FAILED_TRANSACTION,
              answerWith({reply(kDescriptorsFollow), reply(kDescriptorsFollow)}, 0));
    EXPECT_EQ(OK, mNode->pingBinder());
}

}  // namespace
