// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PROFILE_SYSTEMCALLS_H
#define VOXTREL_TESTS_PROFILE_SYSTEMCALLS_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace voxtrel_test {

/// Records, while it lives, what the program hands to the operating system.
///
/// The test program has `read`, `write`, `writev` and `system` of its own, which a program is
/// allowed to define. Commands are recorded and never run.
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

    /// How reads and writes of the watched file go, all of them together.
    struct Manners {
        size_t most = SIZE_MAX;    ///< bytes of one call
        size_t before = SIZE_MAX;  ///< bytes until calls fail with EIO
        bool interrupted = false;  ///< every other call, before it has done anything
    };
    Manners manners;

    std::vector<std::string> writes;  ///< the bytes of each write, in order
    std::vector<Command> commands;

    int noteCommand(const char* text);

    /// @return how many of these bytes the next call on the descriptor may move; -1, with errno
    /// set,
    ///     when it fails.
    ssize_t allow(int descriptor, size_t size);

private:
    std::string mWatched;
    int mCommandResult;
    bool mWasInterrupted = false;
};

}  // namespace voxtrel_test

#endif
