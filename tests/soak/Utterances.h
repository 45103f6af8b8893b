// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_UTTERANCES_H
#define VOXTREL_TESTS_SOAK_UTTERANCES_H

#include <functional>
#include <map>
#include <mutex>

#include "tests/soak/Ledger.h"

namespace soak {

/// The utterances of one client that have no outcome yet, and what becomes of all of them.
/// Called on: any thread.
class Utterances {
public:
    /// Asks a handle for its outcome.
    using Handle = std::function<Ending()>;

    Utterances(Ledger& ledger, unsigned client) : mLedger(ledger), mClient(client) {}

    void said(uint64_t number, Handle handle);

    /// An event has told of it, which may be before `said`.
    void ended(uint64_t number, const Ending& ending);

    /// The client has ended: there will be no more events.
    void close();

    std::size_t open() const;

private:
    void compare(uint64_t number, const Handle& handle, const Ending& ending);

    Ledger& mLedger;
    const unsigned mClient;
    mutable std::mutex mMutex;
    std::map<uint64_t, Handle> mOpen;
    std::map<uint64_t, Ending> mEarly;  ///< told of before `said`
};

}  // namespace soak

#endif
