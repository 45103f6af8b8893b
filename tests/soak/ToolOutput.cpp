// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ToolOutput.h"

#include <string>

namespace soak {
namespace {

/// As in `voxtrel::Outcome`.
constexpr int kFinished = 1;
constexpr int kStopped = 2;

bool tellsOf(const std::string& line, const char* event) {
    return line.rfind(std::string("{\"event\":\"") + event + "\"", 0) == 0;
}

}  // namespace

void noteEvents(std::istream& output, unsigned run, Ledger& ledger) {
    constexpr uint64_t kOnly = 1;
    bool isSaid = false;
    for (std::string line; std::getline(output, line);) {
        const bool isFinished = tellsOf(line, "finished");
        const bool isStopped = tellsOf(line, "stopped");
        if (!isSaid && (isFinished || isStopped || tellsOf(line, "started"))) {
            ledger.said(run, kOnly);
            isSaid = true;
        }
        if (isFinished || isStopped) {
            ledger.ended(run, kOnly, {isFinished ? kFinished : kStopped, 0});
        }
    }
}

}  // namespace soak
