// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_PROCESS_H
#define VOXTREL_TESTS_VOXTRELCTL_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace voxtrel_test {

/// How a process ended, and all that it wrote.
struct Outcome {
    int status = -1;  ///< exit status; 128 and the signal's number for one ended by a signal
    std::string out;
    std::string err;
};

/// A child process whose output is collected. Killed and reaped with the object.
class Process {
public:
    using Words = std::vector<std::string>;

    /// How what it writes to standard error is kept.
    enum class Errors {
        Joined,  ///< as one text, and much of it before anybody reads
        Apart,   ///< what each call wrote apart, too; it waits for a reader after 16 calls
    };

    /// Starts `words` (the first is the program) with `input` as all of its standard input.
    explicit Process(const Words& words, const std::string& input = "",
                     Errors errors = Errors::Joined);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }
    void signal(int number) const;

    /// Its main thread keeps this signal waiting.
    bool blocks(int signal) const;

    /// Reads until standard output, or standard error, holds `text`. False when it ended, or the
    /// generous limit passed, without.
    bool awaitOutput(const std::string& text);
    bool awaitError(const std::string& text);

    /// Reads until it has ended. A process that outlives the generous limit is killed (status 137).
    Outcome wait();

    /// What each call that wrote to standard error wrote up to now, with Errors::Apart.
    const std::vector<std::string>& errorPieces() const { return mStreams[1].pieces; }

    /// All of standard output up to now.
    const std::string& output() const { return mStreams[0].text; }

private:
    struct Stream {
        int descriptor = -1;
        std::string text;
        std::vector<std::string> pieces;
    };

    bool awaitText(const Stream& stream, const std::string& text);
    bool readSome(std::chrono::steady_clock::time_point deadline);
    void reap(int options);

    pid_t mPid = -1;
    bool mReaped = false;
    int mStatus = -1;
    Stream mStreams[2];
};

}  // namespace voxtrel_test

#endif
