// SPDX-License-Identifier: Apache-2.0
// Applications that connect again as soon as they hear that the service has died. They once stalled
// for a minute in connect, some for good, because they were given the dead service again and were
// never told that it was dead.
#include <binder/ProcessState.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <iostream>
#include <string>
#include <vector>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "client/internal/MutexLock.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRuntime.h"
#include "tests/support/Repeats.h"
#include "tests/support/Roles.h"

namespace {

using android::sp;
using voxtrel_test::ChildProcess;
using Clock = std::chrono::steady_clock;

class Wake : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& /*who*/) override { mDied.set_value(); }
    void wait() { mDied.get_future().wait(); }

private:
    std::promise<void> mDied;
};

sp<android::IBinder> connectedService() {
    const TTS::MutexLock lock(TTS::Clientmutex);
    return android::IInterface::asBinder(TTS::gttsbinder);
}

// Connects, says so, and connects again at once when the service dies; until it is killed. The
// library's notifier prints a line of its own for each death.
const voxtrel_test::Role kConnectAgain("connect-again", [](const voxtrel_test::Arguments&) {
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("connects again", nullptr);
    bool joined = true;
    while (joined) {
        const int result = client.connect();
        const sp<android::IBinder> service = connectedService();
        const sp<Wake> wake = new Wake;
        // Behind the library's own link, and so told after it. Linked before the test hears of the
        // connection, and kills.
        joined = result == 0 && service != nullptr && service->linkToDeath(wake) == android::OK;
        voxtrel_test::tell(joined ? "connected" : "failed");
        if (joined) {
            wake->wait();
        }
    }
    return 0;
});

constexpr int kClients = 6;
const int kKills = voxtrel_test::repeats(25);
// A search looks every 0.5 s; a client that is given a dead service stays in connect for 60 s. A
// busy machine may delay some, but not most.
constexpr std::chrono::seconds kMaxForOneConnect(10);
constexpr std::chrono::seconds kMaxForHalfOfThem(1);

class SixClients : public testing::Test {
protected:
    void startService() {
        mService = ChildProcess::asRole("service");
        ASSERT_EQ("ready", mService.readLine());
        mReady = Clock::now();
    }

    // Reads what a client says up to its next result.
    void expectConnected(ChildProcess& client) {
        std::string line = client.readLine();
        for (; line.find("binderDied") != std::string::npos; line = client.readLine()) {
            ++mDeathsTold;
        }
        ASSERT_EQ("connected", line);
        const auto took = Clock::now() - mReady;
        EXPECT_LT(took, kMaxForOneConnect);
        mTook.push_back(took);
    }

    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    ChildProcess mService = ChildProcess({"true"});
    Clock::time_point mReady;
    std::vector<Clock::duration> mTook;
    int mDeathsTold = 0;
};

TEST_F(SixClients, ThatConnectAgainAtOnceAreToldOfEachDeathAndNeverStall) {
    startService();
    std::array<ChildProcess, kClients> clients = {
        ChildProcess::asRole("connect-again"), ChildProcess::asRole("connect-again"),
        ChildProcess::asRole("connect-again"), ChildProcess::asRole("connect-again"),
        ChildProcess::asRole("connect-again"), ChildProcess::asRole("connect-again")};
    for (ChildProcess& client : clients) {
        expectConnected(client);
    }
    mTook.clear();
    for (int kill = 0; kill < kKills && !HasFailure(); ++kill) {
        mService.killNow();
        startService();
        for (ChildProcess& client : clients) {
            expectConnected(client);
        }
    }
    EXPECT_EQ(kClients * kKills, mDeathsTold);
    std::sort(mTook.begin(), mTook.end());
    EXPECT_LT(mTook.at(mTook.size() / 2), kMaxForHalfOfThem);
    const auto slowest = std::chrono::duration_cast<std::chrono::milliseconds>(mTook.back());
    std::cout << "slowest connect, from the service's return: " << slowest.count() << " ms\n";
}

}  // namespace
