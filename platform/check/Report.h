// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_REPORT_H
#define VOXTREL_PLATFORM_CHECK_REPORT_H

#include <string>

namespace check {

/// Leads from a process to the one that started it. A pipe of its own: a platform may log to
/// standard output.
class Report {
public:
    /// @param descriptor its number, as the command line has it.
    explicit Report(const char* descriptor);

    /// Tells a line; line ends within become spaces. False when nobody reads it.
    bool tell(std::string line) const;

private:
    const int mDescriptor;
};

}  // namespace check

#endif
