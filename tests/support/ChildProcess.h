// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_CHILDPROCESS_H
#define VOXTREL_TESTS_SUPPORT_CHILDPROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace voxtrel_test {

/// A second real process, talked to by lines: what it prints to standard output is read here, what
/// is said here it reads from standard input. Killed, if it is still there, at the end.
class ChildProcess {
public:
    /// Runs a program of this build, named by its path and under the emulator that runs this test,
    /// if any; or one of the machine's own, named without a path.
    explicit ChildProcess(const std::vector<std::string>& command);
    /// Runs this test program again as one of its roles (see Roles.h).
    static ChildProcess asRole(const std::string& role,
                               const std::vector<std::string>& arguments = {});
    /// The same, with what it prints to standard error among what is read.
    static ChildProcess asRoleWithErrors(const std::string& role);
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;

    pid_t pid() const { return mPid; }
    /// The next line without its end; empty when the process has closed its output, or says nothing
    /// for 60 s.
    std::string readLine();
    /// False when nobody reads it any more.
    bool say(const std::string& line);
    /// Says a line and reads the answer.
    std::string ask(const std::string& line);
    void closeInput();

    void kill(int signal);
    /// Kills it and waits until it is gone.
    void killNow();
    /// Waits for its end; its exit status, or 128 + signal.
    int wait();

private:
    void finish();

    pid_t mPid = -1;
    int mInput = -1;
    int mOutput = -1;
    std::string mBuffer;
};

}  // namespace voxtrel_test

#endif
