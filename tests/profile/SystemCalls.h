// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PROFILE_SYSTEMCALLS_H
#define VOXTREL_TESTS_PROFILE_SYSTEMCALLS_H

#include <string>
#include <vector>

namespace voxtrel_test {

/// Records, while it lives, what the program hands to the operating system.
///
/// The test program has `write`, `writev` and `system` of its own, which a program is allowed to
/// define; the streams of the C++ library call them. Commands are recorded and never run.
class SystemCalls {
public:
    /// @param watched the file whose state is noted at each command.
    /// @param commandResult what `system` answers.
    explicit SystemCalls(std::string watched, int commandResult = 0);
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    struct Command {
        std::string text;
        std::string content;  ///< of the watched file at that moment
        /// How often the watched file is open at that moment: the flags of each, as for `open`.
        std::vector<int> openFlags;
    };

    std::vector<std::string> writes;  ///< the bytes of each write, in order
    std::vector<Command> commands;

    int noteCommand(const char* text);

private:
    std::string mWatched;
    int mCommandResult;
};

}  // namespace voxtrel_test

#endif
