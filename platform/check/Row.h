// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_ROW_H
#define VOXTREL_PLATFORM_CHECK_ROW_H

#include <stdexcept>
#include <string>
#include <vector>

namespace check {

enum class Verdict {
    Ok,       ///< as the library relies on it
    Differs,  ///< not as it relies on it, but the library can do without
    Wrong,    ///< not as it relies on it: expect the consequence
    Unseen,   ///< could not be checked, for the reason given
    Untried,  ///< takes an option that was not given
};

struct Result {
    Verdict verdict;
    std::string seen;  ///< for the table
};

/// Why a row cannot be checked, in `what`.
class CannotCheck : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A row of platform/README.md, whose words these are.
struct Row {
    const char* name;
    const char* reliedOn;
    const char* consequence;
    /// Checks the runtime of this process. Throws CannotCheck. May hang or end the process, so
    /// `checkInChild` calls it in a child process with a deadline.
    Result (*check)();
};

using Rows = std::vector<Row>;

/// The rows of each section of the page.
Rows referenceRows();
Rows interfaceRows();
Rows parcelRows();
Rows callRows();
Rows deathRows();
Rows nameRows();

/// All of them, in the order of the page.
Rows allRows();

/// Ok when `holds`, else Wrong.
Result require(bool holds, const std::string& seen);
/// Ok when `holds`, else Differs.
Result prefer(bool holds, const std::string& seen);

}  // namespace check

#endif
