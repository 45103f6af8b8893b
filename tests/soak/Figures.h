// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_FIGURES_H
#define VOXTREL_TESTS_SOAK_FIGURES_H

#include <sys/types.h>

#include <string>

namespace soak {

/// What a process holds.
struct Figures {
    long descriptors = 0;
    long memoryKib = 0;  ///< resident
};

/// Zeros for a process that is not there.
Figures figuresOf(pid_t process);

/// A process that does the same again and again may hold no more at the end than when it was warm,
/// but for a twentieth; and for what comes and goes: two sockets for each process with clients, of
/// which those that have not looked for the service lately have none at the service manager; and
/// arenas of the allocator that threads touched later.
constexpr long kSpareDescriptors = 12;
constexpr long kSpareKib = 2048;

Figures maxAfter(const Figures& warm);
bool isWithin(const Figures& figures, const Figures& max);

/// One line of the table, and whether the process has grown.
struct Growth {
    std::string process;
    Figures warm;
    Figures end;

    bool isGrown() const { return !isWithin(end, maxAfter(warm)); }
};

}  // namespace soak

#endif
