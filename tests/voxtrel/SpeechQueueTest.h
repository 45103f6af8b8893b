// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_SPEECHQUEUETEST_H
#define VOXTREL_TESTS_VOXTREL_SPEECHQUEUETEST_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "voxtrel/session/Mailbox.h"
#include "voxtrel/session/SpeechQueue.h"

namespace voxtrel_test {

/// A queue with a clock driven by hand, and two clients, a and b, whose utterances are a1, a2, b1.
/// What it sends and tells is read as text.
class SpeechQueueTest : public testing::Test {
protected:
    using SpeechPtr = std::shared_ptr<voxtrel::Speech>;
    using Clock = voxtrel::SpeechQueue::Clock;
    using Milliseconds = std::chrono::milliseconds;
    static constexpr auto kReport = voxtrel::OnLoss::Report;
    static constexpr auto kAgain = voxtrel::OnLoss::SayAgain;
    static constexpr auto kWhatever = voxtrel::OnLoss::SayAgainWhatever;

    struct Speaker {
        std::string name;
        std::shared_ptr<voxtrel::Mailbox> mailbox = std::make_shared<voxtrel::Mailbox>(false);
        std::uint64_t said = 0;
    };

    SpeechPtr say(Speaker& speaker, std::string text = "Hello.", voxtrel::OnLoss onLoss = kReport);
    SpeechPtr pause(Speaker& speaker, std::uint32_t length);

    /// All that may be sent now: "1:a1 2:a1 3:probe 4:fence".
    std::string send();
    std::vector<voxtrel::SpeechRequest> sendRequests();

    void started(std::uint32_t number);
    void word(std::uint32_t number, std::uint32_t offset);
    void mark(std::uint32_t number, std::uint32_t mark);
    void finished(std::uint32_t number);
    void stopped(std::uint32_t number, voxtrel::Status status = voxtrel::Status::Ok);
    void speak(std::uint32_t number);  ///< started and finished
    void drop(std::uint32_t number);   ///< started and stopped
    void after(Milliseconds time) { mNow += time; }

    void stop(const Speaker& by);
    void dropWaiting(const Speaker& by);
    void close(const Speaker& speaker);

    /// What has been told since it was asked last: "a1 started, a1 word 4/5, a1 lost -102 heard".
    std::string news();

    /// A text that goes in so many pieces.
    static std::string pieces(std::size_t count);

    Clock::time_point mNow = Clock::time_point() + std::chrono::hours(1);
    Speaker a = {"a"};
    Speaker b = {"b"};
    voxtrel::SpeechQueue mQueue{
        [this](voxtrel::Mailbox& client, voxtrel::Event&& event) { note(client, event); }};

    std::string nameOf(const voxtrel::Mailbox& client, std::uint64_t number) const;

private:
    void note(const voxtrel::Mailbox& client, const voxtrel::Event& event);
    void end(voxtrel::DroppedSpeech dropped);
    void event(std::uint32_t event, std::uint32_t number, std::uint32_t third);

    std::string mNews;
};

}  // namespace voxtrel_test

#endif
