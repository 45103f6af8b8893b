// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Account.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "tests/soak/Ledger.h"

namespace soak {
namespace {

constexpr int kLost = 4;

/// One ledger, as it is read.
class Reader {
public:
    Reader(Account& account, const std::string& name) : mAccount(account), mName(name) {}

    void read(std::istream& ledger) {
        for (std::string line; std::getline(ledger, line);) {
            take(line);
        }
        for (const auto& [key, outcomes] : mOutcomes) {
            close(key, outcomes);
        }
    }

private:
    using Key = std::pair<unsigned, uint64_t>;

    void take(const std::string& line) {
        std::istringstream words(line);
        std::string what;
        words >> what;
        if (what == "called") {
            takeCall(words);
        } else if (what == "exited") {
            takeExit(words);
        } else if (what == "interrupted") {
            words >> what;
            ++mAccount.exits[what].interrupted;
        } else if (what == "left") {
            mHasLeft = true;
        } else {
            takeUtterance(what, words);
        }
    }

    void takeCall(std::istream& words) {
        std::string name;
        long beyond = 0;
        words >> name >> beyond;
        ++mAccount.calls;
        mAccount.longestBeyondMs = std::max(mAccount.longestBeyondMs, beyond);
        if (beyond > Account::kLateMs) {
            ++mAccount.late;
            find(name + " ended " + std::to_string(beyond) + " ms behind its deadline");
        }
    }

    /// A command may fail, in order.
    void takeExit(std::istream& words) {
        std::string name;
        int status = -1;
        words >> name >> status;
        Account::Exits& exits = mAccount.exits[name];
        if (status == 0) {
            ++exits.good;
        } else if (status == 1) {
            ++exits.failed;
        } else {
            find(name + " ended with status " + std::to_string(status));
        }
    }

    void takeUtterance(const std::string& what, std::istream& words) {
        Key key;
        Ending ending;
        words >> key.first >> key.second >> ending.kind >> ending.status;
        unsigned& outcomes = mOutcomes[key];
        if (what == "differs") {
            ++outcomes;
        } else if ((what == "ended" || what == "closed") && ending.kind != 0) {
            ++mAccount.outcomes[ending.kind];
            mAccount.losses[ending.status] += ending.kind == kLost ? 1 : 0;
            ++outcomes;
        }
    }

    void close(const Key& key, unsigned outcomes) {
        ++mAccount.utterances;
        const std::string name =
            "utterance " + std::to_string(key.second) + " of client " + std::to_string(key.first);
        if (outcomes > 1) {
            ++mAccount.withTwo;
            find(name + " has more than one outcome");
        } else if (outcomes == 0 && mHasLeft) {
            ++mAccount.without;
            find(name + " has no outcome");
        } else if (outcomes == 0) {
            ++mAccount.killed;
        }
    }

    void find(const std::string& what) { mAccount.findings.push_back(mName + ": " + what); }

    Account& mAccount;
    const std::string mName;
    std::map<Key, unsigned> mOutcomes;
    bool mHasLeft = false;
};

}  // namespace

void Account::add(const std::string& name, std::istream& ledger) {
    Reader(*this, name).read(ledger);
}

}  // namespace soak
