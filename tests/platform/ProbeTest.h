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

    // The test node gets so many notes, one at a time and in the order of their numbers.
    void expectInOrder(int count) {
        EXPECT_TRUE(voxtrel_test::eventually([&] { return ask(mNode, kNotes) >= count; }));
        Call notes;
        ASSERT_EQ(android::OK, notes.to(mNode, kNotes));
        EXPECT_EQ(count, notes.reply.readInt32());
        EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
        EXPECT_EQ(0, notes.reply.readInt32()) << "at once";
    }

    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    voxtrel_test::ChildProcess mServer = voxtrel_test::ChildProcess::asRole("server");
    android::sp<android::IBinder> mNode;
};

}  // namespace probe

#endif
