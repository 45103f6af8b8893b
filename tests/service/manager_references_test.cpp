// SPDX-License-Identifier: Apache-2.0
// The service's registration with a service manager that refuses its name, forgets it, or leaves a
// dead reference behind.
#include <binder/IServiceManager.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "ipc/ITextToSpeechFestival.h"
#include "service/Registration.h"
#include "tests/service/Fakes.h"
#include "tests/support/RecordingRemote.h"

namespace voxtreld {
namespace {

using android::IBinder;
using android::sp;
using android::status_t;
using Lines = std::vector<std::string>;

/// Knows one name. What it answers to registrations is set by the test, OK at the end.
class OneName : public android::IServiceManager {
public:
    sp<IBinder> getService(const android::String16& name) const override {
        return checkService(name);
    }
    sp<IBinder> checkService(const android::String16& /*name*/) const override {
        return mMonitor.read([&] { return mService; });
    }
    status_t addService(const android::String16& /*name*/, const sp<IBinder>& service,
                        bool /*allowIsolated*/) override {
        status_t status = android::OK;
        mMonitor.change([&] {
            if (!mAnswers.empty()) {
                status = mAnswers.front();
                mAnswers.pop_front();
            }
            mService = status == android::OK ? service : mService;
        });
        return status;
    }
    android::Vector<android::String16> listServices() override { return {}; }

    void answer(std::deque<status_t> statuses) {
        mMonitor.change([&] { mAnswers = std::move(statuses); });
    }
    /// What is found under the name from now on.
    void replace(const sp<IBinder>& service) {
        mMonitor.change([&] { mService = service; });
    }

protected:
    IBinder* onAsBinder() override { return nullptr; }

private:
    Monitor mMonitor;
    std::deque<status_t> mAnswers;
    sp<IBinder> mService;
};

class ARegistration : public testing::Test {
protected:
    ARegistration() { android::setDefaultServiceManager(manager); }
    ~ARegistration() override {
        EXPECT_TRUE(registration.stop());
        android::setDefaultServiceManager(nullptr);
    }

    void begin() {
        sigset_t none;
        sigemptyset(&none);
        std::string error;
        ASSERT_TRUE(registration.begin(service, none, error)) << error;
    }
    /// The service manager dies. Another one, with no name, is there at once.
    void restartManager() {
        const sp<support::RecordingRemote> old = context;
        manager->replace(nullptr);
        state.change([&] { context = new support::RecordingRemote(); });
        old->die();
    }
    bool waitForLine(const std::string& part) const {
        return state.waitFor([&] { return linesWith(part) > 0; });
    }
    long linesWith(const std::string& part) const {
        return std::count_if(log.begin(), log.end(), [&](const std::string& line) {
            return line.find(part) != std::string::npos;
        });
    }
    long countLines(const std::string& part) const {
        return state.read([&] { return linesWith(part); });
    }
    bool waitForEnd() const {
        return state.waitFor([&] { return isToEnd; });
    }
    bool hasAskedToEnd() const {
        return state.read([&] { return isToEnd; });
    }

