// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_LOSSYWAY_H
#define VOXTREL_TESTS_VOXTREL_LOSSYWAY_H

#include <climits>
#include <map>
#include <memory>
#include <mutex>

#include "ipc/TransactionCodes.h"
#include "voxtrel/session/Port.h"
#include "voxtrel/testing/FakeState.h"

namespace voxtrel_test {

/// What gets lost between a session and a service of another process. Called on: any thread.
class Losses {
public:
    /// The next `count` requests of this kind.
    void lose(const TTS::Transaction& request, int count = INT_MAX);
    void loseNewsOfLocks();
    void end();

    /// Whether one that is on its way is lost.
    bool take(std::uint32_t code);
    bool takeNews(unsigned event, unsigned state) const;
    bool areOver() const;

private:
    mutable std::mutex mMutex;
    std::map<std::uint32_t, int> mRequests;
    bool mIsWithoutNews = false;
};

/// The way of a session to a fake service, as if that were in another process.
class LossyPort : public voxtrel::Port {
public:
    LossyPort(std::shared_ptr<voxtrel::testing::FakeState> service, Losses& losses)
        : mService(std::move(service)), mLosses(losses) {}

    Found find(std::function<void()> died) override;

private:
    const std::shared_ptr<voxtrel::testing::FakeState> mService;
    Losses& mLosses;
};

}  // namespace voxtrel_test

#endif
