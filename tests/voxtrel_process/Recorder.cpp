// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel_process/Recorder.h"

#include <algorithm>
#include <iterator>

namespace voxtrel_test {

using voxtrel::Event;
using voxtrel::Outcome;

void Recorder::listenTo(voxtrel::Client& client) {
    client.onEvent([this](const Event& event) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mEvents.push_back(event);
        mCame.notify_all();
    });
}

bool Recorder::awaits(Kind kind, std::size_t count) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mCame.wait_for(lock, kLimit, [&] {
        const auto isOfKind = [kind](const Event& event) { return event.kind == kind; };
        return std::count_if(mEvents.begin(), mEvents.end(), isOfKind) >=
               static_cast<std::ptrdiff_t>(count);
    });
}

std::size_t Recorder::count(Kind kind) const {
    return all(kind).size();
}

std::vector<Event> Recorder::all(Kind kind) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<Event> found;
    std::copy_if(mEvents.begin(), mEvents.end(), std::back_inserter(found),
                 [kind](const Event& event) { return event.kind == kind; });
    return found;
}

std::string inWords(const Outcome& outcome) {
    static const char* const kKinds[] = {"pending", "finished", "stopped", "refused", "lost"};
    static const char* const kStoppers[] = {"nobody", "this client", "this process", "somebody"};
    std::string words = kKinds[static_cast<int>(outcome.kind())];
    if (outcome.kind() == Outcome::Kind::Stopped) {
        words += std::string(" by ") + kStoppers[static_cast<int>(outcome.stopper())];
    }
    if (outcome.status() != voxtrel::Status::Ok) {
        words += " " + std::to_string(static_cast<int>(outcome.status()));
    }
    return words + (outcome.wasHeard() ? "" : " unheard");
}

}  // namespace voxtrel_test
