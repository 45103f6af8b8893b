// SPDX-License-Identifier: Apache-2.0
// Nobody reads the log, and its pipe is full: the service serves all the same.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>

#include "tests/service/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

using Lines = ChildProcess::Lines;

TEST(AServiceWhoseLogNobodyReads, StillServes) {
    const voxtrel_test::TempFolder folder;
    setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
    ChildProcess manager({VOXTREL_SERVICE_MANAGER});
    manager.readUntil("voxtrel-servicemanager: ready");
    // The shell fills its pipe of 64 KiB to the last byte.
    ChildProcess service({"/bin/sh", "-c", "head -c 65536 /dev/zero && exec \"$0\" \"$@\"",
                          VOXTREL_SERVICE, "--sink", "none", "--log-level", "debug", "--profile",
                          folder.path("voxtrel.ini")});
    for (int i = 0; i < 20; ++i) {
        ChildProcess client(Lines{VOXTREL_SPEECH_CLIENT});
        client.tell("connect");
        client.readUntil("connect 0");
        client.tell("rate " + std::to_string(100 + i));
        client.readUntil("rate 0");
    }
    service.signal(SIGTERM);
    EXPECT_EQ(0, service.wait());
}

}  // namespace
}  // namespace voxtreld
