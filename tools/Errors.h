// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_ERRORS_H
#define VOXTREL_TOOLS_ERRORS_H

#include <cstdint>
#include <stdexcept>
#include <string>

#include "vocabulary/Status.h"
#include "voxtrel/Result.h"

namespace voxtrelctl {

/// What a status code tells a person at a terminal.
struct StatusMeaning {
    int code;
    const char* meaning;  ///< a few words, as in "service not found"
    const char* remedy;   ///< what to do next
};

/// What keeps a command from going on, for a person.
struct Problem {
    int code = 0;
    std::string what;
    std::string remedy;
};

/// The meaning of a status code of the client library; a code the library does not name gets a
/// general entry with that code. Called on: any thread. Locks: none.
StatusMeaning meaningOf(int code);

/// "-8 service not found: DETAIL: REMEDY" (without "DETAIL: " when there is none); one line, no
/// line end. A line break inside `detail` becomes a blank, so that scripts can rely on one line.
std::string errorLine(int code, const std::string& detail = "");

/// Writes "voxtrelctl: WHAT" to standard error as one line in one piece: the runtime's threads and
/// other processes write there too. Called on: any thread.
void printError(const std::string& what);
/// The same; takes no memory.
void printError(const char* what) noexcept;

/// A command that cannot go on. `main` prints its line and leaves with status 1.
class Failure : public std::runtime_error {
public:
    explicit Failure(int code, const std::string& detail = "");

    /// Replaces the remedy of the table where the caller knows a better next step, or tells it in
    /// the detail.
    Failure(int code, const std::string& detail, const std::string& remedy);

    int code() const { return mCode; }

private:
    int mCode;
};

/// A request without an answer of its own, of which the service has told nothing in time. `main`
/// prints its line and leaves with status 1.
class Unanswered : public std::runtime_error {
public:
    enum class Why {
        NoEvent,        ///< the service has sent no event about it
        TakesAnyPause,  ///< it has not refused a pause of 49 days, and so has not told in time
    };

    /// @param unknown what the person would want to know, as in "whether it has taken the text".
    explicit Unanswered(const std::string& unknown, Why why = Why::NoEvent);
};

/// Throws `Failure(status, detail)` unless `status` is 0.
void check(int status, const std::string& detail);

/// Throws `Failure` with the message of what was not done.
void check(const voxtrel::Result<void>& result);

}  // namespace voxtrelctl

#endif
