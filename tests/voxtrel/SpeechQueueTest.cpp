// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel/SpeechQueueTest.h"

#include "vocabulary/Events.h"
#include "voxtrel/session/TextCutter.h"

namespace voxtrel_test {

using namespace voxtrel;

namespace {

std::string textOf(const Outcome& outcome) {
    static const char* const kinds[] = {"pending", "finished", "stopped", "refused", "lost"};
    static const char* const stoppers[] = {"", " by client", " by process", " by somebody"};
    std::string text = kinds[static_cast<int>(outcome.kind())];
    text += stoppers[static_cast<int>(outcome.stopper())];
    if (outcome.status() != Status::Ok) {
        text += " " + std::to_string(static_cast<int>(outcome.status()));
    }
    return text + (outcome.wasHeard() && !outcome ? " heard" : "");
}

std::string textOf(const Position& position) {
    return std::to_string(position.characters) + "/" + std::to_string(position.bytes);
}

}  // namespace

SpeechQueueTest::SpeechPtr SpeechQueueTest::say(Speaker& speaker, std::string text, OnLoss onLoss) {
    auto speech = std::make_shared<Speech>();
    speech->client = speaker.mailbox;
    speech->state = std::make_shared<UtteranceState>(++speaker.said);
    speech->text = std::move(text);
    speech->options.onLoss = onLoss;
    mQueue.add(speech);
    return speech;
}

SpeechQueueTest::SpeechPtr SpeechQueueTest::pause(Speaker& speaker, std::uint32_t length) {
    const SpeechPtr speech = say(speaker, "");
    speech->pauseMs = length;
    return speech;
}

std::vector<SpeechRequest> SpeechQueueTest::sendRequests() {
    std::vector<SpeechRequest> sent;
    while (auto request = mQueue.next(mNow)) {
        sent.push_back(*request);
    }
    return sent;
}

std::string SpeechQueueTest::send() {
    std::string text;
    for (const SpeechRequest& request : sendRequests()) {
        text += (text.empty() ? "" : " ") + std::to_string(request.number) + ":";
        text += request.kind == SpeechRequest::Kind::Probe ? "probe"
                : request.kind == SpeechRequest::Kind::Fence
                    ? "fence"
                    : nameOf(*request.speech->client, request.speech->state->number());
    }
    return text;
}

void SpeechQueueTest::event(std::uint32_t event, std::uint32_t number, std::uint32_t third) {
    mQueue.onEvent(event, number, third, mNow);
}

void SpeechQueueTest::started(std::uint32_t number) {
    event(TTS::EVENT_STARTED, number, 0);
}

void SpeechQueueTest::word(std::uint32_t number, std::uint32_t offset) {
    event(TTS::EVENT_WORD, number, offset);
}

void SpeechQueueTest::mark(std::uint32_t number, std::uint32_t mark) {
    event(TTS::EVENT_MARK, number, mark);
}

void SpeechQueueTest::finished(std::uint32_t number) {
    event(TTS::EVENT_FINISHED, number, 0);
}

void SpeechQueueTest::stopped(std::uint32_t number, Status status) {
    event(TTS::EVENT_STOPPED, number, static_cast<std::uint32_t>(status));
}

void SpeechQueueTest::speak(std::uint32_t number) {
    started(number);
    finished(number);
}

void SpeechQueueTest::drop(std::uint32_t number) {
    started(number);
    stopped(number);
}

void SpeechQueueTest::stop(const Speaker& by) {
    end(mQueue.stop(*by.mailbox));
}

void SpeechQueueTest::dropWaiting(const Speaker& by) {
    end(mQueue.dropWaiting(*by.mailbox));
}

void SpeechQueueTest::close(const Speaker& speaker) {
    end(mQueue.close(*speaker.mailbox));
}

void SpeechQueueTest::end(DroppedSpeech dropped) {
    dropped.end([this](Mailbox& client, Event&& event) { note(client, event); });
}

std::string SpeechQueueTest::nameOf(const Mailbox& client, std::uint64_t number) const {
    return (&client == a.mailbox.get() ? a.name : b.name) + std::to_string(number);
}

void SpeechQueueTest::note(const Mailbox& client, const Event& event) {
    mNews += (mNews.empty() ? "" : ", ") + nameOf(client, event.utterance.number()) + " ";
    switch (event.kind) {
        case Event::Kind::Started:
            mNews += "started";
            break;
        case Event::Kind::Word:
            mNews += "word " + textOf(event.position);
            break;
        case Event::Kind::Mark:
            mNews += "mark " + std::to_string(event.value) + " " + textOf(event.position);
            break;
        case Event::Kind::Ended:
            mNews += textOf(event.outcome);
            EXPECT_EQ(textOf(event.outcome), textOf(event.utterance.outcome()));
            break;
        default:
            mNews += "?";
    }
}

std::string SpeechQueueTest::news() {
    std::string news;
    news.swap(mNews);
    return news;
}

std::string SpeechQueueTest::pieces(std::size_t count) {
    std::string text;
    for (std::size_t n = 0; n < count; ++n) {
        text += std::string(kPieceBytes - 2, static_cast<char>('a' + n % 26)) + ". ";
    }
    return text;
}

}  // namespace voxtrel_test
