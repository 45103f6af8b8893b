// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Speaker.h"
#include "tests/soak/Utterances.h"
#include "voxtrel/voxtrel.h"

namespace soak {
namespace {

int inMs(Milliseconds length) {
    return static_cast<int>(length.count());
}

Ending endingOf(const vx_outcome& outcome) {
    return {outcome.kind, outcome.status};
}

class CSpeaker : public Speaker {
public:
    CSpeaker(Ledger& ledger, unsigned client, bool isPolled) : mUtterances(ledger, client) {
        vx_client_options* options = nullptr;
        vx_client_options_new(&options);
        vx_client_options_set_deadline(options, inMs(kEnd / 2));
        vx_client_options_set_linger(options, inMs(kEnd / 2));
        vx_client_options_set_handler_thread(
            options, isPolled ? VX_THREAD_OF_APPLICATION : VX_THREAD_OF_LIBRARY);
        vx_client_new("soak", options, &mClient);
        vx_client_options_free(options);
        vx_on_event(mClient, handle, this);
    }
    ~CSpeaker() override {
        vx_lock_free(mLock);
        vx_client_free(mClient);
        mUtterances.close();
    }

    void say(const Speech& speech) override {
        vx_options* options = nullptr;
        vx_options_new(&options);
        vx_options_set_on_loss(options, speech.onLoss);
        if (!speech.language.empty()) {
            vx_options_set_language(options, speech.language.c_str());
        }
        vx_utterance* utterance = nullptr;
        vx_say(mClient, speech.text.c_str(), options, &utterance);
        vx_options_free(options);
        note(utterance);
    }
    void pause(Milliseconds length) override {
        vx_utterance* utterance = nullptr;
        vx_pause(mClient, inMs(length), &utterance);
        note(utterance);
    }
    void stop() override { vx_stop(mClient); }
    void stopEverybody(Milliseconds deadline) override {
        vx_stop_everybody(mClient, inMs(deadline));
    }
    void readSettings(Milliseconds deadline) override {
        vx_settings* settings = nullptr;
        if (vx_get_settings(mClient, inMs(deadline), &settings) == VX_OK) {
            vx_settings_free(settings);
        }
    }
    void readFeatures(Milliseconds deadline) override {
        vx_features* features = nullptr;
        if (vx_get_features(mClient, inMs(deadline), &features) == VX_OK) {
            vx_features_free(features);
        }
    }
    void readSwitch(Milliseconds deadline) override {
        int on = 0;
        vx_is_on(mClient, VX_SWITCH_PITCH, inMs(deadline), &on);
    }
    void changeSpeed(unsigned speed, Milliseconds deadline) override {
        vx_settings* settings = nullptr;
        vx_settings_new(&settings);
        vx_settings_set_speed(settings, speed);
        vx_change_settings(mClient, settings, inMs(deadline));
        vx_settings_free(settings);
    }
    void lock(Milliseconds deadline) override {
        vx_lock* lock = nullptr;
        if (vx_take_lock(mClient, inMs(deadline), &lock) == VX_OK) {
            mLock = lock;
        }
    }
    void unlock() override {
        vx_lock_free(mLock);
        mLock = nullptr;
    }
    bool waitForAll(Milliseconds timeout) override {
        return vx_wait_for_all(mClient, inMs(timeout)) == VX_OK;
    }
    void dispatch() override { vx_dispatch(mClient, nullptr); }
    std::size_t open() const override { return mUtterances.open(); }

private:
    void note(vx_utterance* utterance) {
        unsigned long number = 0;
        vx_utterance_number(utterance, &number);
        const std::shared_ptr<vx_utterance> handle(utterance, vx_utterance_free);
        mUtterances.said(number, [handle] {
            vx_outcome outcome = {};
            vx_utterance_outcome(handle.get(), &outcome);
            return endingOf(outcome);
        });
    }

    static void handle(const vx_event* event, void* user) {
        if (event->kind == VX_EVENT_ENDED) {
            static_cast<CSpeaker*>(user)->mUtterances.ended(event->utterance,
                                                            endingOf(event->outcome));
        }
    }

    Utterances mUtterances;
    vx_client* mClient = nullptr;
    vx_lock* mLock = nullptr;
};

}  // namespace

std::unique_ptr<Speaker> speakerInC(Ledger& ledger, unsigned client, bool isPolled) {
    return std::make_unique<CSpeaker>(ledger, client, isPolled);
}

}  // namespace soak
