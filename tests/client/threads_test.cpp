// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "client/SharedConnection.h"
#include "client/internal/MutexLock.h"
#include "tests/client/ClientTest.h"

// What the thread sanitizer must find nothing in: the uses that docs/threading.md calls safe.

namespace {

using support::takeNotes;
using TTS::TTSClientPrivate;

constexpr int kRounds = 200;

std::atomic<int> events{0};

void countEvent(unsigned int, unsigned int, unsigned int) {
    ++events;
}

/// Starts them together and waits for the end of each.
void runTogether(const std::vector<std::function<void()>>& bodies) {
    std::atomic<size_t> waiting{bodies.size()};
    std::vector<std::thread> threads;
    threads.reserve(bodies.size());
    for (const std::function<void()>& body : bodies) {
        threads.emplace_back([&waiting, &body] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            body();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Death notices print; a test of threads has no use for that.
class Threads : public support::ClientTest {
protected:
    Threads() {
        events = 0;
        client.mCbFunc = countEvent;
        testing::internal::CaptureStdout();
        client.connect();
    }
    ~Threads() override { testing::internal::GetCapturedStdout(); }

    /// An application thread, which takes turns with the others.
    std::function<void()> application(std::function<void(int round)> use) {
        return [this, use] {
            for (int round = 0; round < kRounds; ++round) {
                const std::lock_guard<std::mutex> turn(turns);
                use(round);
            }
        };
    }

    /// A binder thread, which is nobody's turn.
    static std::function<void()> binder(std::function<void()> deliver) {
        return [deliver] {
            for (int round = 0; round < kRounds; ++round) {
                deliver();
            }
        };
    }

    void speak(int round) {
        auto speed = static_cast<uint32_t>(100 + round);
        EXPECT_EQ(0, client.setSpeed(&speed));
        EXPECT_EQ(0, client.say(speed, "Hello"));
        EXPECT_EQ(0, client.lock());
        EXPECT_EQ(0, client.stopAndFlush(1));
        EXPECT_EQ(0, client.unlock());
    }

    std::mutex turns;
};

TEST_F(Threads, OfTheApplicationTakeTurnsWhileEventsArriveOnOthers) {
    const android::sp<TTS::ICallback> callback = TTS::ICallback::asInterface(service.callback);
    const auto deliver = binder([&callback] { EXPECT_TRUE(callback->notify(1, 2, 3)); });
    const auto use = application([this](int round) { speak(round); });
    runTogether({use, use, deliver, deliver});
    EXPECT_GE(events, 2 * kRounds);
}

TEST_F(Threads, OfTheRuntimeReleaseADeadCallbackWhileEventsArriveOnOthers) {
    const android::sp<TTSClientPrivate::CbDeathNotifier> notifier =
        TTSClientPrivate::mCbDeathNotifier;
    const android::sp<TTS::ICallback> callback = TTS::ICallback::asInterface(service.callback);
    const auto deliver = binder([&callback] { EXPECT_TRUE(callback->notify(1, 2, 3)); });
    const auto use = application([this](int round) { speak(round); });
    runTogether({use, use, deliver, deliver, [&notifier] { notifier->binderDied(nullptr); }});
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
}

TEST_F(Threads, OfTheRuntimeEmptyTheProxyWhileTheApplicationConnects) {
    const android::sp<TTS::DeathNotifier> notifier = TTS::gDeathNotifier;
    std::atomic<int> joined{0};
    const auto connect = application([this, &joined](int) {
        const int result = client.connect();
        joined += result == 0 ? 1 : 0;
        EXPECT_EQ(0, result);
    });
    runTogether({connect, connect, binder([&notifier] { notifier->binderDied(nullptr); })});
    EXPECT_EQ(2 * kRounds, joined);
    client.getService();
    EXPECT_EQ(0, client.say(1, "Hello")) << "the last connection works";
}

TEST_F(Threads, OfTheRuntimeEmptyTheProxyBetweenOperationsUnderTheMutex) {
    const android::sp<TTS::DeathNotifier> notifier = TTS::gDeathNotifier;
    const auto use = application([this](int round) {
        client.connect();
        const TTS::MutexLock lock(TTS::Clientmutex);
        const int result = client.say(1, "Hello");
        EXPECT_TRUE(result == 0 || result == -5) << result;
        EXPECT_EQ(result == 0, client.enabled()) << "nobody empties the proxy in between";
        const TTSClientPrivate passing("passing " + std::to_string(round), nullptr);
    });
    runTogether({use, use, binder([&notifier] { notifier->binderDied(nullptr); })});
}

TEST_F(Threads, OfTheApplicationMaySearchTogether) {
    TTS::gttsbinder.clear();
    takeNotes();
    TTSClientPrivate other("other", countEvent);
    runTogether({[this] { client.getService(); }, [&other] { other.getService(); }});
    int registrations = 0;
    for (const std::string& note : takeNotes()) {
        registrations += note == "ask registerCallback(pid, callback)" ? 1 : 0;
    }
    EXPECT_EQ(1, registrations) << "the second finds what the first has joined";
}

TEST_F(Threads, OfTheApplicationMayReadTheServiceWhileOneSettingChanges) {
    // Each thread has a client of its own; what they share is only read.
    TTSClientPrivate second("second", countEvent);
    second.connect();
    client.mCapabilities = second.mCapabilities;
    const auto use = [](TTSClientPrivate& mine) {
        for (int round = 0; round < kRounds; ++round) {
            auto speed = static_cast<uint32_t>(100 + round);
            EXPECT_EQ(0, mine.setSpeed(&speed));
            EXPECT_EQ(0, mine.say(1, "Hello"));
            EXPECT_TRUE(mine.enabled());
        }
    };
    runTogether({[&] { use(client); }, [&] { use(second); }});
    EXPECT_EQ(2 * kRounds, events);
}

}  // namespace
