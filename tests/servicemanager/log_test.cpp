// SPDX-License-Identifier: Apache-2.0
// What the service manager logs, and how a line's level gets into the journal.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;

namespace {

class TheLog : public ::testing::Test {
protected:
    TheLog() {
        setenv("VOXTREL_BINDER_SOCKET", mFolder.path("binder").c_str(), 1);
        unsetenv("VOXTREL_LOG_LEVEL");
        unsetenv("JOURNAL_STREAM");
    }

    /// What stands in the file that is its standard error, after a life from start to stop.
    /// `before`: what the shell does first; the file is $1.
    std::string ofALife(const std::string& before, const std::string& options = "") {
        const std::string file = mFolder.path("log");
        writeFile(file, "");
        ChildProcess manager({"bash", "-c", "exec 2>>\"$1\"; " + before + " exec \"$0\" " + options,
                              VOXTREL_SERVICEMANAGER, file},
                             "");
        EXPECT_TRUE(eventually([&] { return std::filesystem::exists(mFolder.path("binder")); }));
        manager.kill(SIGTERM);
        EXPECT_EQ(0, manager.finish().status);
        std::filesystem::remove(mFolder.path("binder"));
        return readFile(file);
    }

    const TempFolder mFolder;
};

constexpr const char* kJournal = "export JOURNAL_STREAM=$(stat -c %d:%i \"$1\");";

TEST_F(TheLog, TellsOfTheStartAndTheStop) {
    EXPECT_EQ("voxtrel-servicemanager: ready\nvoxtrel-servicemanager: stopped\n", ofALife(""));
}

TEST_F(TheLog, GivesTheJournalTheLevelOfEachLine) {
    EXPECT_EQ("<6>voxtrel-servicemanager: ready\n<6>voxtrel-servicemanager: stopped\n",
              ofALife(kJournal));
}

TEST_F(TheLog, IsPlainWhereStandardErrorIsNoLongerTheJournals) {
    EXPECT_EQ("voxtrel-servicemanager: ready\nvoxtrel-servicemanager: stopped\n",
              ofALife("export JOURNAL_STREAM=1:1;"));
}

TEST_F(TheLog, IsAsVerboseAsItIsTold) {
    EXPECT_EQ("", ofALife("", "--log-level warning"));
    EXPECT_EQ("", ofALife("export VOXTREL_LOG_LEVEL=0;"));
    EXPECT_NE("", ofALife("export VOXTREL_LOG_LEVEL=0;", "--log-level info"));
}

TEST_F(TheLog, HasErrorsAsErrors) {
    const std::string file = mFolder.path("log");
    const Outcome outcome = ChildProcess({"bash", "-c",
                                          std::string("exec 2>>\"$1\"; ") + kJournal +
                                              "LISTEN_PID=$$ LISTEN_FDS=1 exec \"$0\" </dev/null",
                                          VOXTREL_SERVICEMANAGER, file},
                                         "")
                                .finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(0U, readFile(file).find("<3>voxtrel-servicemanager: ")) << readFile(file);
}

}  // namespace
