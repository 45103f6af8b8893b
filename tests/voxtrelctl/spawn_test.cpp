// SPDX-License-Identifier: Apache-2.0
// `voxtrelctl --spawn`: a person who has started nothing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Spawned.h"

using namespace voxtrel_test;

namespace {

bool holds(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

std::string descriptorOf(pid_t pid, int number) {
    return std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/fd/" +
                                         std::to_string(number));
}

void expectToBeOnItsOwn(pid_t pid, const std::string& log) {
    EXPECT_EQ(pid, getsid(pid));
    EXPECT_EQ("/dev/null", descriptorOf(pid, 0));
    EXPECT_EQ(log, descriptorOf(pid, 1));
    EXPECT_EQ(log, descriptorOf(pid, 2));
}

TEST(Spawning, StartsWhatIsMissingAndSpeaks) {
    const EmptyHome home;
    const Outcome outcome = EmptyHome::spawn({"say", "--wait", "Hello."})->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_NE(std::string::npos, outcome.out.find("finished 1\n")) << outcome.out;
    for (const char* program : {"voxtreld", "voxtrel-servicemanager"}) {
        const auto found = home.running(program);
        ASSERT_EQ(1U, found.size()) << program;
        expectToBeOnItsOwn(found[0], home.path("state/voxtrel/") + program + ".log");
        EXPECT_TRUE(holds(commandLineOf(found[0]), "--exit-when-idle"));
        // It can be used a moment before it says so.
        EXPECT_TRUE(eventually([&] {
            return home.logOf(program).find(program + std::string(": ready\n")) == 0;
        })) << home.logOf(program);
    }
    // The profile is written by a thread of its own.
    EXPECT_TRUE(eventually(
        [&] { return std::filesystem::exists(home.path("state/voxtrel/voxtrel.ini")); }));
    struct stat status {};
    ASSERT_EQ(0, stat(home.path("state/voxtrel").c_str(), &status));
    EXPECT_EQ(0700U, status.st_mode & 07777);
}

TEST(Spawning, StartsNothingThatIsThere) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome outcome = device.ctl({"--spawn", "say", "--wait", "Hello."});
    EXPECT_EQ(0, outcome.status) << outcome.err;
}

TEST(Spawning, StartsOnlyTheServiceWhereThereIsAManager) {
    const EmptyHome home;
    const ChildProcess manager({VOXTREL_SERVICEMANAGER_PROGRAM}, "");
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(home.path("binder")); }));
    const Outcome outcome = EmptyHome::spawn({"status"})->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ(std::vector<pid_t>{manager.pid()}, home.running("voxtrel-servicemanager"));
    EXPECT_EQ(1U, home.running("voxtreld").size());
}

TEST(Spawning, WaitsForTheServiceOfWhoStartedTheManager) {
    const EmptyHome home;
    const ChildProcess manager({VOXTREL_SERVICEMANAGER_PROGRAM}, "");
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(home.path("binder")); }));
    const auto speaker = EmptyHome::spawn({"say", "--wait", "Hello."});
    ASSERT_TRUE(speaker->awaitError("waiting for a service that may be about to start"));
    EXPECT_TRUE(home.running("voxtreld").empty());
    const ChildProcess service({VOXTREL_SERVICE_PROGRAM, "--user-profile"}, "");
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ(std::vector<pid_t>{service.pid()}, home.running("voxtreld"));
    EXPECT_FALSE(std::filesystem::exists(home.path("state/voxtrel/voxtreld.log")));
}

TEST(Spawning, DoesNotWaitForAnotherServiceBesideItsOwnManager) {
    const EmptyHome home;
    const Outcome outcome = EmptyHome::spawn({"status"})->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ(std::string::npos, outcome.err.find("may be about to start")) << outcome.err;
}

TEST(Spawning, LeavesAServiceThatHangsToTheCommand) {
    Device device;
    device.startService({"--sink", "none"});
    ASSERT_EQ(0, kill(device.servicePid(), SIGSTOP));
    const Outcome outcome = device.ctl({"--spawn", "doctor"});
    ASSERT_EQ(0, kill(device.servicePid(), SIGCONT));
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.out.find("!!  answer")) << outcome.out;
}

TEST(Spawning, LeavesAPipeAlone) {
    const EmptyHome home;
    const Outcome outcome =
        ChildProcess(
            {"bash", "-c", "exec 7>&1; \"$0\" --spawn say 'Hello.' 2>&1 | cat", Device::control()},
            "")
            .finish();
    EXPECT_EQ(0, outcome.status) << "the pipe ends with voxtrelctl, so this is no timeout";
    EXPECT_EQ(1U, home.running("voxtreld").size());
}

TEST(Spawning, ByManyAtOnceStartsOneOfEach) {
    const EmptyHome home;
    std::vector<std::unique_ptr<ChildProcess>> all;
    for (int i = 0; i < 6; ++i) {
        all.push_back(EmptyHome::spawn({"say", "--wait", "Me too."}));
    }
    for (const auto& each : all) {
        const Outcome outcome = each->finish();
        EXPECT_EQ(0, outcome.status) << outcome.err;
    }
    EXPECT_EQ(1U, home.running("voxtreld").size());
    EXPECT_EQ(1U, home.running("voxtrel-servicemanager").size());
    EXPECT_EQ("voxtrel-servicemanager: ready\n",
              home.logOf("voxtrel-servicemanager").substr(0, 30));
    EXPECT_EQ(std::string::npos, home.logOf("voxtrel-servicemanager").find("replaced"));
}

