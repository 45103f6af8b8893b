// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/PrivateRuntime.h"

namespace {

using Lines = std::vector<std::string>;

/// What a command of the shell printed, and how it ended.
struct Ended {
    int status = -1;
    Lines lines;
};

Ended run(const std::string& command) {
    Ended ended;
    FILE* output = popen(command.c_str(), "re");
    if (output == nullptr) {
        return ended;
    }
    std::string line;
    for (int c = fgetc(output); c != EOF; c = fgetc(output)) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        ended.lines.push_back(line);
        line.clear();
    }
    const int how = pclose(output);
    ended.status = WIFEXITED(how) ? WEXITSTATUS(how) : -1;
    return ended;
}

std::string wordsOf(const Ended& ended) {
    std::string words;
    for (const std::string& line : ended.lines) {
        words += line + "\n";
    }
    return words;
}

/// The first word of the line about a row.
std::string verdictOn(const std::string& row, const Ended& ended) {
    for (const std::string& line : ended.lines) {
        std::istringstream words(line);
        std::string verdict;
        std::string name;
        words >> verdict >> name;
        if (name == row) {
            return verdict;
        }
    }
    return "none";
}

class ThePlatformCheck : public testing::Test {
protected:
    voxtrel_test::PrivateRuntime runtime{VOXTREL_SERVICEMANAGER};
};

TEST_F(ThePlatformCheck, PassesOverTheStandIn) {
    const Ended ended = run(VOXTREL_PLATFORM_CHECK);
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("34 ok, 0 differ, 0 wrong, 0 unseen, 1 untried", ended.lines.back())
        << wordsOf(ended);
}

TEST_F(ThePlatformCheck, SeesTheMannersOfADriverAndToleratesThem) {
    const Ended ended = run("VOXTREL_BINDER_MANNERS=driver " VOXTREL_PLATFORM_CHECK);
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("33 ok, 1 differ, 0 wrong, 0 unseen, 1 untried", ended.lines.back())
        << wordsOf(ended);
    EXPECT_EQ("differs", verdictOn("absent-names", ended));
    const std::string words = wordsOf(ended);
    EXPECT_TRUE(std::regex_search(
        words, std::regex("calling-identity +the caller's pid and uid; one-way pid 0 and uid")))
        << words;
    EXPECT_FALSE(std::regex_search(words, std::regex("overtaking +overtook in 0 of"))) << words;
}

TEST_F(ThePlatformCheck, FailsWhereARowCannotBeChecked) {
    runtime.killManager();
    const Ended ended = run(VOXTREL_PLATFORM_CHECK " calls-at-once service-manager");
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("UNSEEN", verdictOn("calls-at-once", ended)) << wordsOf(ended);
    EXPECT_EQ("ok", verdictOn("service-manager", ended)) << wordsOf(ended);
}

/// The check over a runtime that is wrong in `row`.
std::string checkOfWrong(const std::string& row) {
    return "LD_PRELOAD=" VOXTREL_WRONG_RUNTIME " VOXTREL_WRONG_ROW=" + row +
           " " VOXTREL_PLATFORM_CHECK " ";
}

// Without /proc, or under an emulator of one program, each row was WRONG.
TEST_F(ThePlatformCheck, BlamesNotTheRuntimeWhereItCannotRunItself) {
    const Ended ended = run(checkOfWrong("cannot-be-run") + "bytes-left");
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("UNSEEN", verdictOn("bytes-left", ended)) << wordsOf(ended);
}

// It was UNSEEN, for want of /proc.
TEST_F(ThePlatformCheck, SeesARuntimeThatLacksAFunction) {
    const Ended ended = run(checkOfWrong("lacks-a-function") + "bytes-left");
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("WRONG", verdictOn("bytes-left", ended)) << wordsOf(ended);
    EXPECT_NE(std::string::npos, wordsOf(ended).find("exited with status 127")) << wordsOf(ended);
}

TEST_F(ThePlatformCheck, IsNotMisledByWhatThePlatformLogsToStandardOutput) {
    const Ended ended = run("VOXTREL_TALKATIVE=1 " + checkOfWrong("unknown-codes") +
                            "one-way-calls unknown-codes absent-names --verbose 2>/dev/null");
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("ok", verdictOn("one-way-calls", ended)) << wordsOf(ended);
    EXPECT_EQ("WRONG", verdictOn("unknown-codes", ended)) << wordsOf(ended);
    EXPECT_EQ("ok", verdictOn("absent-names", ended)) << wordsOf(ended);
    EXPECT_EQ(5U, ended.lines.size()) << wordsOf(ended);
}

class AHangingPlatform : public ThePlatformCheck,
                         public testing::WithParamInterface<std::string> {};

TEST_P(AHangingPlatform, EndsInARow) {
    const Ended ended = run(checkOfWrong(GetParam()) + "--deadline 1 bytes-left");
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("WRONG", verdictOn("bytes-left", ended)) << wordsOf(ended);
    EXPECT_NE(std::string::npos, wordsOf(ended).find("no end within 1 s")) << wordsOf(ended);
}

INSTANTIATE_TEST_SUITE_P(AtStartAndAtExit, AHangingPlatform,
                         testing::Values("hangs-at-start", "hangs-at-exit"),
                         [](const testing::TestParamInfo<std::string>& hang) {
                             return hang.param == "hangs-at-start" ? "Start" : "Exit";
                         });

