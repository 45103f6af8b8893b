// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICE_CHILDPROCESS_H
#define VOXTREL_TESTS_SERVICE_CHILDPROCESS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace voxtreld {

/// A program started by a test, with its input and its output (both streams) in the test's hands.
/// Killed, if it still runs, when the object goes.
class ChildProcess {
public:
    using Lines = std::vector<std::string>;

    explicit ChildProcess(const std::vector<std::string>& command);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Writes a line to its standard input.
    void tell(const std::string& line);

    /// Ends its standard input.
    void closeInput();

    /// Reads lines until this one comes. @return the lines before it; a failed test if it does not.
    Lines readUntil(const std::string& line);

    /// Reads lines until `isLast` holds for one. @return all of them.
    Lines readUntil(const std::function<bool(const std::string& line)>& isLast);

    void signal(int number) const;

    /// Waits for its end. @return its exit status, or 256 and the signal that ended it.
    int wait();

    pid_t pid() const { return mPid; }

private:
    bool readLine(std::string& line);

    pid_t mPid = -1;
    int mInput = -1;
    int mOutput = -1;
    std::string mBuffer;
};

}  // namespace voxtreld

#endif
