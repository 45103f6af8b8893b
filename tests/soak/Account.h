// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_ACCOUNT_H
#define VOXTREL_TESTS_SOAK_ACCOUNT_H

#include <istream>
#include <map>
#include <string>
#include <vector>

namespace soak {

/// What the ledgers of all processes come to.
struct Account {
    /// A call that ends later than this behind its deadline is late. Others use the machine too.
    static constexpr long kLateMs = 2000;

    struct Exits {
        std::size_t good = 0;
        std::size_t failed = 0;       ///< in order, with status 1
        std::size_t interrupted = 0;  ///< by the signal that it was sent
    };

    std::size_t utterances = 0;
    std::map<int, std::size_t> outcomes;  ///< by `voxtrel::Outcome::Kind`
    std::map<int, std::size_t> losses;    ///< of the kind Lost, by status
    std::size_t killed = 0;               ///< open when the process of their client was killed
    std::size_t without = 0;              ///< open though their client ended in order
    std::size_t withTwo = 0;              ///< or with two that differ
    std::size_t calls = 0;
    std::size_t late = 0;
    long longestBeyondMs = 0;
    std::map<std::string, Exits> exits;  ///< of commands, by their kind
    std::vector<std::string> findings;   ///< what should not be

    /// Adds the ledger of one process.
    void add(const std::string& name, std::istream& ledger);
};

}  // namespace soak

#endif
