// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ToolOutput.h"

#include <nlohmann/json.hpp>
#include <string>

namespace soak {
namespace {

/// As in `voxtrel::Outcome`.
constexpr int kFinished = 1;
constexpr int kStopped = 2;

/// Empty for a line that tells of none.
std::string eventOf(const std::string& line) {
    constexpr bool kThrows = false;
    const auto parsed = nlohmann::json::parse(line, nullptr, kThrows);
    return parsed.is_object() ? parsed.value("event", "") : "";
}

}  // namespace

void noteEvents(std::istream& output, unsigned run, Ledger& ledger) {
    constexpr uint64_t kOnly = 1;
    bool isSaid = false;
    for (std::string line; std::getline(output, line);) {
        const std::string event = eventOf(line);
        const bool isFinished = event == "finished";
        const bool isStopped = event == "stopped";
        if (!isSaid && (isFinished || isStopped || event == "started")) {
            ledger.said(run, kOnly);
            isSaid = true;
        }
        if (isFinished || isStopped) {
            ledger.ended(run, kOnly, {isFinished ? kFinished : kStopped, 0});
        }
    }
}

}  // namespace soak
