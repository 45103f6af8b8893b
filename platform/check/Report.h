// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_REPORT_H
#define VOXTREL_PLATFORM_CHECK_REPORT_H

#include <string>

namespace check {

/// The pipe on which a child process reports to its parent. Not standard output, to which a
/// platform may log.
class Report {
public:
    /// @param descriptor its number, as the command line has it.
    explicit Report(const char* descriptor);

    /// Line ends within the line become spaces. False when nobody reads it.
    bool writeLine(std::string line) const;

private:
    const int mDescriptor;
};

}  // namespace check

#endif
