// SPDX-License-Identifier: Apache-2.0
#include <optional>

#include "tests/soak/Speaker.h"
#include "tests/soak/Utterances.h"
#include "voxtrel/Client.h"

namespace soak {
namespace {

Ending endingOf(const voxtrel::Outcome& outcome) {
    return {static_cast<int>(outcome.kind()), static_cast<int>(outcome.status())};
}

class CppSpeaker : public Speaker {
public:
    CppSpeaker(Ledger& ledger, unsigned client, bool isPolled)
        : mUtterances(ledger, client), mClient(std::in_place, "soak", optionsOf(isPolled)) {
        mClient->onEvent([this](const voxtrel::Event& event) { handle(event); });
    }
    ~CppSpeaker() override {
        mLock.reset();
        mClient.reset();
        mUtterances.close();
    }

    void say(const Speech& speech) override {
        voxtrel::SpeechOptions options;
        options.onLoss = static_cast<voxtrel::OnLoss>(speech.onLoss);
        if (!speech.language.empty()) {
            options.language = speech.language;
        }
        note(mClient->say(speech.text, options));
    }
    void pause(Milliseconds length) override { note(mClient->pause(length)); }
    void stop() override { mClient->stop(); }
    void stopEverybody(Milliseconds deadline) override { (void)mClient->stopEverybody(deadline); }
    void readSettings(Milliseconds deadline) override { (void)mClient->settings(deadline); }
    void readFeatures(Milliseconds deadline) override { (void)mClient->features(deadline); }
    void readSwitch(Milliseconds deadline) override {
        (void)mClient->isOn(voxtrel::Switch::Pitch, deadline);
    }
    void changeSpeed(unsigned speed, Milliseconds deadline) override {
        voxtrel::GlobalSettings settings;
        settings.speed = speed;
        (void)mClient->change(settings, deadline);
    }
    void lock(Milliseconds deadline) override {
        auto lock = mClient->lock(deadline);
        if (lock) {
            mLock.emplace(std::move(lock).value());
        }
    }
    void unlock() override { mLock.reset(); }
    bool waitForAll(Milliseconds timeout) override { return bool(mClient->waitForAll(timeout)); }
    void dispatch() override { mClient->dispatch(); }
    std::size_t open() const override { return mUtterances.open(); }

private:
    static voxtrel::ClientOptions optionsOf(bool isPolled) {
        voxtrel::ClientOptions options;
        options.deadline = options.linger = kEnd / 2;
        options.handlerThread = isPolled ? voxtrel::HandlerThread::OfTheApplication
                                         : voxtrel::HandlerThread::OfTheLibrary;
        return options;
    }

    void note(const voxtrel::Utterance& utterance) {
        mUtterances.said(utterance.number(), [utterance] { return endingOf(utterance.outcome()); });
    }

    void handle(const voxtrel::Event& event) {
        if (event.kind != voxtrel::Event::Kind::Ended) {
            return;
        }
        mUtterances.ended(event.utterance.number(), endingOf(event.outcome));
        if (event.outcome && event.utterance.number() % 8 == 0) {
            note(mClient->say("And another."));
        }
    }

    Utterances mUtterances;
    std::optional<voxtrel::Client> mClient;
    std::optional<voxtrel::Lock> mLock;
};

}  // namespace

std::unique_ptr<Speaker> speakerInCpp(Ledger& ledger, unsigned client, bool isPolled) {
    return std::make_unique<CppSpeaker>(ledger, client, isPolled);
}

}  // namespace soak
