// SPDX-License-Identifier: Apache-2.0
// The variables that say which manners a process has, and whom it takes for its caller then.
#include <binder/IPCThreadState.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "tests/platform/Manners.h"

namespace {

using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;

// Says who calls.
class Porter : public android::BBinder {
protected:
    status_t onTransact(uint32_t /*code*/, const Parcel& /*data*/, Parcel* /*reply*/,
                        uint32_t /*flags*/) override {
        const IPCThreadState* state = IPCThreadState::self();
        voxtrel_test::tell("process " + std::to_string(state->getCallingPid()) + " of user " +
                           std::to_string(state->getCallingUid()));
        return OK;
    }
};

const voxtrel_test::Role kPorter("porter", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<IBinder> porter = new Porter();
    android::defaultServiceManager()->addService(android::String16("porter"), porter);
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    return 0;
});

// What a porter says of a call from here.
std::string callerOfACall(const std::string& manners, uint32_t flags) {
    const probe::Environment environment(manners, std::to_string(probe::kSeed));
    const voxtrel_test::PrivateRuntime runtime(VOXTREL_SERVICEMANAGER);
    ChildProcess porter = ChildProcess::asRole("porter");
    EXPECT_EQ("ready", porter.readLine());
    Call call;
    EXPECT_EQ(OK, call.to(probe::find("porter"), IBinder::FIRST_CALL_TRANSACTION, flags));
    return porter.readLine();
}

std::string named(pid_t pid) {
    return "process " + std::to_string(pid) + " of user " + std::to_string(getuid());
}

TEST(TheCallerOfAOneWayCall, IsKnownByItsUserAloneInTheMannersOfADriver) {
    EXPECT_EQ(named(0), callerOfACall("driver", IBinder::FLAG_ONEWAY));
}

TEST(TheCallerOfAOneWayCall, IsKnownByItsProcessInTheDefaultManners) {
    EXPECT_EQ(named(getpid()), callerOfACall("", IBinder::FLAG_ONEWAY));
}

TEST(TheCallerOfATwoWayCall, IsKnownByItsProcessInTheMannersOfADriver) {
    EXPECT_EQ(named(getpid()), callerOfACall("driver", 0));
}

// Says which seed the programs have that it would start.
const voxtrel_test::Role kSeedTeller("seed-teller", [](const voxtrel_test::Arguments&) {
    const char* seed = getenv("VOXTREL_BINDER_SEED");
    voxtrel_test::tell(seed != nullptr ? seed : "none");
    return 0;
});

std::string withoutPid(const std::string& line) {
    const size_t end = line.find("]: ");
    return line.compare(0, 7, "binder[") == 0 && end != std::string::npos ? line.substr(end + 3)
                                                                          : line;
}

std::string sayingTheSeed(const std::string& seed) {
    return "in the manners of a driver: VOXTREL_BINDER_SEED=" + seed +
           " makes the same one-way calls be overtaken again";
}

TEST(ASeed, ThatIsDrawnIsLoggedOnceAndGoesToTheProgramsThatAreStarted) {
    const probe::Environment environment("driver", "");
    ChildProcess process = ChildProcess::asRoleWithErrors("seed-teller");
    const std::string line = withoutPid(process.readLine());
    const std::string seed = process.readLine();
    EXPECT_EQ(seed.size(), seed.find_first_not_of("0123456789") == std::string::npos
                               ? seed.size()
                               : std::string::npos);
    EXPECT_EQ(sayingTheSeed(seed), line);
    EXPECT_EQ("", process.readLine());
    ChildProcess another = ChildProcess::asRoleWithErrors("seed-teller");
    EXPECT_NE(line, withoutPid(another.readLine()));
}

TEST(ASeed, ThatIsGivenIsTakenWithoutALine) {
    const probe::Environment environment("driver", "4294967295");
    ChildProcess process = ChildProcess::asRoleWithErrors("seed-teller");
    EXPECT_EQ("4294967295", process.readLine());
    EXPECT_EQ("", process.readLine());
}

TEST(ASeed, ThatIsNoNumberIsReplacedAndTheLineSaysSo) {
    for (const char* nonsense : {"4294967296", "-1", "1x", "99999999999999999999999"}) {
        const probe::Environment environment("driver", nonsense);
        ChildProcess process = ChildProcess::asRoleWithErrors("seed-teller");
        EXPECT_EQ(std::string("VOXTREL_BINDER_SEED is \"") + nonsense +
                      "\", which is no number from 0 to 4294967295: a seed is drawn",
                  withoutPid(process.readLine()));
        const std::string line = withoutPid(process.readLine());
        EXPECT_EQ(sayingTheSeed(process.readLine()), line);
    }
}

TEST(UnknownManners, AreNamedInOneLineAndTheDefaultOnesHold) {
    const probe::Environment environment("Driver", "");
    ChildProcess process = ChildProcess::asRoleWithErrors("seed-teller");
    EXPECT_EQ(
        "VOXTREL_BINDER_MANNERS is \"Driver\", which is unknown: the default manners hold; the "
        "others are \"driver\"",
        withoutPid(process.readLine()));
    EXPECT_EQ("none", process.readLine());
    EXPECT_EQ("", process.readLine());
    EXPECT_EQ(named(getpid()), callerOfACall("Driver", IBinder::FLAG_ONEWAY));
}

TEST(TheDefaultManners, AreWithoutALineAndWithoutASeed) {
    const probe::Environment environment("", "");
    ChildProcess process = ChildProcess::asRoleWithErrors("seed-teller");
    EXPECT_EQ("none", process.readLine());
    EXPECT_EQ("", process.readLine());
}

}  // namespace
