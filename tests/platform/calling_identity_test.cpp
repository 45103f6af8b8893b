// SPDX-License-Identifier: Apache-2.0
// Whom a thread takes for its caller while calls nest, and while it acts for itself.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;

enum Code : uint32_t {
    kWitness = 1,     ///< binder, int32 depth: asks the binder the same with depth - 1
    kWitnessCleared,  ///< the same, acting for itself meanwhile
    kForget,          ///< acts for itself and never goes back
    kWitnessDeath,    ///< binder: tells the test whom it takes for its caller when that one dies
};

struct Sight {
    int32_t self;    ///< the process that saw
    int32_t before;  ///< its caller before its own call
    int32_t during;  ///< and after that call, before it was its caller's again
    int32_t after;   ///< and in the end
    int32_t uid;     ///< its caller's user in the end
};

class DeathWitness : public IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<IBinder>& /*who*/) override {
        voxtrel_test::tell(std::to_string(IPCThreadState::self()->getCallingPid()));
    }
};

// Says whom it took for its caller, and what those whom it called said.
class Witness : public android::BBinder {
protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        switch (code) {
            case kWitness:
            case kWitnessCleared:
                return testify(code, data, reply);
            case kForget:
                (void)IPCThreadState::self()->clearCallingIdentity();
                return OK;
            case kWitnessDeath:
                mMortal = data.readStrongBinder();
                return mMortal->linkToDeath(mDeathWitness);
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

private:
    status_t testify(uint32_t code, const Parcel& data, Parcel* reply) {
        IPCThreadState* state = IPCThreadState::self();
        const sp<IBinder> other = data.readStrongBinder();
        const int32_t depth = data.readInt32();
        Sight sight = {getpid(), state->getCallingPid(), 0, 0, 0};
        const int64_t token = code == kWitnessCleared ? state->clearCallingIdentity() : 0;
        Call inner;
        inner.data.writeStrongBinder(this);
        inner.data.writeInt32(depth - 1);
        const status_t status = depth > 0 ? inner.to(other, code) : OK;
        sight.during = state->getCallingPid();
        if (code == kWitnessCleared) {
            state->restoreCallingIdentity(token);
        }
        sight.after = state->getCallingPid();
        sight.uid = static_cast<int32_t>(state->getCallingUid());
        reply->write(&sight, sizeof(sight));
        reply->write(inner.reply.data(), inner.reply.dataSize());
        return status;
    }

    sp<IBinder> mMortal;
    const sp<DeathWitness> mDeathWitness = new DeathWitness();
};

// All its calls, but those that come while it waits for a reply, and its death notices come to the
// same thread.
const voxtrel_test::Role kWitnessServer("witness", [](const voxtrel_test::Arguments&) {
    android::ProcessState::self()->setThreadPoolMaxThreadCount(1);
    probe::startPool();
    const sp<IBinder> witness = new Witness();
    android::defaultServiceManager()->addService(android::String16("witness"), witness);
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    return 0;
});

class TheCaller : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        ASSERT_EQ("ready", mProcess.readLine());
        mThere = probe::find("witness");
    }

    // From the first that was called to the last.
    std::vector<Sight> callToAndFro(uint32_t code, int32_t depth) {
        Call call;
        call.data.writeStrongBinder(mHere);
        call.data.writeInt32(depth);
        EXPECT_EQ(OK, call.to(mThere, code));
        std::vector<Sight> sights(call.reply.dataSize() / sizeof(Sight));
        call.reply.read(sights.data(), sights.size() * sizeof(Sight));
        return sights;
    }

    // Of the call that stands in this place of the chain.
    pid_t callerOf(size_t place) const { return place % 2 == 0 ? getpid() : mProcess.pid(); }
    pid_t calledBy(size_t place) const { return place % 2 == 0 ? mProcess.pid() : getpid(); }

    ChildProcess mProcess = ChildProcess::asRole("witness");
    sp<IBinder> mThere;
    const sp<IBinder> mHere = new Witness();
};

TEST_F(TheCaller, IsTheSameAfterACallThatCameBack) {
    constexpr size_t kDepth = 7;
    const std::vector<Sight> sights = callToAndFro(kWitness, kDepth);
    ASSERT_EQ(kDepth + 1, sights.size());
    for (size_t i = 0; i < sights.size(); ++i) {
        EXPECT_EQ(calledBy(i), sights[i].self) << i;
        EXPECT_EQ(callerOf(i), sights[i].before) << i;
        EXPECT_EQ(callerOf(i), sights[i].during) << i;
        EXPECT_EQ(callerOf(i), sights[i].after) << i;
        EXPECT_EQ(static_cast<int32_t>(getuid()), sights[i].uid) << i;
    }
}

TEST_F(TheCaller, IsTheProcessItselfFromClearingToRestoringWhateverIsCalledBetween) {
    constexpr size_t kDepth = 7;
    const std::vector<Sight> sights = callToAndFro(kWitnessCleared, kDepth);
    ASSERT_EQ(kDepth + 1, sights.size());
    for (size_t i = 0; i < sights.size(); ++i) {
        EXPECT_EQ(callerOf(i), sights[i].before) << i;
        EXPECT_EQ(sights[i].self, sights[i].during) << i;
        EXPECT_EQ(callerOf(i), sights[i].after) << i;
        EXPECT_EQ(static_cast<int32_t>(getuid()), sights[i].uid) << i;
    }
}

TEST_F(TheCaller, IsKnownAgainInTheCallAfterOneThatNeverRestoredIt) {
    for (int i = 0; i < 100; ++i) {
        Call forgetful;
        ASSERT_EQ(OK, forgetful.to(mThere, kForget, i % 2 == 0 ? 0 : IBinder::FLAG_ONEWAY));
        const std::vector<Sight> sights = callToAndFro(kWitness, 0);
        ASSERT_EQ(1U, sights.size());
        EXPECT_EQ(getpid(), sights[0].before);
    }
    EXPECT_EQ(getpid(), IPCThreadState::self()->getCallingPid());
}

TEST_F(TheCaller, IsTheProcessItselfWhenItIsToldOfADeath) {
    ChildProcess victim = ChildProcess::asRole("server", {"victim"});
    ASSERT_EQ("ready", victim.readLine());
    Call link;
    link.data.writeStrongBinder(probe::find("victim"));
    ASSERT_EQ(OK, link.to(mThere, kWitnessDeath));
    victim.killNow();
    EXPECT_EQ(std::to_string(mProcess.pid()), mProcess.readLine());
}

}  // namespace
