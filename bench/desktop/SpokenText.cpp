// SPDX-License-Identifier: Apache-2.0
#include "bench/desktop/SpokenText.h"

#include <libspeechd.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

#include "voxtrel/Client.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kText = "Yes.";
constexpr std::chrono::seconds kLimit(30);

double microsecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

class VoxtrelSpeech : public Speech {
public:
    VoxtrelSpeech() {
        if (!mClient.waitUntilConnected(kLimit)) {
            throw std::runtime_error("there is no service");
        }
    }

    SayTimes say() override {
        SayTimes times;
        const auto begin = Clock::now();
        const voxtrel::Utterance said = mClient.say(kText);
        times.toReturn = microsecondsSince(begin);
        if (!said.wait(kLimit)) {
            throw std::runtime_error("the service did not speak");
        }
        times.toEnd = microsecondsSince(begin);
        return times;
    }

private:
    voxtrel::Client mClient{"bench"};
};

/// What the callbacks of the desktop's library tell; they have no user pointer.
std::mutex mutex;
std::condition_variable changed;
unsigned long ended = 0;

void onEnd(std::size_t /*message*/, std::size_t /*client*/, SPDNotificationType /*type*/) {
    const std::lock_guard<std::mutex> lock(mutex);
    ++ended;
    changed.notify_all();
}

class DesktopSpeech : public Speech {
public:
    DesktopSpeech()
        : mConnection(spd_open("bench", "main", nullptr, SPD_MODE_THREADED), spd_close) {
        if (mConnection == nullptr) {
            throw std::runtime_error("there is no speech-dispatcher");
        }
        mConnection->callback_end = onEnd;
        mConnection->callback_cancel = onEnd;
        spd_set_notification_on(mConnection.get(), SPD_END);
        spd_set_notification_on(mConnection.get(), SPD_CANCEL);
    }

    SayTimes say() override {
        SayTimes times;
        const auto begin = Clock::now();
        if (spd_say(mConnection.get(), SPD_MESSAGE, kText) < 0) {
            throw std::runtime_error("speech-dispatcher took no message");
        }
        times.toReturn = microsecondsSince(begin);
        std::unique_lock<std::mutex> lock(mutex);
        ++mSaid;
        if (!changed.wait_for(lock, kLimit, [this] { return ended >= mSaid; })) {
            throw std::runtime_error("speech-dispatcher did not speak");
        }
        times.toEnd = microsecondsSince(begin);
        return times;
    }

private:
    const std::unique_ptr<SPDConnection, void (*)(SPDConnection*)> mConnection;
    unsigned long mSaid = 0;
};

}  // namespace

std::unique_ptr<Speech> throughVoxtrel() {
    return std::make_unique<VoxtrelSpeech>();
}

std::unique_ptr<Speech> throughDesktop() {
    return std::make_unique<DesktopSpeech>();
}

}  // namespace bench
