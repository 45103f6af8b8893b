// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PLATFORM_PROBETEST_H
#define VOXTREL_TESTS_PLATFORM_PROBETEST_H

#include <gtest/gtest.h>

#include "tests/platform/Probe.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateRuntime.h"
#include "tests/support/Roles.h"

namespace probe {

/// A service manager, a process with a test node, and this process holding the node.
class ProbeTest : public testing::Test {
protected:
    void SetUp() override {
        startPool();
        ASSERT_EQ("ready", mServer.readLine());
        mNode = find();
        ASSERT_TRUE(mNode != nullptr);
    }

    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    voxtrel_test::ChildProcess mServer = voxtrel_test::ChildProcess::asRole("server");
    android::sp<android::IBinder> mNode;
};

}  // namespace probe

#endif
