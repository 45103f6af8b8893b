// SPDX-License-Identifier: Apache-2.0
#include "check/Look.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "check/Peer.h"
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
    return status < 0 ? "ended by signal " + std::to_string(-status)
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

Seen lookApart(const Row& row, std::chrono::seconds deadline, bool isVerbose) {
    const Deadline end = std::chrono::steady_clock::now() + deadline;
    Process looking({"--look", row.name}, !isVerbose);
    std::string line;
    const bool hasSeen = looking.readLine(line, end);
    int status = 0;
    if (!looking.waitForEnd(status, end)) {
        return {Verdict::Wrong, "no end within " + std::to_string(deadline.count()) + " s" +
                                    (hasSeen ? ", but: " + line.substr(1) : "")};
    }
    if (!hasSeen || status != EXIT_SUCCESS) {
        return {Verdict::Wrong, "the process that looked was " + howItEnded(status)};
    }
    return parsed(line);
}

int lookHere(const char* row) {
    Seen seen{Verdict::NotSeen, ""};
    try {
        seen = lookOnce(row);
    } catch (const NoPeer& why) {
        seen.what = why.what();
    }
    std::printf("%d%s\n", static_cast<int>(seen.verdict), seen.what.c_str());
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace check
