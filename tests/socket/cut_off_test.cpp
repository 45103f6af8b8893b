// SPDX-License-Identifier: Apache-2.0
// A peer whose connection is closed for what it sent sees that, whatever it has sent before; and it
// holds up nobody.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <chrono>
#include <optional>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::OK;
using raw::Bytes;
using raw::Words;
using voxtrel_test::eventually;

Words words(uint32_t kind, uint32_t code, uint32_t payload = 0, uint32_t objects = 0) {
    Words made;
    made.kind = kind;
    made.code = code;
    made.flags = kind == raw::kOneWay ? 1 : 0;
    made.payloadSize = payload;
    made.objects = objects;
    return made;
}

class APeerThatIsCutOff : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        const raw::Fd manager = raw::connectTo(mRuntime.socket());
        mControl.emplace(raw::controlOf(manager.get(), probe::kName));
        ASSERT_GE(mControl->get(), 0);
    }

    raw::Fd openCalls() const { return raw::openCalls(mControl->get()); }

private:
    std::optional<raw::Fd> mControl;
};

TEST_F(APeerThatIsCutOff, SeesItThoughItsEarlierCallsStillWait) {
    probe::Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, android::IBinder::FLAG_ONEWAY));
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    const raw::Fd calls = openCalls();
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(raw::send(calls.get(), raw::packet(words(raw::kOneWay, probe::kAdd))));
    }
    ASSERT_TRUE(raw::send(calls.get(), Bytes(3)));
    EXPECT_TRUE(raw::hangsUp(calls.get()));
    EXPECT_FALSE(raw::send(calls.get(), raw::packet(words(raw::kOneWay, probe::kAdd))));
    probe::ask(mNode, probe::kUnblock);
}

// One binder that is sound and one that is none; then a call with none at all, in the same place.
TEST_F(APeerThatIsCutOff, LeavesNoBinderInTheCallBehindTheOneThatWasRefused) {
    const raw::Pair sound = raw::makePair();
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const Bytes records = raw::joined(raw::record(0, 1001), raw::record(24, 1002));
    for (int i = 0; i < 200; ++i) {
        const raw::Fd calls = openCalls();
        ASSERT_TRUE(raw::send(
            calls.get(),
            raw::packet(words(raw::kOneWay, probe::kAdd, 48, 2), raw::joined(Bytes(48), records)),
            {sound.theirs.get(), null.get()}));
        // It may have hung up by now.
        (void)raw::send(calls.get(),
                        raw::packet(words(raw::kRequest, probe::kKeep, 24), Bytes(24)));
        EXPECT_TRUE(raw::hangsUp(calls.get()));
    }
    probe::Call give;
    ASSERT_EQ(OK, give.to(mNode, probe::kGive));
    EXPECT_TRUE(give.reply.readStrongBinder() == nullptr);
}

TEST_F(APeerThatIsCutOff, HoldsUpNobodyWithRepliesThatItDoesNotTake) {
    voxtrel_test::ChildProcess small = voxtrel_test::ChildProcess::asRole("server", {"small", "1"});
    ASSERT_EQ("ready", small.readLine());
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), "small");
    constexpr int kSockets = 1200;
    const auto begin = std::chrono::steady_clock::now();
    std::vector<raw::Fd> sockets;
    for (int i = 0; i < kSockets; ++i) {
        sockets.push_back(raw::openCalls(control.get()));
        // Each reply takes 60,000 bytes; a socket has room for a few.
        Bytes size(4);
        size[0] = 0x60;
        size[1] = 0xEA;
        for (int request = 0; request < 6; ++request) {
            (void)raw::send(sockets.back().get(),
                            raw::packet(words(raw::kRequest, probe::kBig, 4), size));
        }
    }
    for (const raw::Fd& socket : sockets) {
        ASSERT_TRUE(raw::hangsUp(socket.get()));
    }
    // 100 ms for each of them, on so few threads, were half a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
    EXPECT_EQ(OK, probe::find("small")->pingBinder());
}

}  // namespace
