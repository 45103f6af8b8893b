// SPDX-License-Identifier: Apache-2.0
// In the manners of a driver a look-up waits for a service, and a process for its service manager.
#include <chrono>
#include <string>

#include "tests/platform/Manners.h"

namespace {

using android::IServiceManager;
using android::OK;
using android::sp;
using android::String16;
using voxtrel_test::ChildProcess;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestLookUp(5);

// Looks "late" up, and says how that went.
const voxtrel_test::Role kSeeker("seeker", [](const voxtrel_test::Arguments& arguments) {
    const sp<IServiceManager> manager = android::defaultServiceManager();
    const String16 name("late");
    voxtrel_test::tell("looking");
    const auto start = Clock::now();
    const bool found = (arguments[0] == "get" ? manager->getService(name)
                                              : manager->checkService(name)) != nullptr;
    const bool waited = Clock::now() - start >= kLongestLookUp;
    voxtrel_test::tell(std::string(found ? "found" : "absent") + (waited ? " after 5 s" : ""));
    return 0;
});

using ALookUpInADriversManners = probe::DriverTest;

TEST_F(ALookUpInADriversManners, TakesFiveSecondsForAnAbsentName) {
    ChildProcess seeker = ChildProcess::asRole("seeker", {"get"});
    EXPECT_EQ("looking", seeker.readLine());
    EXPECT_EQ("absent after 5 s", seeker.readLine());
}

TEST_F(ALookUpInADriversManners, FindsAServiceThatAppearsMeanwhile) {
    ChildProcess seeker = ChildProcess::asRole("seeker", {"get"});
    EXPECT_EQ("looking", seeker.readLine());
    EXPECT_EQ(OK, android::defaultServiceManager()->addService(String16("late"), mNode));
    EXPECT_EQ("found", seeker.readLine());
}

TEST_F(ALookUpInADriversManners, AnswersAtOnceWhereItOnlyChecks) {
    ChildProcess seeker = ChildProcess::asRole("seeker", {"check"});
    EXPECT_EQ("looking", seeker.readLine());
    EXPECT_EQ("absent", seeker.readLine());
}

TEST(ALookUpInTheDefaultManners, AnswersAtOnceForAnAbsentName) {
    const probe::Environment environment("", "");
    const voxtrel_test::PrivateRuntime runtime(VOXTREL_SERVICEMANAGER);
    ChildProcess seeker = ChildProcess::asRole("seeker", {"get"});
    EXPECT_EQ("looking", seeker.readLine());
    EXPECT_EQ("absent", seeker.readLine());
}

const voxtrel_test::Role kManagerSeeker("manager-seeker", [](const voxtrel_test::Arguments&) {
    const sp<IServiceManager> manager = android::defaultServiceManager();
    voxtrel_test::tell(std::to_string(manager->listServices().size()) + " services");
    return 0;
});

class AProcessWithoutAServiceManager : public testing::Test {
protected:
    AProcessWithoutAServiceManager() { mRuntime.killManager(); }
    voxtrel_test::PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
};

TEST_F(AProcessWithoutAServiceManager, WaitsUntilThereIsOneInTheMannersOfADriver) {
    const probe::Environment environment("driver", std::to_string(probe::kSeed));
    ChildProcess seeker = ChildProcess::asRoleWithErrors("manager-seeker");
    EXPECT_EQ("binder[" + std::to_string(seeker.pid()) + "]: there is no service manager at " +
                  mRuntime.place() + ": waiting for one",
              seeker.readLine());
    mRuntime.startManager();
    EXPECT_EQ("0 services", seeker.readLine());
    EXPECT_EQ(0, seeker.wait());
}

TEST_F(AProcessWithoutAServiceManager, GoesOnWithoutOneInTheDefaultManners) {
    const probe::Environment environment("", "");
    ChildProcess seeker = ChildProcess::asRoleWithErrors("manager-seeker");
    EXPECT_EQ("0 services", seeker.readLine());
    EXPECT_EQ(0, seeker.wait());
}

}  // namespace
