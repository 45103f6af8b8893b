// SPDX-License-Identifier: Apache-2.0
#include "tools/Terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/TempFolder.h"

using namespace voxtrelctl;
using namespace voxtrel_test;

namespace {

/// What a program leaves in files in the place of its outputs, when a library writes a line of its
/// own before the result.
class AProgram : public ::testing::Test {
protected:
    void run(bool verbose) {
        std::fflush(stdout);  // what is left in it would be the child's as well
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            redirect(STDOUT_FILENO, "out");
            redirect(STDERR_FILENO, "err");
            Terminal terminal(verbose);
            std::puts("noise");
            std::fflush(stdout);
            terminal.line("result");
            _exit(0);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }

    std::string contentOf(const std::string& name) const { return readFile(folder.path(name)); }

    void redirect(int descriptor, const std::string& name) const {
        dup2(open(folder.path(name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600), descriptor);
    }

    const TempFolder folder;
};

TEST_F(AProgram, KeepsALibrarysLinesOutOfItsResult) {
    run(false);
    EXPECT_EQ(contentOf("out"), "result\n");
    EXPECT_EQ(contentOf("err"), "");
}

TEST_F(AProgram, ShowsALibrarysLinesBesideItsResultWhenAsked) {
    run(true);
    EXPECT_EQ(contentOf("out"), "result\n");
    EXPECT_EQ(contentOf("err"), "noise\n");
}

}  // namespace
