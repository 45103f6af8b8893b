// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <utility>
#include <vector>

#include "ipc/BpCallback.h"
#include "service/ClientRegistry.h"
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
    constexpr uint32_t kMaxFormer =
        ClientRegistry::kFormersPerClient * ClientRegistry::kMaxClients;
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

}  // namespace
}  // namespace voxtreld
