// SPDX-License-Identifier: Apache-2.0
// What another process or the driver waits for is written before a call is served, which may take
// long.
#include <binder/Binder.h>
#include <gtest/gtest.h>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BBinder;
using android::BpBinder;
using android::Parcel;
using android::sp;
using fake_driver::bytesOf;
using fake_driver::CountsDeaths;
using fake_driver::kComplete;
using fake_driver::kHandle;
using fake_driver::kNoop;
using fake_driver::OverTheDriver;
using fake_driver::Scripted;

class WhatOthersWaitFor : public OverTheDriver {
protected:
    // How many of these commands had been written when the call that was read behind `before` was
    // served.
    size_t writtenWhenServed(uint32_t command, fake_driver::Bytes before,
                             const binder_transaction_data& transaction) {
        size_t count = 0;
        const sp<Scripted> node = new Scripted([&](const Parcel&, Parcel*) {
            count = mDriver.count(command);
            return android::OK;
        });
        const auto call = bytesOf(uint32_t{BR_TRANSACTION}, callTo(*node, transaction));
        before.insert(before.end(), call.begin(), call.end());
        mDriver.willRead(before);
        mDriver.willRead(bytesOf(kNoop, kComplete));
        serve();
        EXPECT_TRUE(mDriver.reads.empty());
        return count;
    }
};

TEST_F(WhatOthersWaitFor, IsTheAnswerToAnAcquire) {
    const sp<BBinder> held = new BBinder();
    const auto before = bytesOf(kNoop, uint32_t{BR_ACQUIRE}, wordsOf(*held));
    EXPECT_EQ(1U, writtenWhenServed(BC_ACQUIRE_DONE, before, delivered({})));
    held->decStrong(this);  // the driver's
}

TEST_F(WhatOthersWaitFor, IsTheAnswerToADeath) {
    const sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    const auto request = mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>();
    const binder_uintptr_t cookie = request.cookie;
    const auto before = bytesOf(kNoop, uint32_t{BR_DEAD_BINDER}, cookie);
    EXPECT_EQ(1U, writtenWhenServed(BC_DEAD_BINDER_DONE, before, delivered({})));
    EXPECT_EQ(1, recipient->deaths());
}

TEST_F(WhatOthersWaitFor, IsTheAcquireOfAHandleThatTheCallBrings) {
    auto transaction = deliveredBinder(android::kernel::flatHandle(3));
    EXPECT_EQ(1U, writtenWhenServed(BC_ACQUIRE, bytesOf(kNoop), transaction));
    mDriver.written.clear();
    transaction.flags = TF_ONE_WAY;
    EXPECT_EQ(1U, writtenWhenServed(BC_ACQUIRE, bytesOf(kNoop), transaction));
}

TEST_F(WhatOthersWaitFor, IsALargeBufferOfTheCallAndNotASmallOne) {
    const auto large = delivered(std::vector<int32_t>(1024));
    EXPECT_EQ(1U, writtenWhenServed(BC_FREE_BUFFER, bytesOf(kNoop), large));
    mDriver.written.clear();
    EXPECT_EQ(0U, writtenWhenServed(BC_FREE_BUFFER, bytesOf(kNoop), delivered({1})));
}

}  // namespace
