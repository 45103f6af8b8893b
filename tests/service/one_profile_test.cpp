// SPDX-License-Identifier: Apache-2.0
// One profile serves one service at a time, and loses nothing from one to the next.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "tests/service/Processes.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

bool hasOpen(pid_t pid, const std::string& path) {
    std::error_code ignored;  // files come and go meanwhile
    const std::filesystem::path all = "/proc/" + std::to_string(pid) + "/fd";
    for (const auto& file : std::filesystem::directory_iterator(all, ignored)) {
        if (std::filesystem::read_symlink(file, ignored) == path) {
            return true;
        }
    }
    return false;
}

class AServiceOnAProfile : public testing::Test {
protected:
    AServiceOnAProfile() {
        setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
        manager = startManager();
    }

    Process start() {
        return startProcess({VOXTREL_SERVICE, "--sink", "none", "--profile", profile});
    }
    static void setRate(int rate) {
        const Process client = startClient();
        client->say("rate " + std::to_string(rate));
        client->readUntil("rate 0");
    }
    static void expectRate(int rate) {
        const Process client = startClient();
        client->say("which-rate");
        client->readUntil("which-rate " + std::to_string(rate));
    }
    void expectServiceInSpiteOf(const std::string& reason) {
        const Process service = start();
        const Lines said = service->readUntil("voxtreld: ready");
        EXPECT_EQ("voxtreld: another voxtreld on this profile would not be noticed: cannot lock '" +
                      lock + "': " + reason + "; make that possible, or name another --profile",
                  said.front());
        setRate(123);
        expectRate(123);
    }

    voxtrel_test::TempFolder folder;
    const std::string profile = folder.path("voxtrel.ini");
    const std::string lock = profile + ".lock";
    Process manager;
};

TEST_F(AServiceOnAProfile, IsTheOnlyOneThere) {
    const Process first = start();
    first->readUntil("voxtreld: ready");
    const Process second = start();
    setRate(123);
    const std::string refusal = "voxtreld: another voxtreld uses the profile '" + profile +
                                "': end that one, or name another file with --profile";
    EXPECT_EQ(Lines{refusal}, second->readUntil(refusal));
    EXPECT_EQ(1, second->wait());
    expectRate(123);
    first->kill(SIGKILL);
    EXPECT_EQ(128 + SIGKILL, first->wait());
    const Process next = start();
    next->readUntil("voxtreld: ready");
    expectRate(123);
}

TEST_F(AServiceOnAProfile, TakesOverFromOneThatEndsMeanwhile) {
    for (const int number : {SIGTERM, SIGKILL}) {
        const Process first = start();
        first->readUntil("voxtreld: ready");
        setRate(100 + number);
        const Process second = start();
        first->kill(number);
        EXPECT_EQ((Lines{"voxtreld: ready"}), second->readUntil("voxtreld: ready"));
        expectRate(100 + number);
        setRate(200 + number);
        (void)first->wait();
        second->kill(SIGKILL);
        EXPECT_EQ(128 + SIGKILL, second->wait());
        const Process third = start();
        third->readUntil("voxtreld: ready");
        expectRate(200 + number);
        third->kill(SIGTERM);
        EXPECT_EQ(0, third->wait());
    }
}

TEST_F(AServiceOnAProfile, EndsOnASignalWhileItWaitsForTheOther) {
    const Process first = start();
    first->readUntil("voxtreld: ready");
    const Process service = start();
    EXPECT_TRUE(voxtrel_test::eventually([&] { return hasOpen(service->pid(), lock); }));
    service->kill(SIGTERM);
    service->readUntil("voxtreld: stopped while another voxtreld used the profile");
    EXPECT_EQ(0, service->wait());
}

TEST_F(AServiceOnAProfile, KeepsItsLockFileFromOthersAndInPlace) {
    const Process service = start();
    service->readUntil("voxtreld: ready");
    struct stat status {};
    ASSERT_EQ(0, stat(lock.c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 07777);
    service->kill(SIGTERM);
    EXPECT_EQ(0, service->wait());
    EXPECT_TRUE(std::filesystem::exists(lock)) << "removing it would free it for two";
}

TEST_F(AServiceOnAProfile, ServesAllTheSameWhereItCannotBeLocked) {
    std::filesystem::create_directory(lock);
    expectServiceInSpiteOf("Is a directory");
    std::filesystem::remove(lock);
    voxtrel_test::writeFile(folder.path("precious"), "of somebody else");
    std::filesystem::create_symlink(folder.path("precious"), lock);
    expectServiceInSpiteOf("Too many levels of symbolic links");
    std::filesystem::remove(lock);
    ASSERT_EQ(0, mkfifo(lock.c_str(), 0600));
    expectServiceInSpiteOf("Invalid argument");
}

/// Else a person who edits the profile after a kill would have the journal win over the edit.
TEST_F(AServiceOnAProfile, WritesWhatItFoundInTheJournalIntoTheProfile) {
    const std::string before = "\nversion=2\nspeed=100\n\n";
    voxtrel_test::writeFile(profile, before);
    std::filesystem::create_directories(profile + ".new/in-the-way");  // it stays as it is
    {
        const Process first = start();
        first->readUntil("voxtreld: ready");
        setRate(123);
        first->kill(SIGKILL);
        EXPECT_EQ(128 + SIGKILL, first->wait());
    }
    EXPECT_EQ(before, voxtrel_test::readFile(profile));
    EXPECT_NE("", voxtrel_test::readFile(profile + ".journal"));
    std::filesystem::remove_all(profile + ".new");
    const Process second = start();
    second->readUntil("voxtreld: ready");
    EXPECT_TRUE(voxtrel_test::eventually([&] {
        return voxtrel_test::readFile(profile).find("\nspeed=123\n") != std::string::npos &&
               voxtrel_test::readFile(profile + ".journal").empty();
    }));
    second->kill(SIGKILL);
    EXPECT_EQ(128 + SIGKILL, second->wait());
    voxtrel_test::writeFile(profile, "\nversion=2\nspeed=200\n\n");
    const Process third = start();
    third->readUntil("voxtreld: ready");
    expectRate(200);
}

}  // namespace
}  // namespace voxtreld
