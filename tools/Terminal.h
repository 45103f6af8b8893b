// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_TERMINAL_H
#define VOXTREL_TOOLS_TERMINAL_H

#include <string>

namespace voxtrelctl {

/// The program's own output, apart from what the client library prints.
///
/// The library writes notes of its own to standard output (profile reading, a service's death);
/// they would break `--json` and the words on a terminal. So the constructor keeps the real
/// standard output aside and points descriptor 1 at nothing, or at standard error with `verbose`.
/// Called on: the main thread. One object in a process.
class Terminal {
public:
    explicit Terminal(bool verbose);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Writes `text` as it stands, at once. A reader that has gone away ends the program, as with
    /// other filters. Throws std::runtime_error with the reason when it cannot be written.
    void print(const std::string& text);

    /// print() of the text and a line end.
    void line(const std::string& text);

    /// True when a person looks at standard output.
    bool isInteractive() const { return mInteractive; }

    /// The descriptor of the real standard output, for a child process.
    int output() const { return mOutput; }

    /// Shows on standard error what is waited for. On a terminal it takes the place of the last
    /// progress, with `passed` beside it; elsewhere each different `what` is one line.
    void progress(const std::string& what, const std::string& passed);

    /// Takes the progress off a terminal again.
    void endProgress();

private:
    int mOutput;
    bool mInteractive;
    bool mErrorsInteractive;
    std::string mProgress;
};

}  // namespace voxtrelctl

#endif
