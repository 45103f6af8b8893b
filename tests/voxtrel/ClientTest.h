// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_CLIENTTEST_H
#define VOXTREL_TESTS_VOXTREL_CLIENTTEST_H

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/Eventually.h"
#include "voxtrel/Client.h"
#include "voxtrel/testing/FakeService.h"

namespace voxtrel_test {

using namespace std::chrono_literals;

/// For what comes at once unless it never comes.
constexpr std::chrono::milliseconds kLong = 60s;

/// What a handler has been told. Called on: any thread.
class Notes {
public:
    void take(const voxtrel::Event& event);
    std::function<void(const voxtrel::Event&)> taker() {
        return [this](const voxtrel::Event& event) { take(event); };
    }

    std::vector<voxtrel::Event> all() const;
    std::size_t count(voxtrel::Event::Kind kind) const;
    std::size_t ended(const voxtrel::Utterance& utterance) const;

    /// False if there were fewer in time.
    bool waitFor(voxtrel::Event::Kind kind, std::size_t count = 1) const;

    /// "started word:0 word:6 finished": what was told of an utterance.
    std::string of(const voxtrel::Utterance& utterance) const;

private:
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::vector<voxtrel::Event> mEvents;
};

/// A fake service, and clients of it.
class ClientTest : public ::testing::Test {
protected:
    voxtrel::ClientOptions options() { return options(kLong); }
    voxtrel::ClientOptions options(voxtrel::Milliseconds deadline);
    voxtrel::ClientOptions polled();

    /// Says something and waits until `notes`, of that client, tells that it sounds; it goes on.
    voxtrel::Utterance speakAndHold(voxtrel::Client& client, const Notes& notes,
                                    const std::string& text = "Held.",
                                    voxtrel::OnLoss onLoss = voxtrel::OnLoss::Report);

    voxtrel::testing::FakeService service;
};

/// "stopped by client -14 heard"
std::string textOf(const voxtrel::Outcome& outcome);

}  // namespace voxtrel_test

#endif
