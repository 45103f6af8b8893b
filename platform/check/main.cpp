// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "check/Options.h"
#include "check/PeerNode.h"
#include "check/Row.h"
#include "check/RowCheck.h"

namespace {

constexpr const char* kVerdicts[] = {"ok", "differs", "WRONG", "UNSEEN", "untried"};

void print(const check::Row& row, const check::Result& result) {
    std::printf("%-8s %-27s %s | %s | %s\n", kVerdicts[static_cast<int>(result.verdict)], row.name,
                result.seen.c_str(), row.reliedOn, row.consequence);
    std::fflush(stdout);
}

int list() {
    for (const check::Row& row : check::allRows()) {
        std::printf("%s | %s | %s\n", row.name, row.reliedOn, row.consequence);
    }
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int checkRows(const check::Options& options) {
    int counts[5] = {};
    std::printf("%-8s %-27s seen | relied on | consequence\n", "", "row");
    for (const check::Row& row : check::allRows()) {
        const auto& wanted = options.rows;
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), row.name) == wanted.end()) {
            continue;
        }
        const check::Result result = check::checkInChild(row, options.deadline, options.isVerbose);
        print(row, result);
        ++counts[static_cast<int>(result.verdict)];
    }
    std::printf("%d ok, %d differ, %d wrong, %d unseen, %d untried\n", counts[0], counts[1],
                counts[2], counts[3], counts[4]);
    const bool isReliable = counts[2] == 0 && counts[3] == 0;
    return std::fflush(stdout) == 0 && isReliable ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    // The child processes of the check.
    if (argc == 4 && std::strcmp(argv[1], "--peer") == 0) {
        return check::servePeer(argv[2], check::Report(argv[3]));
    }
    if (argc == 4 && std::strcmp(argv[1], "--check") == 0) {
        return check::checkRow(argv[2], check::Report(argv[3]));
    }
    check::Options options;
    int exitStatus = EXIT_SUCCESS;
    if (!check::parseOptions(argc, argv, options, exitStatus)) {
        return exitStatus;
    }
    return options.isList ? list() : checkRows(options);
}