    Monitor state;
    Lines log;
    bool isToEnd = false;
    int attempts = 0;  ///< to get a reference to the service manager
    int absences = 0;  ///< so many of them find none
    sp<support::RecordingRemote> context = new support::RecordingRemote();
    const sp<OneName> manager = new OneName();
    const sp<IBinder> service = new android::BBinder();
    Registration registration{
        Registration::AfterDeath::RegisterAgain,
        [this](LogLevel, const std::string& line) { state.change([&] { log.push_back(line); }); },
        {[this] {
             sp<IBinder> found;
             state.change([&] { found = ++attempts > absences ? context : nullptr; });
             return found;
         },
         [this] { state.change([&] { isToEnd = true; }); }, std::chrono::milliseconds(500)}};
};

const std::string kAgain = "registered again, with the service manager that has been started";

TEST_F(ARegistration, WaitsAMomentForAManagerThatIsAboutToCome) {
    absences = 1;
    begin();
    EXPECT_EQ(2, state.read([&] { return attempts; }));
}

TEST_F(ARegistration, IsTriedUntilTheNextManagerTakesTheNameAndWarnsOnce) {
    begin();
    manager->answer({android::FAILED_TRANSACTION, android::NO_MEMORY, android::UNKNOWN_ERROR,
                     android::FAILED_TRANSACTION});
    restartManager();
    EXPECT_TRUE(waitForLine(kAgain));
    EXPECT_EQ(1, countLines("does not register the service"));
    EXPECT_EQ("", registration.loss());
    EXPECT_FALSE(hasAskedToEnd());
}

TEST_F(ARegistration, WarnsOfEachManagerThatDoesNotTakeTheName) {
    begin();
    for (long round = 1; round <= 2; ++round) {
        manager->answer({android::FAILED_TRANSACTION});
        restartManager();
        EXPECT_TRUE(state.waitFor([&] { return linesWith(kAgain) == round; }));
        EXPECT_EQ(round, countLines("does not register the service"));
    }
}

TEST_F(ARegistration, EndsWhenTheNextManagerDeniesTheName) {
    begin();
    manager->answer({android::PERMISSION_DENIED});
    restartManager();
    EXPECT_TRUE(waitForEnd());
    EXPECT_NE(std::string::npos, registration.loss().find("refused the service's name: status -1"))
        << registration.loss();
}

TEST_F(ARegistration, EndsAtTheStartWithAnyStatus) {
    manager->answer({android::NO_MEMORY});
    sigset_t none;
    sigemptyset(&none);
    std::string error;
    EXPECT_FALSE(registration.begin(service, none, error));
    EXPECT_NE(std::string::npos, error.find("refused the service's name: status -12")) << error;
}

TEST_F(ARegistration, EndsWhenTheRuntimeKeepsTheReferenceToADeadManager) {
    begin();
    context->die();
    EXPECT_TRUE(waitForEnd());
    EXPECT_EQ(
        "the service manager has died, and this process cannot reach the next one, since its "
        "runtime keeps the reference to the dead one: start the service again",
        registration.loss());
}

TEST_F(ARegistration, WaitsForAManagerThatIsAwayForLongerThanAReferenceMayBeDead) {
    begin();
    const sp<support::RecordingRemote> old = context;
    state.change([&] { context = nullptr; });
    old->die();
    constexpr int kMuchLonger = 10;  // attempts, a tenth of a second apart
    const int before = state.read([&] { return attempts; });
    ASSERT_TRUE(state.waitFor([&] { return attempts >= before + kMuchLonger; }));
    manager->replace(nullptr);
    state.change([&] { context = new support::RecordingRemote(); });
    EXPECT_TRUE(waitForLine(kAgain));
    EXPECT_FALSE(hasAskedToEnd());
}

TEST_F(ARegistration, IsRenewedWhenTheManagerHasForgottenTheName) {
    begin();
    manager->replace(nullptr);
    EXPECT_TRUE(waitForLine(
        "registered again: the service manager did not give the service under its name"));
    EXPECT_EQ(service, manager->checkService(TTS::ITextToSpeechFestival::descriptor));
    EXPECT_EQ(0, countLines("has died"));
}

TEST_F(ARegistration, EndsWhenAnotherServiceAnswersUnderTheName) {
    begin();
    const sp<IBinder> other = new support::RecordingRemote();
    manager->replace(other);
    EXPECT_TRUE(waitForEnd());
    EXPECT_EQ("another service answers under this one's name: end that one first",
              registration.loss());
    EXPECT_EQ(other, manager->checkService(TTS::ITextToSpeechFestival::descriptor));
}

class WithoutPing : public support::RecordingRemote {
public:
    status_t pingBinder() override { return android::UNKNOWN_TRANSACTION; }
};

TEST_F(ARegistration, IsRenewedAlsoWhereTheManagerThatForgotTheNameDoesNotKnowThePing) {
    context = new WithoutPing();
    begin();
    manager->replace(nullptr);
    EXPECT_TRUE(waitForLine("registered again: the service manager did not give"));
}

// Its name was taken over.
TEST_F(ARegistration, EndsAlsoWhenTheOtherServiceDoesNotKnowThePing) {
    begin();
    const sp<IBinder> other = new WithoutPing();
    manager->replace(other);
    EXPECT_TRUE(waitForEnd());
    EXPECT_EQ(other, manager->checkService(TTS::ITextToSpeechFestival::descriptor));
}

/// A service manager that is about to die: it does not answer, but nobody has been told.
class Dying : public support::RecordingRemote {
public:
    status_t pingBinder() override {
        mMonitor.change([&] { mAsked = true; });
        return android::DEAD_OBJECT;
    }
    bool waitUntilAsked() const {
        return mMonitor.waitFor([&] { return mAsked; });
    }

private:
    Monitor mMonitor;
    bool mAsked = false;
};

TEST_F(ARegistration, IsNotTakenForForgottenByAManagerThatIsAboutToDie) {
    const sp<Dying> dying = new Dying();
    context = dying;
    begin();
    manager->replace(nullptr);
    ASSERT_TRUE(dying->waitUntilAsked());
    restartManager();
    EXPECT_TRUE(waitForLine(kAgain));
    EXPECT_EQ(1, countLines("the service manager has died"));
    EXPECT_EQ(0, countLines("did not give"));
}

}  // namespace
}  // namespace voxtreld
