// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Soak.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/support/Roles.h"

namespace soak {
namespace {

using std::chrono::milliseconds;

constexpr bool kHasPython = sizeof(VOXTREL_PYTHON) > 1;
constexpr const char* kKinds[] = {
    "cpp", "c", "cpp", "c", "cpp", kHasPython ? "python" : "c", "tools", "tools", "stranger"};

/// How long what a process lets go of may take, on a busy machine.
constexpr std::chrono::seconds kToLetGo(20);
constexpr milliseconds kBetweenLooks(100);

/// The least of several looks: what goes on behind a client's end is not what a process holds.
Figures settled(pid_t process) {
    constexpr int kLooks = 15;
    Figures least = figuresOf(process);
    for (int n = 1; n < kLooks; ++n) {
        std::this_thread::sleep_for(kBetweenLooks);
        const Figures now = figuresOf(process);
        least.descriptors = std::min(least.descriptors, now.descriptors);
        least.memoryKib = std::min(least.memoryKib, now.memoryKib);
    }
    return least;
}

/// Looks until it holds no more than that, or long enough.
Figures settledWithin(pid_t process, const Figures& most) {
    const auto end = Plan::Clock::now() + kToLetGo;
    Figures now = settled(process);
    while (!isWithin(now, most) && Plan::Clock::now() < end) {
        now = settled(process);
    }
    return now;
}

}  // namespace

Soak::Soak(std::string folder, std::chrono::seconds length, unsigned seed)
    : mFolder(std::move(folder)),
      mLength(length),
      mSeed(seed),
      mRandom(seed),
      mManager("service manager", [](unsigned) { return Member::Words{VOXTREL_SERVICE_MANAGER}; }),
      mService("service", [this](unsigned life) {
          Member::Words words = {VOXTREL_SERVICE, "--profile", mFolder + "/voxtrel.ini", "--sink",
                                 "none"};
          if (life % 4 == 0) {
              words.emplace_back("--real-time");
          }
          return words;
      }) {
    for (const char* kind : kKinds) {
        const std::size_t index = mClients.size();
        mClients.push_back(std::make_unique<Member>(
            "client " + std::to_string(index + 1) + " (" + kind + ")",
            [this, index](unsigned life) { return clientCommand(index, life); }));
    }
}

Member::Words Soak::clientCommand(std::size_t client, unsigned life) {
    const std::string kind = kKinds[client];
    const std::string ledger =
        mFolder + "/ledgers/" + std::to_string(client + 1) + "." + std::to_string(life);
    const std::string seed = std::to_string(mSeed + 1000 * client + life);
    if (kind == "python") {
        return {VOXTREL_PYTHON, VOXTREL_PYTHON_CLIENT, ledger, seed};
    }
    const std::string files = mFolder + "/tools/" + std::to_string(client + 1) + ".";
    return {voxtrel_test::ownPath(), voxtrel_test::kRoleArgument + kind, ledger, seed, files};
}

Soak::Result Soak::run() {
    const auto begun = Clock::now();
    const auto at = [&](int percent) { return begun + mLength * percent / 100; };
    start();
    disturbUntil(at(15), true);
    calm();
    for (std::size_t n = 0; n < kSteady; ++n) {
        measure(*mClients[n]);
    }
    proceed();
    disturbUntil(at(60), true);
    repairAll();
    disturbUntil(at(70), false);
    calm();
    measure(mService);
    measure(mManager);
    proceed();
    disturbUntil(at(100), false);
    calm();
    for (const Member* member : {mClients[0].get(), mClients[1].get(), &mService, &mManager}) {
        compare(*member);
    }
    end();
    collect();
    return mResult;
}

void Soak::start() {
    setenv("PYTHONPATH", VOXTREL_PYTHON_FOLDER, 1);
    setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
    setenv("VOXTREL_LIBRARY", VOXTREL_LIBRARY, 1);
    std::filesystem::create_directory(mFolder + "/ledgers");
    std::filesystem::create_directory(mFolder + "/tools");
    mManager.start();
    mService.start();
    for (const auto& client : mClients) {
        client->start();
    }
}

void Soak::disturbUntil(Clock::time_point end, bool mayKillServers) {
    constexpr unsigned kMaxMsBetween = 1000;
    for (auto next = Clock::now(); next < end; next += milliseconds(upTo(kMaxMsBetween))) {
        while (mRepairs.next() < next) {
            std::this_thread::sleep_until(mRepairs.next());
            mRepairs.doUntil(Clock::now());
        }
        std::this_thread::sleep_until(next);
        supervise();
        disturb(mayKillServers);
    }
}

void Soak::disturb(bool mayKillServers) {
    const unsigned choice = upTo(99);
    if (choice < 20) {
        disturbServer(mService, mayKillServers);
    } else if (choice < 35) {
        disturbServer(mManager, mayKillServers);
    } else {
        const std::size_t index = upTo(static_cast<unsigned>(mClients.size()) - 1);
        disturbClient(*mClients[index], index < kSteady);
    }
}

void Soak::disturbClient(Member& client, bool isSteady) {
    if (!client.isAlive() || client.isStopped()) {
        return;
    }
    const unsigned choice = isSteady ? 2 : upTo(4);
    if (choice < 2) {
        client.kill();
        startAfterAWhile(client);
    } else if (choice < 4) {
        stopForAWhile(client);
    } else if (isWhole()) {  // it is waited for
        client.say("end");
        client.awaitEnd();
        startAfterAWhile(client);
    }
}

void Soak::disturbServer(Member& server, bool mayKill) {
    if (!server.isAlive() || server.isStopped()) {
        return;
    }
    const unsigned choice = mayKill ? upTo(4) : 4;
    if (choice < 2) {
        server.kill();
        startAfterAWhile(server);
    } else if (choice < 3 && isWhole() && server.canBeEnded()) {
        server.awaitEnd(SIGTERM);
        startAfterAWhile(server);
    } else {
        stopForAWhile(server);
    }
}

void Soak::stopForAWhile(Member& member) {
    member.stop();
    const unsigned longest = upTo(3) == 0 ? 6000 : 600;
    mRepairs.add(Clock::now() + milliseconds(upTo(longest)), [&member] { member.proceed(); });
}

void Soak::startAfterAWhile(Member& member) {
    // A service waits two seconds for its service manager.
    mRepairs.add(Clock::now() + milliseconds(upTo(1000)), [&member] { member.start(); });
}

/// On a busy machine a service manager may be back later than a service waits for it.
void Soak::supervise() {
    if (mService.hasLeft()) {
        startAfterAWhile(mService);
    }
}

void Soak::repairAll() {
    supervise();
    mRepairs.doUntil(Clock::time_point::max());
}

void Soak::order(const std::string& line) {
    for (const auto& client : mClients) {
        (void)client->say(line);  // who does not take it does not answer
    }
    for (const auto& client : mClients) {
        constexpr int kMaxMinutes = 5;
        std::string answer;
        for (int n = 0; n < kMaxMinutes && answer.empty(); ++n) {
            answer = client->answer();
            if (mService.hasLeft()) {
                mService.start();
            }
        }
        if (answer != line) {
            mResult.findings.push_back(client->name() + " did not obey: " + line + ": " + answer);
        }
    }
}

void Soak::calm() {
    repairAll();
    order("calm");
}

void Soak::proceed() {
    order("go");
}

void Soak::end() {
    order("end");
    for (const auto& client : mClients) {
        client->awaitEnd();
    }
    mService.awaitEnd(SIGTERM);
    mManager.awaitEnd(SIGTERM);
}

void Soak::measure(const Member& member) {
    mResult.growth.push_back({member.name(), settled(member.pid()), {}});
}

void Soak::compare(const Member& member) {
    for (Growth& growth : mResult.growth) {
        if (growth.process == member.name()) {
            growth.end = settledWithin(member.pid(), maxAfter(growth.warm));
        }
    }
}

void Soak::collect() {
    for (const auto& entry : std::filesystem::directory_iterator(mFolder + "/ledgers")) {
        std::ifstream ledger(entry.path());
        mResult.account.add(entry.path().filename(), ledger);
    }
    const auto add = [this](Member::Counts& counts, const Member& member) {
        counts.kills += member.counts().kills;
        counts.stops += member.counts().stops;
        counts.ends += member.counts().ends;
        counts.leaves += member.counts().leaves;
        mResult.findings.insert(mResult.findings.end(), member.findings().begin(),
                                member.findings().end());
    };
    for (const auto& client : mClients) {
        add(mResult.clients, *client);
    }
    add(mResult.service, mService);
    add(mResult.manager, mManager);
}

unsigned Soak::upTo(unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(mRandom);
}

}  // namespace soak
