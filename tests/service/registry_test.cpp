// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <functional>
#include <future>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

#include "ipc/BnCallback.h"
#include "ipc/BpCallback.h"
#include "service/ClientRegistry.h"
#include "tests/service/Fakes.h"
#include "tests/support/RecordingRemote.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

class AClientThatLeft : public testing::Test {
protected:
    using Time = ClientRegistry::Time;
    static constexpr uint32_t kUser = 1000;

    /// A process comes and leaves.
    void visit(uint32_t pid, uint32_t uid = kUser) {
        const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
        ASSERT_EQ(STATUS_OK, registry.add(pid, uid, new TTS::BpCallback(remote)));
        ASSERT_TRUE(registry.remove(pid, now));
    }

    ClientRegistry registry{[](uint32_t) {}, kUser};
    const Time now = std::chrono::steady_clock::now();
};

TEST_F(AClientThatLeft, IsKnownByItsUserForAWhile) {
    visit(1);
    EXPECT_TRUE(registry.isUser(1, kUser, now));
    EXPECT_FALSE(registry.isUser(1, kUser + 1, now));
    EXPECT_FALSE(registry.isUser(2, kUser, now));
    EXPECT_FALSE(registry.contains(1));
    EXPECT_TRUE(
        registry.isUser(1, kUser, now + ClientRegistry::kLeftRemembered - Time::duration(1)));
    EXPECT_FALSE(registry.isUser(1, kUser, now + ClientRegistry::kLeftRemembered));
}

TEST_F(AClientThatLeft, IsForgottenWhenManyOthersHaveLeftSince) {
    constexpr uint32_t kMaxFormer = ClientRegistry::kMinFormers;
    for (uint32_t pid = 1; pid <= kMaxFormer; ++pid) {
        visit(pid);
    }
    EXPECT_TRUE(registry.isUser(1, kUser, now));
    visit(kMaxFormer + 1);
    EXPECT_FALSE(registry.isUser(1, kUser, now));
    EXPECT_TRUE(registry.isUser(2, kUser, now));
}

TEST_F(AClientThatLeft, IsNotKnownByTheUserItHadBeforeItCameAgain) {
    visit(1, kUser);
    visit(1, kUser + 1);
    EXPECT_FALSE(registry.isUser(1, kUser, now));
    EXPECT_TRUE(registry.isUser(1, kUser + 1, now));
}

TEST(AClientWhoseDeathCannotBeWatched, IsRefusedUntilItCan) {
    ClientRegistry registry([](uint32_t) {}, 1000);
    const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
    remote->answerLinksWith(android::NO_MEMORY);
    EXPECT_EQ(STATUS_QUEUE_FULL, registry.add(1, 1000, new TTS::BpCallback(remote)));
    EXPECT_FALSE(registry.contains(1));
    EXPECT_TRUE(registry.isRefused(1));
    remote->answerLinksWith(android::OK);
    EXPECT_EQ(STATUS_OK, registry.add(1, 1000, new TTS::BpCallback(remote)));
    EXPECT_EQ(1U, remote->links());
}

TEST(AServiceWithoutMemoryForADeath, EndsForAnotherToTakeItsPlace) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto meetDeath = [] {
        ClientRegistry registry([](uint32_t) { throw std::bad_alloc(); }, 1000);
        const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
        (void)registry.add(1, 1000, new TTS::BpCallback(remote));
        remote->die();
    };
    EXPECT_EXIT(meetDeath(), testing::KilledBySignal(SIGABRT), "");
}

TEST(TheRegistry, OfFewClientsKnowsManyThatItHasRefused) {
    ClientRegistry registry([](uint32_t) {}, 0, 2);
    const auto add = [&registry](uint32_t pid) {
        const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
        return registry.add(pid, 0, new TTS::BpCallback(remote));
    };
    EXPECT_EQ(STATUS_OK, add(1));
    EXPECT_EQ(STATUS_OK, add(2));
    for (uint32_t pid = 3; pid < 103; ++pid) {
        EXPECT_EQ(STATUS_QUEUE_FULL, add(pid));
    }
    EXPECT_TRUE(registry.isRefused(3));
}

/// A client's proxy that looks at the registry as it goes, as the runtime may do on its behalf.
class LastLook : public TTS::BpCallback {
public:
    LastLook(const android::sp<android::IBinder>& remote, std::function<void()> look)
        : BpCallback(remote), mLook(std::move(look)) {}
    ~LastLook() override { mLook(); }

private:
    const std::function<void()> mLook;
};

