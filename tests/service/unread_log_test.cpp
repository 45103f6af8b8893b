// SPDX-License-Identifier: Apache-2.0
// Nobody reads the log, and its pipe is full: the service serves all the same.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>

#include "tests/service/Processes.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

TEST(AServiceWhoseLogNobodyReads, StillServes) {
    const voxtrel_test::TempFolder folder;
    setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
    ChildProcess manager({VOXTREL_SERVICE_MANAGER}, kWithOutput);
    manager.readUntil("voxtrel-servicemanager: ready");
    // The shell fills its pipe of 64 KiB to the last byte.
    ChildProcess service(
        {"/bin/sh", "-c", "head -c 65536 /dev/zero && exec \"$0\" \"$@\"", VOXTREL_SERVICE,
         "--sink", "none", "--log-level", "debug", "--profile", folder.path("voxtrel.ini")},
        kWithOutput);
    for (int i = 0; i < 20; ++i) {
        ChildProcess client(Lines{VOXTREL_SPEECH_CLIENT}, kWithOutput);
        client.say("connect");
        client.readUntil("connect 0");
        client.say("rate " + std::to_string(100 + i));
        client.readUntil("rate 0");
    }
    service.kill(SIGTERM);
    EXPECT_EQ(0, service.wait());
}

}  // namespace
}  // namespace voxtreld
