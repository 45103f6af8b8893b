// SPDX-License-Identifier: Apache-2.0
#include "check/Look.h"

#include <cstdlib>
#include <cstring>

#include "check/Process.h"

namespace check {
namespace {

// A line of the process that looks: the verdict's number, and what was seen.
Seen parsed(const std::string& line) {
    const int number = line.empty() ? -1 : line[0] - '0';
    if (number < 0 || number > static_cast<int>(Verdict::NotTried)) {
        return {Verdict::Wrong, "not a word of the process that looked: " + line};
    }
    return {static_cast<Verdict>(number), line.substr(1)};
}

std::string howItEnded(int status) {
    return status < 0 ? "was ended by signal " + std::to_string(-status)
                      : "left with status " + std::to_string(status);
}

Seen lookOnce(const char* row) {
    for (const Row& each : allRows()) {
        if (std::strcmp(each.name, row) == 0) {
            return each.look();
        }
    }
    return {Verdict::NotSeen, "there is no such row"};
}

}  // namespace

Seen lookApart(const Row& row, std::chrono::seconds deadline, bool isVerbose) try {
    const Deadline end = std::chrono::steady_clock::now() + deadline;
    Process looking({"--look", row.name}, !isVerbose);
    std::string line;
    const bool hasSeen = looking.readLine(line, end);
    int status = 0;
    if (!looking.waitForEnd(status, end)) {
        return {Verdict::Wrong, "no end within " + std::to_string(deadline.count()) + " s" +
                                    (hasSeen ? ", but: " + parsed(line).what : "")};
    }
    if (!hasSeen || status != EXIT_SUCCESS) {
        return {Verdict::Wrong, "the process that looked " + howItEnded(status)};
    }
    return parsed(line);
} catch (const CannotLook& why) {
    return {Verdict::NotSeen, why.what()};
}

int lookHere(const char* row, const Report& report) {
    Seen seen{Verdict::NotSeen, ""};
    try {
        seen = lookOnce(row);
    } catch (const CannotLook& why) {
        seen.what = why.what();
    }
    const std::string verdict = std::to_string(static_cast<int>(seen.verdict));
    return report.tell(verdict + seen.what) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace check
