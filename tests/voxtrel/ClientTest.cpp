// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel/ClientTest.h"

#include <algorithm>

namespace voxtrel_test {

using namespace voxtrel;
using Kind = Event::Kind;

void Notes::take(const Event& event) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mEvents.push_back(event);
    mChanged.notify_all();
}

std::vector<Event> Notes::all() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mEvents;
}

std::size_t Notes::count(Kind kind) const {
    const auto events = all();
    return static_cast<std::size_t>(std::count_if(
        events.begin(), events.end(), [kind](const Event& event) { return event.kind == kind; }));
}

std::size_t Notes::ended(const Utterance& utterance) const {
    const auto events = all();
    return static_cast<std::size_t>(
        std::count_if(events.begin(), events.end(), [&](const Event& event) {
            return event.kind == Kind::Ended && event.utterance == utterance;
        }));
}

bool Notes::waitFor(Kind kind, std::size_t count) const {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_for(lock, kLong, [&] {
        return count <= static_cast<std::size_t>(
                            std::count_if(mEvents.begin(), mEvents.end(),
                                          [kind](const Event& e) { return e.kind == kind; }));
    });
}

std::string Notes::of(const Utterance& utterance) const {
    std::string text;
    for (const Event& event : all()) {
        if (event.utterance != utterance) {
            continue;
        }
        text += text.empty() ? "" : ", ";
        text += event.kind == Kind::Started ? "started"
                : event.kind == Kind::Word  ? "word " + std::to_string(event.position.characters) +
                                                 "/" + std::to_string(event.position.bytes)
                                           : textOf(event.outcome);
    }
    return text;
}

ClientOptions ClientTest::options(Milliseconds deadline) {
    ClientOptions options;
    options.deadline = deadline;
    options.linger = deadline;
    options.fake = &service;
    return options;
}

ClientOptions ClientTest::polled() {
    ClientOptions polled = options();
    polled.handlerThread = HandlerThread::OfTheApplication;
    return polled;
}

Utterance ClientTest::speakAndHold(Client& client, const Notes& notes, const std::string& text,
                                   OnLoss onLoss) {
    service.hold();
    SpeechOptions options;
    options.onLoss = onLoss;
    const std::size_t before = notes.count(Kind::Started);
    Utterance utterance = client.say(text, options);
    EXPECT_TRUE(notes.waitFor(Kind::Started, before + 1));
    return utterance;
}

std::string textOf(const Outcome& outcome) {
    static const char* const kinds[] = {"pending", "finished", "stopped", "refused", "lost"};
    static const char* const stoppers[] = {"", " by client", " by process", " by somebody"};
    std::string text = kinds[static_cast<int>(outcome.kind())];
    text += stoppers[static_cast<int>(outcome.stopper())];
    if (outcome.status() != Status::Ok) {
        text += " " + std::to_string(static_cast<int>(outcome.status()));
    }
    return text;
}

}  // namespace voxtrel_test