TEST(TheRegistry, LetsGoOfAClientsProxyWithoutItsLock) {
    constexpr uint32_t kPid = 1;
    ClientRegistry registry([](uint32_t) {}, 0);
    std::vector<std::future<bool>> looks;
    const auto look = [&] {
        // On another thread, so that a lock that is held fails the test and does not hang it.
        looks.push_back(std::async(std::launch::async, [&] { return registry.contains(kPid); }));
        EXPECT_EQ(std::future_status::ready, looks.back().wait_for(std::chrono::seconds(20)));
    };
    const auto add = [&] {
        const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
        EXPECT_EQ(STATUS_OK, registry.add(kPid, 0, new LastLook(remote, look)));
        return remote;
    };
    add()->die();
    EXPECT_EQ(1U, looks.size());
    (void)add();
    EXPECT_TRUE(registry.remove(kPid));
    EXPECT_EQ(2U, looks.size());
    (void)add();
    const auto last = add();  // replaces it
    EXPECT_EQ(3U, looks.size());
    last->die();
    EXPECT_EQ(4U, looks.size());
}

/// Keeps the third number of each event that it is told.
class CountingCallback : public TTS::BnCallback {
public:
    bool notify(unsigned /*event*/, unsigned /*second*/, unsigned third) override {
        mMonitor.change([&] { mTold.push_back(third); });
        return true;
    }
    std::vector<unsigned> told() const {
        return mMonitor.read([&] { return mTold; });
    }
    bool waitForCount(size_t count) const {
        return mMonitor.waitFor([&] { return mTold.size() >= count; });
    }

private:
    Monitor mMonitor;
    std::vector<unsigned> mTold;
};

class TheClientsOfARegistry : public testing::Test {
protected:
    static constexpr uint32_t kClients = 40;
    static constexpr unsigned kChanges = 300;

    android::sp<CountingCallback> add(uint32_t pid) {
        const android::sp<CountingCallback> callback = new CountingCallback();
        EXPECT_EQ(STATUS_OK, registry.add(pid, 0, callback));
        return callback;
    }
    void addAll() {
        for (uint32_t pid = 0; pid < kClients; ++pid) {
            clients.push_back(add(pid));
        }
    }
    void change(unsigned number) { registry.tellAll(EVENT_STATE, 0, number); }

    ClientRegistry registry{[](uint32_t) {}, 0};
    std::vector<android::sp<CountingCallback>> clients;
};

std::vector<unsigned> numbersTo(unsigned last) {
    std::vector<unsigned> numbers(last);
    std::iota(numbers.begin(), numbers.end(), 1U);
    return numbers;
}

TEST_F(TheClientsOfARegistry, AreToldOfChangesAndOfTheirOwnInTheOrderInWhichTheyHappened) {
    addAll();
    for (unsigned number = 1; number < kChanges; number += 2) {
        change(number);
        for (uint32_t pid = 0; pid < kClients; ++pid) {
            registry.tell(pid, EVENT_WORD, 0, number + 1);
        }
    }
    registry.flush(std::chrono::seconds(20));
    for (const auto& client : clients) {
        EXPECT_EQ(numbersTo(kChanges), client->told());
    }
}

TEST_F(TheClientsOfARegistry, AreToldOfChangesThoughNothingElseHappens) {
    addAll();
    for (unsigned number = 1; number <= kChanges; ++number) {
        change(number);
    }
    for (const auto& client : clients) {
        ASSERT_TRUE(client->waitForCount(kChanges));
        EXPECT_EQ(numbersTo(kChanges), client->told());
    }
}

TEST_F(TheClientsOfARegistry, AreNotToldOfWhatWasBeforeThem) {
    addAll();
    change(1);
    const auto late = add(kClients);
    change(2);
    registry.flush(std::chrono::seconds(20));
    EXPECT_EQ(std::vector<unsigned>{2}, late->told());
    EXPECT_EQ(numbersTo(2), clients.back()->told());
}

TEST_F(TheClientsOfARegistry, AreToldOfAChangeOnceWhenTheyRegisterAgain) {
    addAll();
    change(1);
    const auto again = add(0);
    change(2);
    registry.flush(std::chrono::seconds(20));
    std::vector<unsigned> told = clients[0]->told();
    const std::vector<unsigned> rest = again->told();
    told.insert(told.end(), rest.begin(), rest.end());
    EXPECT_EQ(numbersTo(2), told);
}

TEST(ABroadcast, IsKeptUntilItIsForgottenAndThenGivenToNobody) {
    const android::sp<CountingCallback> callback = new CountingCallback();
    EventOutbox outbox(callback);
    Broadcasts broadcasts;
    for (unsigned number = 1; number <= 3; ++number) {
        broadcasts.add(EVENT_STATE, 0, number);
    }
    broadcasts.forget(1);
    uint64_t next = 1;
    broadcasts.post(outbox, next);
    EXPECT_EQ(3U, next);
    broadcasts.forget(broadcasts.end());
    EXPECT_TRUE(broadcasts.isEmpty());
    EXPECT_EQ(3U, broadcasts.end());
    broadcasts.post(outbox, next);
    ASSERT_TRUE(outbox.flush(std::chrono::seconds(20)));
    EXPECT_EQ((std::vector<unsigned>{2, 3}), callback->told());
}

}  // namespace
}  // namespace voxtreld
