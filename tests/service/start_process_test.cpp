// SPDX-License-Identifier: Apache-2.0
// A service that cannot start as it was told.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/service/RunningService.h"
#include "tests/support/TempFolder.h"
#include "vocabulary/Events.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// The end of a service that was given this policy.
std::string endOfAServiceWith(const std::string& policy) {
    const voxtrel_test::TempFolder place;
    setenv("VOXTREL_BINDER_SOCKET", place.path("binder").c_str(), 1);
    voxtrel_test::writeFile(place.path("policy"), policy);
    ChildProcess service({VOXTREL_SERVICE, "--profile", place.path("voxtrel.ini"), "--sink", "none",
                          "--policy", place.path(policy.empty() ? "missing" : "policy")},
                         kWithOutput);
    std::string end = service.readUntil([](const std::string&) { return true; }).back();
    EXPECT_EQ(1, service.wait());
    EXPECT_FALSE(std::filesystem::exists(place.path("voxtrel.ini")));
    return end.replace(end.find(place.path("")), place.path("").size(), "");
}

TEST(AServiceWithAPolicy, DoesNotStartWhereItHasAMistakeOrIsMissing) {
    EXPECT_EQ("voxtreld: policy:2: there is no user 'no-such-user': see voxtreld-policy(5)",
              endOfAServiceWith("any connect\nuser no-such-user speak\n"));
    EXPECT_EQ(
        "voxtreld: missing: cannot read the policy: No such file or directory: name another "
        "file with --policy",
        endOfAServiceWith(""));
}

TEST_F(ARunningService, ThatCannotUseItsSinkSaysSoAndLeaves) {
    const Process service = startService({"--sink", "wav:/nowhere/x.wav"});
    service->readUntil([](const std::string& line) {
        return line.find("voxtreld: cannot write the sound file '/nowhere/x.wav'") == 0;
    });
    EXPECT_EQ(1, service->wait());
}

TEST_F(ARunningService, WhoseProfileIsNoFileSaysSoAndLeaves) {
    ASSERT_EQ(0, mkfifo(folder.path("fifo").c_str(), 0600));
    ASSERT_EQ(0, mkdir(folder.path("folder").c_str(), 0700));
    const std::vector<std::pair<std::string, std::string>> cases = {
        {folder.path("fifo"), "a FIFO"},
        {folder.path("folder"), "a folder"},
        {folder.path("binder"), "a socket"},
        {"/dev/null", "a device"}};
    for (const auto& [path, kind] : cases) {
        const Process service = startService({"--sink", "none", "--profile", path});
        const Lines said =
            service->readUntil("voxtreld: the profile '" + path + "' is " + kind +
                               " and cannot keep settings: name a file with --profile");
        EXPECT_EQ(1U, said.size());
        EXPECT_EQ(1, service->wait());
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(ARunningService, WithTooFewDescriptorsSaysSoAndLeaves) {
    const auto start = [&](const std::string& limit) {
        return startProcess({"/bin/sh", "-c", "ulimit " + limit + " && exec \"$0\" \"$@\"",
                             VOXTREL_SERVICE, "--profile", folder.path("voxtrel.ini"), "--sink",
                             "none"});
    };
    const Process refused = start("-n 64");
    refused->readUntil(
        "voxtreld: only 64 files may be open, and serving clients takes 256: raise the limit "
        "(ulimit -n, LimitNOFILE=)");
    EXPECT_EQ(1, refused->wait());
    // As few as it says that it takes, and few at first where more are allowed.
    for (const char* limit : {"-n 256", "-Sn 64"}) {
        const Process service = start(limit);
        const Process ann = startClient();
        const Process bob = startClient();
        bob->say("say 1 Hello.");
        bob->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    }
}

}  // namespace
}  // namespace voxtreld
