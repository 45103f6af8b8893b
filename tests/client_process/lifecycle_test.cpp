// SPDX-License-Identifier: Apache-2.0
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <ttscommon/ttscommon.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "client/internal/MutexLock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

std::atomic<int> warnings{0};

struct Event {
    unsigned int a;
    unsigned int b;
    unsigned int c;
};

struct Events {
    std::mutex mutex;
    std::vector<Event> all;
};

Events& events() {
    static Events seen;
    return seen;
}

void keepEvent(unsigned int a, unsigned int b, unsigned int c) {
    const std::lock_guard<std::mutex> guard(events().mutex);
    events().all.push_back({a, b, c});
}

size_t eventCount() {
    const std::lock_guard<std::mutex> guard(events().mutex);
    return events().all.size();
}

/// Holds off the notice of the service's death while the client is used. The notice waits for this
/// mutex, which no operation takes but those that search.
template <typename Use>
auto undisturbed(Use use) {
    const TTS::MutexLock lock(TTS::Clientmutex);
    return use();
}

/// Whether the process has noticed that it has no service.
bool isDisconnected() {
    return undisturbed([] { return TTS::gttsbinder == nullptr; });
}

class TwoProcesses : public testing::Test {
protected:
    TwoProcesses() {
        warnings = 0;
        {
            const std::lock_guard<std::mutex> guard(events().mutex);
            events().all.clear();
        }
        android::ProcessState::self()->startThreadPool();
    }
    // The service has been killed by now: its notice must not come while this process ends.
    ~TwoProcesses() override {
        EXPECT_TRUE(eventually(isDisconnected));
        undisturbed([this] { client.reset(); });
    }

    int say(unsigned int id, const std::string& text) {
        return undisturbed([&] { return client->say(id, text); });
    }

    static ChildProcess startService() {
        ChildProcess service = ChildProcess::asRole("service");
        EXPECT_EQ("ready", service.readLine());
        return service;
    }

    void expectSpoken(unsigned int id, const std::string& text) {
        const size_t before = eventCount();
        EXPECT_EQ(0, say(id, text));
        ASSERT_TRUE(eventually([before] { return eventCount() > before; }));
        const std::lock_guard<std::mutex> guard(events().mutex);
        const Event& event = events().all.back();
        EXPECT_EQ(1U, event.a);
        EXPECT_EQ(id, event.b);
        EXPECT_EQ(text.size(), event.c);
    }

    voxtrel_test::PrivateRuntime runtime{VOXTREL_SERVICEMANAGER};
    std::unique_ptr<TTS::TTSClientPrivate> client = undisturbed(
        [] { return std::make_unique<TTS::TTSClientPrivate>("two processes", keepEvent); });
};

TEST_F(TwoProcesses, SpeakAndHearEachOther) {
    const ChildProcess service = startService();
    ASSERT_EQ(0, client->connect());
    EXPECT_EQ(0, warnings);
    EXPECT_EQ("en_US,fr_FR,pt_PT", client->supportLanguages());
    expectSpoken(7, "Hello");
    expectSpoken(8, "");
    expectSpoken(9, std::string(300000, 'x'));
}

TEST_F(TwoProcesses, ReadAndSetWhatTheServiceKeeps) {
    const ChildProcess service = startService();
    ASSERT_EQ(0, client->connect());
    undisturbed([this] {
        EXPECT_TRUE(client->enabled());
        EXPECT_EQ(0, client->locked());
        EXPECT_EQ(0, client->lock());
        EXPECT_EQ(1, client->locked());
        EXPECT_EQ(0, client->setVerbosity(1));
        uint32_t speed = 200;
        EXPECT_EQ(-9, client->setSpeed(&speed)) << "the service's flag is off";
    });
}

TEST_F(TwoProcesses, MeetWithinOnePauseOnceTheServiceIsThere) {
    std::atomic<int> result{1};
    std::thread connecting([this, &result] { result = client->connect(); });
    EXPECT_TRUE(eventually([] { return warnings >= 1; })) << "the search has begun";
    EXPECT_EQ(1, result);
    const ChildProcess service = startService();
    const int before = warnings;
    connecting.join();
    EXPECT_EQ(0, result);
    EXPECT_LE(warnings - before, 1);
    expectSpoken(1, "late");
}

TEST_F(TwoProcesses, PartWhenTheServiceIsKilledAndMeetAgain) {
    ChildProcess service = startService();
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(0, client->connect());
        expectSpoken(1, "alive");
        service.killNow();
        ASSERT_TRUE(eventually(isDisconnected));
        EXPECT_EQ(-5, say(2, "dead"));
        EXPECT_EQ(-5, undisturbed([this] { return client->stopAndFlush(0); }));
        service = startService();
        EXPECT_EQ(-5, say(3, "not joined yet"));
    }
    ASSERT_EQ(0, client->connect());
    expectSpoken(4, "alive again");
}

TEST_F(TwoProcesses, LetGoOfTheCallbackWhenTheClientLeaves) {
    ChildProcess service = startService();
    ASSERT_EQ(0, client->connect());
    EXPECT_EQ("registered", service.ask("callback?"));
    const android::wp<TTS::Callback> callback = TTS::TTSClientPrivate::m_cb;
    EXPECT_EQ(5, undisturbed([this] { return client->disconnect(); }));
    EXPECT_EQ("nobody", service.ask("callback?"));
    EXPECT_TRUE(eventually([&callback] { return callback.promote() == nullptr; }));
    EXPECT_EQ(0, say(1, "unheard")) << "still connected, as far as speaking goes";
}

}  // namespace

void dbgPrint(int level, const char* /*fmt*/, ...) {
    warnings += level == 0 ? 1 : 0;
}
