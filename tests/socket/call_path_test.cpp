// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using ATwoWayCall = probe::ProbeTest;

// A call that hangs cannot be given up: it ends the test's process.
status_t within60s(const std::function<status_t()>& attempt) {
    auto outcome = std::async(std::launch::async, attempt);
    if (outcome.wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
        ADD_FAILURE() << "a call hangs";
        std::abort();
    }
    return outcome.get();
}

status_t unblock(const sp<IBinder>& node) {
    return within60s([&node] {
        Call call;
        return call.to(node, probe::kUnblock);
    });
}

status_t sendBytes(const sp<IBinder>& node, size_t size) {
    Call call;
    call.data.writeInplace(size);
    return call.to(node, probe::kAdd, IBinder::FLAG_ONEWAY);
}

// Leaves a large one-way call at the node; tells how that went.
const voxtrel_test::Role kLargeSender("large-sender", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    voxtrel_test::tell(std::to_string(sendBytes(node, 520192)));
    return 0;
});

TEST_F(ATwoWayCall, CarriesAtMostSixtyFourBinders) {
    const sp<IBinder> binder = new android::BBinder();
    Call fits;
    for (int i = 0; i < 64; ++i) {
        fits.data.writeStrongBinder(binder);
    }
    EXPECT_EQ(OK, fits.to(mNode, probe::kKeep));
    fits.data.writeStrongBinder(binder);
    EXPECT_EQ(android::FAILED_TRANSACTION, fits.to(mNode, probe::kKeep));
}

TEST_F(ATwoWayCall, OvertakesAOneWayCallThatWaitsForIt) {
    struct Case {
        int count;
        size_t size;
    };
    // Around the numbers and sizes at which a connection is not read on.
    for (const Case& ahead : {Case{1, 520192}, Case{1, 16384}, Case{1, 16388}, Case{8, 4096},
                              Case{4, 260096}, Case{8, 16384}, Case{9, 16384}, Case{8, 4},
                              Case{9, 4}, Case{16, 4}, Case{17, 4}, Case{40, 4}}) {
        Call block;
        const int32_t before = probe::ask(mNode, probe::kBlockedEver);
        ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
        for (int i = 0; i < ahead.count; ++i) {
            ASSERT_EQ(OK, sendBytes(mNode, ahead.size)) << ahead.count << " of " << ahead.size;
        }
        EXPECT_TRUE(eventually([&] {
            return within60s([this] { return probe::ask(mNode, probe::kBlockedEver); }) > before;
        }));
        EXPECT_EQ(OK, unblock(mNode)) << ahead.count << " of " << ahead.size;
    }
}

TEST_F(ATwoWayCall, OvertakesWhenAnotherConnectionIsNotReadOn) {
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    ChildProcess sender = ChildProcess::asRole("large-sender");
    ASSERT_EQ("0", sender.readLine());
    ASSERT_EQ(OK, sendBytes(mNode, 4));
    EXPECT_EQ(OK, unblock(mNode));
}

TEST_F(ATwoWayCall, OvertakesOnAConnectionThatWasFullBefore) {
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    for (int i = 0; i < 14; ++i) {
        ASSERT_EQ(OK, sendBytes(mNode, 4));
    }
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    ASSERT_EQ(OK, sendBytes(mNode, 4));
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlockedEver) == 1; }));
    EXPECT_EQ(OK, unblock(mNode));
    EXPECT_TRUE(eventually([this] {
        return within60s([this] { return probe::ask(mNode, probe::kBlockedEver); }) == 2;
    }));
    EXPECT_EQ(OK, unblock(mNode));
}

}  // namespace
