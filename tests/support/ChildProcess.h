// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_CHILDPROCESS_H
#define VOXTREL_TESTS_SUPPORT_CHILDPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace voxtrel_test {

/// How a process ended, and all that it wrote.
struct Outcome {
    int status = -1;  ///< exit status; 128 and the signal's number for one ended by a signal
    std::string out;
    std::string err;
};

/// A second real process. Its standard output is read here, by lines or as a whole; its standard
/// input is what is said here, or a text given at the start. Killed, if it is still there, at the
/// end of the object and, where the main thread has started it, of the test.
class ChildProcess {
public:
    using Words = std::vector<std::string>;
    using Lines = std::vector<std::string>;

    /// Where what it writes to standard error goes.
    enum class Errors {
        Inherited,   ///< where this process's own goes
        WithOutput,  ///< among its output
        Apart,       ///< is kept as one text
        InPieces,    ///< the same, and what each call wrote; blocks after 16 calls without a reader
    };

    /// Runs a program of this build, named by its path and under the emulator that runs this test,
    /// if any; or one of the machine's own, named without a path.
    explicit ChildProcess(const Words& command, Errors errors = Errors::Inherited);
    /// The same, with `input` as all of its standard input.
    ChildProcess(const Words& command, const std::string& input, Errors errors = Errors::Apart);
    /// Runs this test program again as one of its roles (see Roles.h).
    static ChildProcess asRole(const std::string& role, const Words& arguments = {});
    /// The same, with what it prints to standard error among what is read.
    static ChildProcess asRoleWithErrors(const std::string& role);
    ~ChildProcess();
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;

    pid_t pid() const { return mPid; }
    /// Its main thread keeps this signal waiting.
    bool blocks(int signal) const;

    /// The next line without its end, which is taken off the output; empty when the process has
    /// closed its output, or says nothing within the limit (90 s).
    std::string readLine();
    /// Reads lines until this one comes. @return the lines up to it; a failed test without it.
    Lines readUntil(const std::string& line);
    /// Reads lines until `isLast` holds for one. @return all of them.
    Lines readUntil(const std::function<bool(const std::string& line)>& isLast);

    /// Reads until standard output, or standard error, holds `text`. False when it ended, or the
    /// limit passed, without.
    bool awaitOutput(const std::string& text);
    bool awaitError(const std::string& text);
    /// All of standard output up to now that was not read as lines.
    const std::string& output() const { return mOut.text; }
    /// What each call that wrote to standard error wrote up to now, with Errors::InPieces.
    const std::vector<std::string>& errorPieces() const { return mErr.pieces; }

    /// False when nobody reads it any more.
    bool say(const std::string& line);
    /// Says a line and reads the answer.
    std::string ask(const std::string& line);
    void closeInput();

    void kill(int signal) const;
    /// Kills it and waits until it is gone.
    void killNow();
    /// Waits for its end; its exit status, or 128 + signal. One that outlives the limit fails the
    /// test and is killed.
    int wait();
    /// The same, and all that it has written by then.
    Outcome finish();

private:
    using Clock = std::chrono::steady_clock;

    struct Stream {
        int descriptor = -1;
        std::string text;
        std::vector<std::string> pieces;

        void close();
        void readOnce(bool inPieces);
    };

    void start(const Words& command, int input, Errors errors);
    bool takeLine(std::string& line);
    bool nextLine(std::string& line);
    bool readSome(Clock::time_point deadline);
    bool awaitText(const Stream& stream, const std::string& text);
    bool reap(int options);
    void end();

    pid_t mPid = -1;
    bool mIsReaped = true;
    int mStatus = -1;
    bool mInPieces = false;
    int mInput = -1;
    Stream mOut;
    Stream mErr;
};

}  // namespace voxtrel_test

#endif