TEST(Spawning, FindsAServiceAgainThatHasDied) {
    const EmptyHome home;
    ASSERT_EQ(0, EmptyHome::spawn({"status"})->finish().status);
    const auto first = home.running("voxtreld");
    ASSERT_EQ(1U, first.size());
    kill(first[0], SIGKILL);
    const Outcome outcome = EmptyHome::spawn({"say", "--wait", "Again."})->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    ASSERT_TRUE(eventually([&] { return home.running("voxtreld").size() == 1; }));
    EXPECT_NE(first, home.running("voxtreld"));
}

TEST(Spawning, EndsTheServiceWithItsManagerAndStartsBothAgain) {
    const EmptyHome home;
    ASSERT_EQ(0, EmptyHome::spawn({"status"})->finish().status);
    const auto manager = home.running("voxtrel-servicemanager");
    ASSERT_EQ(1U, manager.size());
    kill(manager[0], SIGKILL);
    ASSERT_TRUE(eventually([&] { return home.running("voxtreld").empty(); }));
    const Outcome outcome = EmptyHome::spawn({"say", "--wait", "Again."})->finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
}

TEST(Spawning, IsWhatTheExampleDoesWhenAsked) {
    const EmptyHome home;
    const Outcome outcome =
        ChildProcess({VOXTREL_EXAMPLE_PROGRAM, "--spawn", "Hello."}, "").finish();
    EXPECT_EQ(0, outcome.status) << outcome.err;
    EXPECT_EQ("spoken\n", outcome.out);
    EXPECT_EQ(1U, home.running("voxtreld").size());
}

TEST(Spawning, SaysWhyTheServiceDoesNotStart) {
    const EmptyHome home;
    writeFile(home.path("asound.conf"), "");
    const Outcome outcome = EmptyHome::spawn({"say", "Hello."})->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(0U, lastLine(outcome.err)
                      .find("voxtrelctl: -8 service not found: voxtreld has ended: "
                            "voxtreld: "))
        << outcome.err;
    EXPECT_NE(std::string::npos,
              outcome.err.find(": see " + home.path("state/voxtrel/voxtreld.log\n")))
        << outcome.err;
}

// It said which profile the service had read.
TEST(Spawning, SaysWhyTheServiceDoesNotStartAgain) {
    const EmptyHome home;
    ASSERT_EQ(0, EmptyHome::spawn({"status"})->finish().status);
    const std::string profile = home.path("state/voxtrel/voxtrel.ini");
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(profile); }));
    kill(home.running("voxtreld").at(0), SIGTERM);
    ASSERT_TRUE(eventually([&] { return home.running("voxtreld").empty(); }));
    writeFile(home.path("asound.conf"), "");
    const Outcome outcome = EmptyHome::spawn({"say", "Hello."})->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos,
              outcome.err.find("voxtreld has ended: voxtreld: no sound on the audio device"))
        << outcome.err;
}

TEST(Spawning, SaysWhyTheManagerDoesNotStart) {
    const EmptyHome home;
    writeFile(home.path("binder"), "somebody's file");
    const Outcome outcome = EmptyHome::spawn({"say", "Hello."})->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.err.find("voxtrel-servicemanager has ended: "))
        << outcome.err;
    EXPECT_NE(std::string::npos,
              outcome.err.find(home.path("binder") + " is there already, and is no socket"))
        << outcome.err;
}

TEST(Spawning, SaysWhichProgramIsMissing) {
    const EmptyHome home;
    setenv("PATH", "/nowhere:/usr/share", 1);
    const Outcome outcome = EmptyHome::spawn({"say", "Hello."})->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos,
              outcome.err.find("-8 service not found: voxtrel-servicemanager is neither in "))
        << outcome.err;
}

TEST(Spawning, EndsAtOnceOnCtrlCWhileItWaitsForAnother) {
    const EmptyHome home;
    const int lock = open(home.path("binder.spawn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(0, flock(lock, LOCK_EX));
    const auto waiting = EmptyHome::spawn({"say", "Hello."});
    ASSERT_TRUE(waiting->awaitError("waiting for another voxtrelctl that starts the service"));
    waiting->kill(SIGINT);
    const Outcome outcome = waiting->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.err.find("voxtrelctl: interrupted\n"));
    EXPECT_TRUE(home.running("voxtrel-servicemanager").empty());
    close(lock);
}

TEST(Spawning, LetsASignalEndTheCommandThatReadsItsText) {
    const EmptyHome home;
    ASSERT_EQ(0, mkfifo(home.path("text").c_str(), 0600));
    const int text = open(home.path("text").c_str(), O_RDWR | O_CLOEXEC);  // never ends
    const auto speaker = EmptyHome::spawn({"say", "--file", home.path("text")});
    ASSERT_TRUE(eventually([&] { return !home.running("voxtreld").empty(); }));
    EXPECT_TRUE(eventually([&] { return !speaker->blocks(SIGTERM); }));
    speaker->kill(SIGTERM);
    EXPECT_EQ(128 + SIGTERM, speaker->finish().status);
    close(text);
}

TEST(Spawning, PutsALongLogAside) {
    const EmptyHome home;
    std::filesystem::create_directories(home.path("state/voxtrel"));
    writeFile(home.path("state/voxtrel/voxtreld.log"), std::string(300'000, '\n'));
    ASSERT_EQ(0, EmptyHome::spawn({"status"})->finish().status);
    EXPECT_TRUE(eventually([&] { return home.logOf("voxtreld") == "voxtreld: ready\n"; }))
        << home.logOf("voxtreld");
    EXPECT_EQ(300'000U, readFile(home.path("state/voxtrel/voxtreld.log.old")).size());
}

}  // namespace
