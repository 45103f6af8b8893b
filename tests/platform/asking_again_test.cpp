// SPDX-License-Identifier: Apache-2.0
// Clients that ask the service manager again at the very moment when they hear of a death. The
// kernel closes a dying process's descriptors one after the other, and who asked at once used to be
// given the dead service in four tries of five.
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::String16;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

bool isFound() {
    return android::defaultServiceManager()->getService(String16(probe::kName)) != nullptr;
}

class AsksAgain : public IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<IBinder>& /*who*/) override { mFound.set_value(isFound()); }
    bool found() { return mFound.get_future().get(); }

private:
    std::promise<bool> mFound;
};

// The two ways in which a client hears of it; each asks in the thread that has heard.
bool asksWhenTold(const sp<IBinder>& node) {
    const sp<AsksAgain> asks = new AsksAgain();
    if (node->linkToDeath(asks) != OK) {
        return true;
    }
    voxtrel_test::tell("waits");
    return asks->found();
}

bool asksWhenACallFails(const sp<IBinder>& node) {
    Call call;
    voxtrel_test::tell("waits");
    return call.to(node, probe::kBlock) != android::DEAD_OBJECT || isFound();
}

// At each "again" finds the service, waits for its death, and says what it finds right then.
const voxtrel_test::Role kAsksAgain("asks-again", [](const voxtrel_test::Arguments& arguments) {
    probe::startPool();
    while (voxtrel_test::hear() == "again") {
        const sp<IBinder> node = probe::find();
        const bool found = arguments[0] == "told" ? asksWhenTold(node) : asksWhenACallFails(node);
        voxtrel_test::tell(found ? "the dead one" : "none");
    }
    return 0;
});

constexpr int kAskers = 16;
const int kDeaths = voxtrel_test::repeats(30);

class ADeadService : public probe::ProbeTest {
protected:
    static std::vector<ChildProcess> startAskers() {
        std::vector<ChildProcess> askers;
        for (int i = 0; i < kAskers; ++i) {
            askers.push_back(ChildProcess::asRole("asks-again", {i % 2 == 0 ? "told" : "calls"}));
        }
        return askers;
    }
};

TEST_F(ADeadService, IsNeverGivenToWhoAsksAgainAtOnce) {
    std::vector<ChildProcess> askers = startAskers();
    int given = 0;
    for (int death = 0; death < kDeaths; ++death) {
        for (ChildProcess& asker : askers) {
            ASSERT_EQ("waits", asker.ask("again"));
        }
        ASSERT_TRUE(
            eventually([] { return probe::ask(probe::find(), probe::kBlocked) == kAskers / 2; }));
        mServer.killNow();
        for (ChildProcess& asker : askers) {
            const std::string answer = asker.readLine();
            ASSERT_FALSE(answer.empty());
            given += answer == "none" ? 0 : 1;
        }
        mServer = ChildProcess::asRole("server");
        ASSERT_EQ("ready", mServer.readLine());
    }
    EXPECT_EQ(0, given) << "of " << kAskers * kDeaths << " tries";
}

}  // namespace
