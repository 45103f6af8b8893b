// SPDX-License-Identifier: Apache-2.0
// What the log says of a call that is too large for a socket's peer, whoever it is.
#include <gtest/gtest.h>

#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using voxtrel_test::ChildProcess;

const voxtrel_test::Role kLimitBreaker("limit-breaker", [](const voxtrel_test::Arguments&) {
    const android::sp<android::IBinder> node = probe::find();
    probe::Call oneWay;
    (void)oneWay.data.writeInplace(520196);
    (void)oneWay.to(node, probe::kNote, android::IBinder::FLAG_ONEWAY);
    probe::Call twoWay;
    (void)twoWay.data.writeInplace(1040388);
    (void)twoWay.to(node, probe::kEcho);
    return 0;
});

using ACallThatIsTooLarge = probe::ProbeTest;

TEST_F(ACallThatIsTooLarge, IsLoggedWithTheLimit) {
    ChildProcess caller = ChildProcess::asRoleWithErrors("limit-breaker");
    const std::string prefix = "binder[" + std::to_string(caller.pid()) + "]: ";
    EXPECT_EQ(prefix +
                  "one-way call 8 of 520196 bytes is not sent: 520192 fit into one, so it has to "
                  "be split (status -2147483646)",
              caller.readLine());
    EXPECT_EQ(prefix +
                  "two-way call 2 of 1040388 bytes is not sent: 1040384 fit into one, so it has to "
                  "be split (status -2147483646)",
              caller.readLine());
    EXPECT_EQ(0, caller.wait());
}

}  // namespace
