// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_ROW_H
#define VOXTREL_PLATFORM_CHECK_ROW_H

#include <stdexcept>
#include <string>
#include <vector>

namespace check {

enum class Verdict {
    Right,      ///< as the library relies on it
    Tolerated,  ///< otherwise, and the library does without
    Wrong,      ///< otherwise: the consequence will be met
    NotSeen,    ///< could not be looked at, for a reason that is told
    NotTried,   ///< was not asked for
};

/// What one look at the runtime saw.
struct Seen {
    Verdict verdict;
    std::string what;
};

/// What keeps a process from looking; `what` tells. The row was not seen then.
class CannotLook : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A row of platform/README.md, whose words these are.
struct Row {
    const char* name;
    const char* reliedOn;
    const char* otherwise;
    /// Looks at the runtime of this process. Throws CannotLook. May hang or end the process:
    /// whoever calls it is a process of its own, with a deadline.
    Seen (*look)();
};

using Rows = std::vector<Row>;

/// Those of a section each.
Rows referenceRows();
Rows interfaceRows();
Rows parcelRows();
Rows callRows();
Rows deathRows();
Rows nameRows();

/// All of them, in the order of the page.
Rows allRows();

/// Right when `holds`, else Wrong.
Seen judged(bool holds, const std::string& what);
/// Right when `holds`, else Tolerated.
Seen preferred(bool holds, const std::string& what);

}  // namespace check

#endif
