// SPDX-License-Identifier: Apache-2.0
#include "bench/scale/Usage.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace bench {

namespace {

std::string folderOf(pid_t pid) {
    return "/proc/" + std::to_string(pid);
}

size_t entriesOf(const std::string& folder) {
    std::error_code gone;
    const std::filesystem::directory_iterator entries(folder, gone);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

double privateKib(pid_t pid) {
    std::ifstream rollup(folderOf(pid) + "/smaps_rollup");
    double total = 0;
    for (std::string word; rollup >> word;) {
        double kib = 0;
        if (word.compare(0, 8, "Private_") == 0 && rollup >> kib) {
            total += kib;
        }
    }
    return total;
}

size_t descriptors(pid_t pid) {
    return entriesOf(folderOf(pid) + "/fd");
}

size_t threads(pid_t pid) {
    return entriesOf(folderOf(pid) + "/task");
}

}  // namespace bench
