// SPDX-License-Identifier: Apache-2.0
// The service as a process that somebody else starts, and that ends by itself.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <memory>

#include "tests/service/Processes.h"
#include "tests/support/Eventually.h"
#include "tests/support/NotifySocket.h"
#include "tests/support/TempFolder.h"
#include "vocabulary/Events.h"

using namespace TTS;

namespace voxtreld {
namespace {

using voxtrel_test::NotifySocket;

class AServiceOfAUser : public testing::Test {
protected:
    AServiceOfAUser() {
        setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
        unsetenv("VOXTREL_LOG_LEVEL");
        manager = startManager();
    }

    Process start(const Lines& options, const std::string& sink = "none") {
        Lines command = {VOXTREL_SERVICE, "--sink", sink};
        command.insert(command.end(), options.begin(), options.end());
        return startProcess(command);
    }
    Process startWithProfile(Lines options, const std::string& sink = "none") {
        options.insert(options.end(), {"--profile", folder.path("voxtrel.ini")});
        return start(options, sink);
    }

    voxtrel_test::TempFolder folder;
    Process manager;
};

/// Written by a thread of its own, which readiness does not wait for.
void expectProfile(const std::string& path) {
    std::error_code none;
    EXPECT_TRUE(voxtrel_test::eventually([&] {
        const uintmax_t size = std::filesystem::file_size(path, none);
        return !none && size > 0;
    })) << path;
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST_F(AServiceOfAUser, KeepsItsProfileInTheUsersStateFolder) {
    setenv("HOME", folder.path("home").c_str(), 1);
    setenv("XDG_STATE_HOME", folder.path("state").c_str(), 1);
    const Process service = start({"--user-profile"});
    expectProfile(folder.path("state/voxtrel/voxtrel.ini"));
    EXPECT_EQ(0700U, modeOf(folder.path("state/voxtrel")));
}

TEST_F(AServiceOfAUser, KeepsItInTheHomeFolderWhenThereIsNoOtherWord) {
    std::filesystem::create_directory(folder.path("home"));
    setenv("HOME", folder.path("home").c_str(), 1);
    for (const char* word : {"", "relative/path"}) {
        setenv("XDG_STATE_HOME", word, 1);
        {
            const Process service = start({"--user-profile"});
            expectProfile(folder.path("home/.local/state/voxtrel/voxtrel.ini"));
            EXPECT_EQ(0700U, modeOf(folder.path("home/.local/state/voxtrel")));
        }
        std::filesystem::remove_all(folder.path("home/.local"));
    }
    EXPECT_FALSE(std::filesystem::exists("relative"));
}

TEST_F(AServiceOfAUser, WithoutAFolderForItsProfileSaysSoAndLeaves) {
    voxtrel_test::writeFile(folder.path("file"), "");
    setenv("XDG_STATE_HOME", folder.path("file").c_str(), 1);
    const Process service = start({"--user-profile"});
    service->readUntil("voxtreld: cannot make " + folder.path("file") +
                       "/voxtrel for the settings: Not a directory: set XDG_STATE_HOME, or name a "
                       "file with --profile");
    EXPECT_EQ(1, service->wait());
}

#ifdef VOXTREL_HAVE_SYSTEMD
TEST_F(AServiceOfAUser, SaysThatItIsReadyWhenItCanSpeak) {
    const NotifySocket systemd(folder.path("notify"));
    const Process service = startWithProfile({});
    EXPECT_EQ("READY=1\nSTATUS=Ready to speak", systemd.next());
    const Process client = startClient();
    client->say("say 1 At once.");
    client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 1 0");
    EXPECT_FALSE(systemd.hasMessage());
}

TEST_F(AServiceOfAUser, SaysNothingWhenItCannotBeFound) {
    const NotifySocket systemd(folder.path("notify"));
    manager->kill(SIGTERM);
    EXPECT_EQ(0, manager->wait());
    const Process service = startWithProfile({});
    EXPECT_EQ(1, service->wait());
    EXPECT_FALSE(systemd.hasMessage());
}

TEST_F(AServiceOfAUser, SaysNothingWhenItCannotBeHeard) {
    const NotifySocket systemd(folder.path("notify"));
    const Process service = startWithProfile({"--background", "/nowhere/music.wav"});
    EXPECT_EQ(1, service->wait());
    EXPECT_FALSE(systemd.hasMessage());
}
#endif

TEST_F(AServiceOfAUser, LeavesWhenItHasBeenIdle) {
    const Process service = startWithProfile({"--exit-when-idle", "1"});
    service->readUntil("voxtreld: idle");
    EXPECT_EQ(0, service->wait());
}

TEST_F(AServiceOfAUser, StaysForAClientThatSaysNothing) {
    // Long enough for a client that comes slowly.
    const Process service = startWithProfile({"--exit-when-idle", "5"});
    const Process client = startClient();
    // Another service, elsewhere, shows when the time has been long enough.
    {
        const voxtrel_test::TempFolder elsewhere;
        setenv("VOXTREL_BINDER_SOCKET", elsewhere.path("binder").c_str(), 1);
        ChildProcess other({VOXTREL_SERVICE_MANAGER, "--exit-when-idle", "6"}, kWithOutput);
        other.readUntil("voxtrel-servicemanager: idle");
    }
    client->say("say 1 Still there?");
    client->readUntil("event " + std::to_string(EVENT_FINISHED) + " 1 0");
    client->say("disconnect");
    client->readUntil("disconnect 0");
    service->readUntil("voxtreld: idle");
    EXPECT_EQ(0, service->wait());
}

TEST_F(AServiceOfAUser, SpeaksToTheEndBeforeItLeaves) {
    const std::string wav = folder.path("speech.wav");
    const Process service =
        startWithProfile({"--real-time", "--exit-when-idle", "1"}, "wav:" + wav);
    const Process client = startClient();
    client->say("say 1 A sentence that takes longer than the second that the service would wait.");
    client->say("disconnect");
    client->readUntil("disconnect 0");
    client->kill(SIGKILL);
    service->readUntil("voxtreld: idle");
    EXPECT_EQ(0, service->wait());
    constexpr uintmax_t kSecond = 22050 * 2;  // bytes
    EXPECT_GT(std::filesystem::file_size(wav), 2 * kSecond) << "the sentence takes 2.3 s";
}

TEST_F(AServiceOfAUser, ThatWouldEndByItselfEndsWithItsServiceManager) {
    const Process service = startWithProfile({"--exit-when-idle", "3600"});
    service->readUntil("voxtreld: ready");
    manager->kill(SIGKILL);
    service->readUntil("voxtreld: the service manager has died");
    EXPECT_EQ(0, service->wait());
}

TEST_F(AServiceOfAUser, LogsClientsThatComeAndGoForWhoWantsToKnow) {
    const Process service = startWithProfile({"--log-level", "debug"});
    const Process client = startClient();
    const std::string who = "voxtreld: process " + std::to_string(client->pid());
    service->readUntil(who + " of user " + std::to_string(getuid()) + " has come");
    client->kill(SIGKILL);
    service->readUntil(who + " has died");
}

TEST_F(AServiceOfAUser, LogsNoClientsOtherwise) {
    const Process service = startWithProfile({});
    {
        const Process client = startClient();
        client->say("disconnect");
        client->readUntil("disconnect 0");
    }
    service->kill(SIGTERM);
    const Lines lines = service->readUntil("voxtreld: stopped");
    EXPECT_EQ((Lines{"voxtreld: ready", "voxtreld: stopped"}), lines);
}

}  // namespace
}  // namespace voxtreld
