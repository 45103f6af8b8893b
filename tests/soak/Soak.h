// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_SOAK_H
#define VOXTREL_TESTS_SOAK_SOAK_H

#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/soak/Account.h"
#include "tests/soak/Figures.h"
#include "tests/soak/Member.h"
#include "tests/soak/Plan.h"

namespace soak {

/// A service manager, a service, and processes with clients that never rest, of which all but two
/// of the clients' are killed, stopped and ended at random; in the last two fifths of the time
/// neither manager nor service is killed or ended, so that what they hold can be compared.
class Soak {
public:
    struct Result {
        Account account;
        std::vector<Growth> growth;
        std::vector<std::string> findings;  ///< what members did by themselves
        Member::Counts clients;
        Member::Counts service;
        Member::Counts manager;
    };

    /// @param folder for ledgers and whatever the processes write.
    Soak(std::string folder, std::chrono::seconds length, unsigned seed);

    Result run();

private:
    using Clock = Plan::Clock;

    /// Clients that live from the beginning to the end.
    static constexpr std::size_t kSteady = 2;

    Member::Words clientCommand(std::size_t client, unsigned life);
    void start();
    void disturbUntil(Clock::time_point end, bool mayKillServers);
    void disturb(bool mayKillServers);
    void disturbClient(Member& client, bool isSteady);
    void disturbServer(Member& server, bool mayKill);
    void stopForAWhile(Member& member);
    void startAfterAWhile(Member& member);
    void supervise();
    void repairAll();
    bool isWhole() const { return mRepairs.next() == Clock::time_point::max(); }
    void calm();
    void proceed();
    void end();
    void measure(const Member& member);
    void compare(const Member& member);
    void collect();
    void order(const std::string& line);
    unsigned upTo(unsigned most);

    const std::string mFolder;
    const Clock::duration mLength;
    const unsigned mSeed;
    std::mt19937 mRandom;
    Plan mRepairs;  ///< what ends a disturbance
    Member mManager;
    Member mService;
    std::vector<std::unique_ptr<Member>> mClients;
    Result mResult;
};

}  // namespace soak

#endif
