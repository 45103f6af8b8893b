// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/Fd.h"
#include "support/ForkGuard.h"
#include "tests/kernel/OverTheDriver.h"

namespace {

using android::BpBinder;
using android::Parcel;
using android::sp;
using fake_driver::CountsDeaths;
using fake_driver::kHandle;
using fake_driver::OverTheDriver;

using AForkedChildOverTheDriver = OverTheDriver;

// It has no share in its parent's counts, and the driver would take them from the parent.
TEST_F(AForkedChildOverTheDriver, CannotUseTheRuntimeAndTellsTheDriverNothing) {
    static const bool armed =
        (android::transport::armForkGuard(&android::transport::Fd::closeAll), true);
    ASSERT_TRUE(armed);
    sp<BpBinder> proxy = mThread.proxyOf(kHandle);
    mThread.flush();
    const sp<CountsDeaths> recipient = new CountsDeaths();
    ASSERT_EQ(android::OK, proxy->linkToDeath(recipient));
    mDriver.written.clear();
    const pid_t child = fork();
    if (child == 0) {
        const Parcel data;
        const bool refused = proxy->transact(1, data, nullptr) == android::INVALID_OPERATION &&
                             proxy->linkToDeath(recipient) == android::INVALID_OPERATION;
        proxy.clear();
        _exit(refused && mDriver.written.empty() && mDriver.threadExits == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}

}  // namespace
