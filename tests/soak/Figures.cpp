// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Figures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace soak {
namespace {

long descriptorsIn(const std::string& folder) {
    std::error_code none;
    const std::filesystem::directory_iterator entries(folder, none);
    return none ? 0 : static_cast<long>(std::distance(begin(entries), end(entries)));
}

/// With what of it the kernel has moved to a disk.
long ownKib(const std::string& path) {
    std::ifstream sums(path);
    long total = 0;
    for (std::string word; sums >> word;) {
        long kib = 0;
        if ((word == "Private_Dirty:" || word == "Swap:") && sums >> kib) {
            total += kib;
        }
    }
    return total;
}

long leastTaken(long one, long other) {
    return one == 0 || other == 0 ? std::max(one, other) : std::min(one, other);
}

bool isBeyond(long end, long warm, long unit) {
    const long twentieth = 20 * unit;
    return end > warm + (warm + twentieth - 1) / twentieth * unit;
}

}  // namespace

Figures figuresOf(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    return {descriptorsIn(folder + "/fd"), ownKib(folder + "/smaps_rollup")};
}

Figures leastOf(const Figures& one, const Figures& other) {
    return {leastTaken(one.descriptors, other.descriptors),
            leastTaken(one.memoryKib, other.memoryKib)};
}

double growthInPercent(long warm, long end) {
    constexpr double kAll = 100;
    return warm == 0 ? 0 : kAll * static_cast<double>(end - warm) / static_cast<double>(warm);
}

bool Growth::isMeasured() const {
    return warm.descriptors > 0 && warm.memoryKib > 0 && end.descriptors > 0 && end.memoryKib > 0;
}

bool Growth::isGrown() const {
    constexpr long kEightPagesKib = 32;
    return isBeyond(end.descriptors, warm.descriptors, 1) ||
           (isMemoryWarm && isBeyond(end.memoryKib, warm.memoryKib, kEightPagesKib));
}

}  // namespace soak