/// The command that kills the service manager, starts another, and waits for it.
std::string restartOf(voxtrel_test::PrivateRuntime& runtime) {
    return " --restart-manager 'kill -9 " + std::to_string(runtime.manager().pid()) + "; rm " +
           runtime.socket() + "; " VOXTREL_SERVICEMANAGER " >/dev/null 2>&1 & echo $! >" +
           runtime.folder() + "/new; while [ ! -S " + runtime.socket() + " ]; do sleep 0.01; done'";
}

/// Ends that other one.
void endRestarted(const voxtrel_test::PrivateRuntime& runtime) {
    (void)run("kill $(cat " + runtime.folder() + "/new); rm " + runtime.folder() + "/new");
}

TEST_F(ThePlatformCheck, SeesARestartedServiceManager) {
    const Ended ended = run(VOXTREL_PLATFORM_CHECK " restarted-manager" + restartOf(runtime));
    endRestarted(runtime);
    EXPECT_EQ("ok", verdictOn("restarted-manager", ended)) << wordsOf(ended);
}

/// Rows that rely on nothing cannot be wrong; the manners of a driver show both results.
const std::set<std::string> kRowsWithoutWrong = {"overtaking", "one-way-room",
                                                 "one-way-to-own-objects"};

/// Those whose promise the library can do without.
const std::set<std::string> kToleratedRows = {"links-after-death", "links-to-own-objects",
                                              "letting-go", "restarted-manager"};

/// Those whose check crashes where the runtime is wrong.
const std::set<std::string> kDeadlyRows = {"strong-pointers", "static-destruction", "log-lines"};

/// Rows about what headers do, compiled against headers that do otherwise.
const std::set<std::string> kRowsOfHeaders = {"strong-pointer-assignment", "virtual-bases",
                                              "interface-macros", "local-interface",
                                              "binder-service"};

/// The cells of the program's list, or of the page's tables, in which nothing is marked as code.
std::map<std::string, Lines> rowsIn(const Lines& lines, size_t columns) {
    std::map<std::string, Lines> rows;
    for (std::string line : lines) {
        line.erase(std::remove(line.begin(), line.end(), '`'), line.end());
        Lines cells;
        for (size_t end = 0; (end = line.find(" | ")) != std::string::npos;
             line.erase(0, end + 3)) {
            cells.push_back(line.substr(0, end));
        }
        cells.push_back(line);
        if (cells.size() == columns) {
            rows[cells.front()] = {cells[columns - 2], cells[columns - 1]};
        }
    }
    return rows;
}

Lines linesOfThePage() {
    std::ifstream page(VOXTREL_SOURCE_DIR "/platform/README.md");
    Lines lines;
    for (std::string line; std::getline(page, line) && line != "# The stand-in for a PC";) {
        if (line.rfind("| ", 0) == 0 && line.rfind("| Row ", 0) != 0) {
            lines.push_back(line.substr(2, line.size() - 4));
        }
    }
    return lines;
}

TEST(TheRowsOfThePlatformCheck, AreThoseOfThePageWordForWord) {
    const auto rows = rowsIn(run(VOXTREL_PLATFORM_CHECK " --list").lines, 3);
    EXPECT_EQ(rowsIn(linesOfThePage(), 4), rows);
    EXPECT_EQ(35U, rows.size());
}

/// The command that checks `row` over a runtime that is wrong in it.
std::string wrongCheckOf(const std::string& row) {
    if (row == "calling-identity") {
        return VOXTREL_WRONG_IDENTITY_CHECK;
    }
    return kRowsOfHeaders.count(row) == 1 ? VOXTREL_WRONG_HEADERS_CHECK : checkOfWrong(row);
}

class AWrongPlatform : public ThePlatformCheck, public testing::WithParamInterface<std::string> {};

TEST_P(AWrongPlatform, IsSeen) {
    const std::string& row = GetParam();
    std::string command = wrongCheckOf(row);
    command += " --deadline " + std::string(row == "service-manager" ? "1 " : "100 ") + row;
    const bool isRestarted = row == "restarted-manager";
    const Ended ended = run(command + (isRestarted ? restartOf(runtime) : ""));
    if (isRestarted) {
        endRestarted(runtime);
    }
    const bool isTolerated = kToleratedRows.count(row) == 1;
    EXPECT_EQ(isTolerated ? "differs" : "WRONG", verdictOn(row, ended)) << wordsOf(ended);
    EXPECT_EQ(isTolerated ? 0 : 1, ended.status);
    const bool isEnded = wordsOf(ended).find("was killed by signal") != std::string::npos;
    EXPECT_EQ(kDeadlyRows.count(row) == 1, isEnded) << wordsOf(ended);
}

std::vector<std::string> rowsWithAWrong() {
    std::vector<std::string> names;
    for (const auto& row : rowsIn(linesOfThePage(), 4)) {
        if (kRowsWithoutWrong.count(row.first) == 0) {
            names.push_back(row.first);
        }
    }
    return names;
}

std::string asTestName(const testing::TestParamInfo<std::string>& row) {
    std::string name = row.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(InEachRow, AWrongPlatform, testing::ValuesIn(rowsWithAWrong()),
                         asTestName);

}  // namespace
