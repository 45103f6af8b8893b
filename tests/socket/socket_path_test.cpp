// SPDX-License-Identifier: Apache-2.0
// Where the service manager's socket is, and what else may be at its place.
#include <binder/ServiceManagerSocket.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "socket/SocketPath.h"
#include "tests/platform/ProbeTest.h"

namespace {

using voxtrel_test::ChildProcess;

using TheServiceManager = probe::ProbeTest;

TEST_F(TheServiceManager, DoesNotReplaceAFileThatIsNoSocket) {
    const std::string path = mRuntime.folder() + "/precious";
    { std::ofstream(path) << "text"; }
    ChildProcess second({"env", "VOXTREL_BINDER_SOCKET=" + path, VOXTREL_SERVICEMANAGER});
    EXPECT_EQ(1, second.wait());
    std::string text;
    std::ifstream(path) >> text;
    EXPECT_EQ("text", text);
    unlink(path.c_str());
    unlink((path + ".lock").c_str());
}

TEST(TheSocketPath, IsTheOneThatTheEnvironmentNames) {
    using android::serviceManagerSocket;
    setenv("VOXTREL_BINDER_SOCKET", "/some/where", 1);
    setenv("XDG_RUNTIME_DIR", "/run/user/9", 1);
    EXPECT_EQ("/some/where", serviceManagerSocket());
    setenv("VOXTREL_BINDER_SOCKET", "", 1);
    EXPECT_EQ("/run/user/9/voxtrel/binder", serviceManagerSocket());
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ("/tmp/voxtrel-" + std::to_string(geteuid()) + "/binder", serviceManagerSocket());
    setenv("VOXTREL_BINDER_SOCKET", "/nonexistent/binder", 1);
}

TEST(TheSocketPath, UnderTmpIsTrustedOnlyInAFolderOfTheUsersOwn) {
    using android::transport::folderIsTrusted;
    EXPECT_TRUE(folderIsTrusted("/anywhere/the/user/says"));
    const std::string folder = "/tmp/voxtrel-" + std::to_string(geteuid());
    const std::string path = folder + "/binder";
    const bool made = mkdir(folder.c_str(), 0700) == 0;
    struct stat old {};
    ASSERT_EQ(0, stat(folder.c_str(), &old));
    ASSERT_EQ(0, chmod(folder.c_str(), 0777));
    EXPECT_FALSE(folderIsTrusted(path));
    ASSERT_EQ(0, chmod(folder.c_str(), 0700));
    EXPECT_TRUE(folderIsTrusted(path));
    if (made) {
        rmdir(folder.c_str());
        EXPECT_FALSE(folderIsTrusted(path));
    } else {
        chmod(folder.c_str(), old.st_mode & 0777U);
    }
}

}  // namespace
