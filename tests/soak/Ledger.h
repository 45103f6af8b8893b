// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_LEDGER_H
#define VOXTREL_TESTS_SOAK_LEDGER_H

#include <cstdint>
#include <string>

namespace soak {

/// What became of an utterance: kind and status as in `voxtrel::Outcome`.
struct Ending {
    int kind = 0;
    int status = 0;

    bool operator!=(const Ending& other) const {
        return kind != other.kind || status != other.status;
    }
};

/// What a process notes of its clients, a line each in a file. What was noted survives the process,
/// however it ends.
///
/// Called on: any thread. Locks: none; a line is one write.
class Ledger {
public:
    explicit Ledger(const std::string& path);
    ~Ledger();
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    void said(unsigned client, uint64_t number);

    /// An event told of the outcome, or only the handle did when the client had ended.
    void ended(unsigned client, uint64_t number, const Ending& ending);
    void endedWithItsClient(unsigned client, uint64_t number, const Ending& ending);

    /// Event and handle tell of different outcomes.
    void differs(unsigned client, uint64_t number);

    /// A call that took so long beyond its deadline; negative: within it.
    void called(const char* name, long beyondMs);

    /// A command of that kind ended with that exit status.
    void exited(const char* name, int status);

    /// A command of that kind was sent a signal to end, and ended by it.
    void interrupted(const char* name);

    /// All clients of the process have ended in order.
    void left();

private:
    void write(const std::string& line) const;

    const int mFile;
};

}  // namespace soak

#endif
