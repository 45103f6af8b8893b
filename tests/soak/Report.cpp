// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Report.h"

#include <algorithm>
#include <iomanip>

namespace soak {
namespace {

constexpr int kNameWidth = 34;

/// A command may fail whenever it meets a disturbance, but not so often in a row.
constexpr std::size_t kOftenEnough = 20;

constexpr int kNumberWidth = 10;

template <typename Number>
void row(std::ostream& out, const std::string& name, std::initializer_list<Number> numbers) {
    out << std::left << std::setw(kNameWidth) << name << std::right;
    for (const Number number : numbers) {
        out << std::setw(kNumberWidth) << number;
    }
    out << "\n";
}

void printDisturbances(const Soak::Result& result, std::ostream& out) {
    row(out, "", {"killed", "stopped", "ended", "left"});
    const auto line = [&out](const char* name, const Member::Counts& counts) {
        row(out, name, {counts.kills, counts.stops, counts.ends, counts.leaves});
    };
    line("clients", result.clients);
    line("service", result.service);
    line("service manager", result.manager);
}

void printUtterances(const Account& account, std::ostream& out) {
    static const char* const kKinds[] = {"pending", "finished", "stopped", "refused", "lost"};
    row(out, "\nutterances", {account.utterances});
    for (const auto& [kind, count] : account.outcomes) {
        row(out, std::string("  ") + kKinds[kind], {count});
    }
    for (const auto& [status, count] : account.losses) {
        if (count > 0) {
            row(out, "    lost with status " + std::to_string(status), {count});
        }
    }
    row(out, "  open when their client was killed", {account.killed});
    row(out, "  without an outcome", {account.without});
    row(out, "  with two", {account.withTwo});
    row(out, "\ncalls", {account.calls});
    row(out, "  late", {account.late});
    row(out, "  longest beyond its deadline, ms", {account.longestBeyondMs});
}

void printCommands(const Account& account, std::ostream& out) {
    out << "\n";
    row(out, "commands", {"status 0", "status 1", "signalled"});
    for (const auto& [name, exits] : account.exits) {
        row(out, "  " + name, {exits.good, exits.failed, exits.interrupted});
    }
}

void printGrowth(const std::vector<Growth>& growth, std::ostream& out) {
    out << "\n";
    row(out, "", {"descr.", "at end", "KiB", "at end"});
    for (const Growth& each : growth) {
        row(out, each.process,
            {each.warm.descriptors, each.end.descriptors, each.warm.memoryKib, each.end.memoryKib});
    }
}

std::vector<std::string> findingsOf(const Soak::Result& result) {
    std::vector<std::string> all = result.findings;
    all.insert(all.end(), result.account.findings.begin(), result.account.findings.end());
    for (const Growth& each : result.growth) {
        if (each.isGrown()) {
            all.push_back(each.process + " holds more than at first");
        }
    }
    if (result.account.utterances == 0 || result.account.calls == 0) {
        all.emplace_back("nothing was said");
    }
    for (const auto& [name, exits] : result.account.exits) {
        if (exits.good == 0 && exits.failed >= kOftenEnough) {
            all.push_back("the command " + name + " has never succeeded");
        }
    }
    return all;
}

}  // namespace

bool report(const Soak::Result& result, std::ostream& out) {
    constexpr std::size_t kMaxShown = 20;
    printDisturbances(result, out);
    printUtterances(result.account, out);
    printCommands(result.account, out);
    printGrowth(result.growth, out);
    const std::vector<std::string> findings = findingsOf(result);
    out << "\nfindings: " << findings.size() << "\n";
    for (std::size_t n = 0; n < std::min(findings.size(), kMaxShown); ++n) {
        out << "  " << findings[n] << "\n";
    }
    out << std::flush;
    return findings.empty();
}

}  // namespace soak
