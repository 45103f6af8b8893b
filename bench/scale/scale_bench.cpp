// SPDX-License-Identifier: Apache-2.0
// What becomes of cost as work grows: with more clients, longer queues, more listeners, longer
// texts and more deaths at once. The work for one is either the same however much else there is,
// then its cost is to be flat, or it is for all, then it is to be linear. Service manager, service
// and clients are processes of their own; the engine takes no time, and nothing is played.
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/scale/Sections.h"
#include "bench/support/Timing.h"

namespace {

struct Section {
    const char* name;
    void (*run)(const std::string& folder);
};

constexpr Section kSections[] = {
    {"clients", bench::clients},
    {"queue", bench::queues},
    {"text", bench::texts},
    {"deaths", bench::deathsAtOnce},
};

}  // namespace

// All sections, or those that are named on the command line.
int main(int argc, char** argv) {
    std::string folder = (std::filesystem::temp_directory_path() / "scale_bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        return 1;
    }
    const std::vector<std::string> names(argv + 1, argv + argc);
    for (const Section& section : kSections) {
        if (names.empty() || std::find(names.begin(), names.end(), section.name) != names.end()) {
            section.run(folder);
        }
    }
    std::filesystem::remove_all(folder);
    bench::printFigures();
    return 0;
}
