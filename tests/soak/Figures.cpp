// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Figures.h"

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

long residentKib(const std::string& path) {
    std::ifstream status(path);
    std::string word;
    while (status >> word && word != "VmRSS:") {
    }
    long kib = 0;
    status >> kib;
    return kib;
}

long withATwentieth(long number) {
    return number + number / 20;
}

}  // namespace

Figures figuresOf(pid_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    return {descriptorsIn(folder + "/fd"), residentKib(folder + "/status")};
}

Figures maxAfter(const Figures& warm) {
    return {withATwentieth(warm.descriptors) + kSpareDescriptors,
            withATwentieth(warm.memoryKib) + kSpareKib};
}

bool isWithin(const Figures& figures, const Figures& max) {
    return figures.descriptors <= max.descriptors && figures.memoryKib <= max.memoryKib;
}

}  // namespace soak
