// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_FIGURES_H
#define VOXTREL_TESTS_SOAK_FIGURES_H

#include <sys/types.h>

#include <string>

namespace soak {

/// What a process holds while nothing is under way.
struct Figures {
    long descriptors = 0;
    long memoryKib = 0;  ///< of its own: pages that it has written and shares with nobody

    bool operator==(const Figures& other) const {
        return descriptors == other.descriptors && memoryKib == other.memoryKib;
    }
};

/// Zeros for a process that is not there.
Figures figuresOf(pid_t process);

/// The smaller of each, where both were taken: what is kept is there at each rest.
Figures leastOf(const Figures& one, const Figures& other);

/// How much more there is at the end, in percent.
double growthInPercent(long warm, long end);

/// One line of the table, and whether the process has grown.
struct Growth {
    std::string process;
    Figures warm;
    Figures end;
    bool isMemoryWarm = true;  ///< else descriptors alone are compared

    bool isMeasured() const;

    /// By more than a twentieth, rounded up to a whole descriptor and to eight pages.
    bool isGrown() const;
};

}  // namespace soak

#endif
