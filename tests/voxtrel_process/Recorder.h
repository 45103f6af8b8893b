// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_PROCESS_RECORDER_H
#define VOXTREL_TESTS_VOXTREL_PROCESS_RECORDER_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "voxtrel/Client.h"

namespace voxtrel_test {

/// For a machine under load, with sanitizers.
constexpr std::chrono::seconds kLimit(90);

/// What a client's handler was told. Make it before the client.
class Recorder {
public:
    using Kind = voxtrel::Event::Kind;

    /// Becomes the client's handler.
    void listenTo(voxtrel::Client& client);

    /// Waits until so many events of a kind have come.
    /// @return false when there were fewer in the generous limit.
    bool awaits(Kind kind, std::size_t count = 1);
    std::size_t count(Kind kind) const;
    std::vector<voxtrel::Event> all(Kind kind) const;

private:
    mutable std::mutex mMutex;
    std::condition_variable mCame;
    std::vector<voxtrel::Event> mEvents;
};

/// "finished", "stopped by Somebody", "lost -5 unheard": an outcome in words.
std::string inWords(const voxtrel::Outcome& outcome);

}  // namespace voxtrel_test

#endif
