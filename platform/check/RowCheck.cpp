// SPDX-License-Identifier: Apache-2.0
#include "check/RowCheck.h"

#include <cstdlib>
#include <cstring>

#include "check/Process.h"

namespace check {
namespace {

// A line of the child process: the verdict's number, and what was seen.
Result parsed(const std::string& line) {
    const int number = line.empty() ? -1 : line[0] - '0';
    if (number < 0 || number > static_cast<int>(Verdict::Untried)) {
        return {Verdict::Wrong, "unexpected line of the child process: " + line};
    }
    return {static_cast<Verdict>(number), line.substr(1)};
}

std::string howItEnded(int status) {
    return status < 0 ? "was killed by signal " + std::to_string(-status)
                      : "exited with status " + std::to_string(status);
}

Result checkNamed(const char* row) {
    for (const Row& each : allRows()) {
        if (std::strcmp(each.name, row) == 0) {
            return each.check();
        }
    }
    return {Verdict::Unseen, "there is no such row"};
}

}  // namespace

Result checkInChild(const Row& row, std::chrono::seconds deadline, bool isVerbose) try {
    const Deadline end = std::chrono::steady_clock::now() + deadline;
    Process child({"--check", row.name}, !isVerbose);
    std::string line;
    const bool hasResult = child.readLine(line, end);
    int status = 0;
    if (!child.waitForEnd(status, end)) {
        return {Verdict::Wrong, "no end within " + std::to_string(deadline.count()) + " s" +
                                    (hasResult ? ", but: " + parsed(line).seen : "")};
    }
    if (!hasResult && status == Process::kNotRun) {
        return {Verdict::Unseen, "this program could not run itself; it needs /proc"};
    }
    if (!hasResult || status != EXIT_SUCCESS) {
        return {Verdict::Wrong, "the child process " + howItEnded(status)};
    }
    return parsed(line);
} catch (const CannotCheck& why) {
    return {Verdict::Unseen, why.what()};
}

int checkRow(const char* row, const Report& report) {
    Result result{Verdict::Unseen, ""};
    try {
        result = checkNamed(row);
    } catch (const CannotCheck& why) {
        result.seen = why.what();
    }
    const std::string verdict = std::to_string(static_cast<int>(result.verdict));
    return report.writeLine(verdict + result.seen) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace check
