// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_TOOLLIFE_H
#define VOXTREL_TESTS_SOAK_TOOLLIFE_H

#include <random>
#include <string>
#include <vector>

#include "tests/soak/Heartbeat.h"
#include "tests/soak/Ledger.h"

namespace soak {

class ToolRun;

/// What a process does that runs voxtrelctl without rest: it says, stops, looks, sets, switches,
/// locks, monitors, and saves, copies, loads and removes profiles. Orders are those of ClientLife.
class ToolLife {
public:
    /// @param files begins the path of each file that the commands write.
    ToolLife(const std::string& ledger, unsigned seed, const std::string& files);

    /// @return the exit status of the process.
    int live();

    struct Command {
        std::string name;
        std::vector<std::string> words;
        /// It may stay for as long as it likes, and is ended by a signal; another one ends itself.
        bool stays = false;
        /// What it prints tells of an utterance.
        bool speaks = false;
    };

private:
    void act();
    int run(const Command& command);

    /// @return the signal that it may end by; 0: none.
    int await(ToolRun& run, const Command& command);
    void noteSpeech();
    unsigned upTo(unsigned most);

    const std::string mOutput;  ///< of the latest command
    Ledger mLedger;
    Heartbeat mHeartbeat;
    std::mt19937 mRandom;
    const std::vector<Command> mCommands;
    unsigned mRuns = 0;
    bool mIsOff = false;  ///< speech, by a command of its
};

}  // namespace soak

#endif
