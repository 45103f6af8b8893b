// SPDX-License-Identifier: Apache-2.0
// The proxy above any transport: a reference that does what the test says.
#include <binder/BpBinder.h>
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "binder/transport/Reference.h"
#include "servicemanager/Registry.h"
#include "tests/platform/Probe.h"

namespace {

using android::BpBinder;
using android::DEAD_OBJECT;
using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::Parcel;
using android::Registry;
using android::sp;
using android::status_t;
using android::String16;
using android::wp;
using android::transport::LogLevel;
using probe::CountingDeathRecipient;

struct Script {
    status_t answer = OK;
    bool dead = false;
    int calls = 0;
    bool watched = false;
    bool destroyed = false;
};

class ScriptedReference : public android::transport::Reference {
public:
    explicit ScriptedReference(Script& script) : mScript(script) {}
    ~ScriptedReference() override { mScript.destroyed = true; }
    status_t call(uint32_t /*code*/, const Parcel& /*data*/, Parcel* reply,
                  uint32_t /*flags*/) override {
        ++mScript.calls;
        if (mScript.answer == OK && reply != nullptr) {
            reply->writeString16(String16("scripted"));
            reply->setDataPosition(0);
        }
        return mScript.answer;
    }
    bool hasEnded() const override { return mScript.dead; }
    status_t watch(const wp<BpBinder>& /*proxy*/) override {
        mScript.watched = true;
        return OK;
    }
    void unwatch() override { mScript.watched = false; }

private:
    Script& mScript;
};

sp<BpBinder> importNode(Script& script) {
    return new BpBinder(std::make_unique<ScriptedReference>(script));
}

TEST(AProxyOfANode, CallsADeadNodeNoMore) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    script.answer = DEAD_OBJECT;
    script.dead = true;
    EXPECT_EQ(DEAD_OBJECT, proxy->pingBinder());
    EXPECT_FALSE(proxy->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, proxy->pingBinder());
    EXPECT_EQ(1, script.calls);
}

TEST(AProxyOfANode, OutlivesAnyOtherFailure) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    script.answer = android::FAILED_TRANSACTION;
    EXPECT_EQ(android::FAILED_TRANSACTION, proxy->pingBinder());
    EXPECT_TRUE(proxy->isBinderAlive());
}

TEST(AProxyOfANode, AsksForItsDescriptorOnce) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    EXPECT_EQ(String16("scripted"), proxy->getInterfaceDescriptor());
    EXPECT_EQ(String16("scripted"), proxy->getInterfaceDescriptor());
    EXPECT_EQ(1, script.calls);
}

TEST(ALink, IsNamedByRecipientOrCookieAndByItsFlags) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    const sp<CountingDeathRecipient> stranger = new CountingDeathRecipient();
    int cookie = 0;
    EXPECT_EQ(OK, proxy->linkToDeath(recipient, &cookie, 3));
    EXPECT_EQ(android::NAME_NOT_FOUND, proxy->unlinkToDeath(recipient, &cookie, 0));
    EXPECT_EQ(android::NAME_NOT_FOUND, proxy->unlinkToDeath(stranger, &cookie, 3));
    EXPECT_EQ(android::NAME_NOT_FOUND, proxy->unlinkToDeath(nullptr, nullptr, 3));
    wp<IBinder::DeathRecipient> out;
    EXPECT_EQ(OK, proxy->unlinkToDeath(nullptr, &cookie, 3, &out));
    EXPECT_TRUE(out.promote() == recipient);
    EXPECT_FALSE(script.watched);
}

TEST(ALink, IsToldOnceAndRefusedAfterwards) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    EXPECT_EQ(OK, proxy->linkToDeath(recipient));
    proxy->reportDeath();
    proxy->reportDeath();
    EXPECT_EQ(1, recipient->deaths());
    EXPECT_EQ(DEAD_OBJECT, proxy->linkToDeath(recipient));
    EXPECT_EQ(DEAD_OBJECT, proxy->unlinkToDeath(recipient));
}

TEST(ALink, DoesNotKeepItsRecipient) {
    Script script;
    const sp<BpBinder> proxy = importNode(script);
    sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    const wp<CountingDeathRecipient> watch = recipient;
    EXPECT_EQ(OK, proxy->linkToDeath(recipient));
    recipient.clear();
    EXPECT_TRUE(watch.promote() == nullptr);
    proxy->reportDeath();
}

TEST(ALink, NeedsARecipient) {
    Script script;
    EXPECT_EQ(android::BAD_VALUE, importNode(script)->linkToDeath(nullptr));
}

// The names of services, for callers that the test makes up.
class TheRegistry : public testing::Test {
protected:
    void TearDown() override { (void)IPCThreadState::self()->clearCallingIdentity(); }

    void actAs(int64_t uid, int64_t pid) {
        IPCThreadState::self()->restoreCallingIdentity((uid << 32) | pid);
    }
    status_t add(const char* name, const sp<IBinder>& service) {
        return mRegistry->addService(String16(name), service);
    }

    static constexpr uid_t kKeeper = 1003;

    Script mScript;  // of what the registry holds
    std::vector<std::string> mLines;
    const sp<Registry> mRegistry = new Registry(
        [this](LogLevel level, const std::string& line) {
            mLines.push_back((level == LogLevel::Warning ? "warning: " : "") + line);
        },
        {{String16("kept"), kKeeper}});
    const sp<IBinder> mService = probe::makeNode();
};

TEST_F(TheRegistry, FindsWhatWasAdded) {
    actAs(1000, 7);
    EXPECT_EQ(OK, add("b", mService));
    EXPECT_EQ(OK, add("a", mService));
    EXPECT_TRUE(mRegistry->getService(String16("a")) == mService);
    EXPECT_TRUE(mRegistry->checkService(String16("b")) == mService);
    EXPECT_TRUE(mRegistry->getService(String16("c")) == nullptr);
    EXPECT_EQ(2U, mRegistry->listServices().size());
    EXPECT_EQ(String16("a"), mRegistry->listServices()[0]);
    EXPECT_EQ((std::vector<std::string>{"added b (process 7, user 1000)",
                                        "added a (process 7, user 1000)"}),
              mLines);
}

TEST_F(TheRegistry, RefusesAnEmptyOrLongNameAndANullService) {
    EXPECT_EQ(android::BAD_VALUE, add("", mService));
    EXPECT_EQ(android::BAD_VALUE, add(std::string(128, 'x').c_str(), mService));
    EXPECT_EQ(OK, add(std::string(127, 'x').c_str(), mService));
    EXPECT_EQ(android::BAD_VALUE, add("a", nullptr));
}

TEST_F(TheRegistry, KeepsAReservedNameForItsUser) {
    for (const int64_t uid : {int64_t{1000}, int64_t{geteuid()}}) {
        actAs(uid, 7);
        EXPECT_EQ(android::PERMISSION_DENIED, add("kept", mService)) << uid;
    }
    EXPECT_TRUE(mRegistry->getService(String16("kept")) == nullptr);
    actAs(kKeeper, 8);
    EXPECT_EQ(OK, add("kept", mService));
    actAs(1000, 7);
    EXPECT_EQ(OK, add("kept2", mService)) << "another name";
}

TEST_F(TheRegistry, SaysOnceToWhichUserItRefusedAReservedName) {
    actAs(1000, 7);
    (void)add("kept", mService);
    actAs(1000, 8);
    (void)add("kept", mService);
    EXPECT_EQ((std::vector<std::string>{
                  "warning: refused kept to process 7 of user 1000: it is reserved for user 1003"}),
              mLines);
    actAs(1001, 9);
    (void)add("kept", mService);
    EXPECT_EQ(2U, mLines.size());
}

TEST_F(TheRegistry, HasRoomForAReservedNameWhateverOthersHold) {
    constexpr int kAll = 1024;
    for (const int64_t uid : {1000, 1001}) {
        actAs(uid, 7);
        for (int i = 0; i < kAll / 2; ++i) {
            ASSERT_EQ(OK, add((std::to_string(uid) + std::to_string(i)).c_str(), mService));
        }
    }
    actAs(kKeeper, 8);
    EXPECT_EQ(android::NO_MEMORY, add("more", mService));
    EXPECT_EQ(OK, add("kept", mService));
}

TEST_F(TheRegistry, TellsTheOwnerWithTheService) {
    actAs(1000, 7);
    ASSERT_EQ(OK, add("a", mService));
    const auto ask = [this](const char* name) {
        Parcel data;
        data.writeInt32(0);
        data.writeString16(String16("android.os.IServiceManager"));
        data.writeString16(String16(name));
        auto reply = std::make_unique<Parcel>();
        EXPECT_EQ(
            OK, mRegistry->transact(android::GET_OWNED_SERVICE_TRANSACTION, data, reply.get(), 0));
        reply->setDataPosition(0);
        return reply;
    };
    const auto found = ask("a");
    EXPECT_TRUE(found->readStrongBinder() == mService);
    EXPECT_EQ(1000, found->readInt32());
    EXPECT_TRUE(ask("b")->readStrongBinder() == nullptr);
}

TEST_F(TheRegistry, GivesAnotherUserHalfOfTheNames) {
    constexpr int kHalf = 512;
    const auto addMany = [this](const std::string& prefix, int count) {
        int added = 0;
        while (added < count && add((prefix + std::to_string(added)).c_str(), mService) == OK) {
            ++added;
        }
        return added;
    };
    const int64_t own = geteuid();
    const int64_t other = own + 1;
    actAs(own, 6);
    EXPECT_EQ(OK, add("own", importNode(mScript)));
    actAs(other, 7);
    EXPECT_EQ(kHalf, addMany("other", kHalf + 1));
    actAs(other, 8);
    EXPECT_EQ(android::NO_MEMORY, add("more", mService));
    EXPECT_EQ(OK, add("other7", mService)) << "it has this one already";
    mScript.dead = true;
    EXPECT_EQ(android::NO_MEMORY, add("own", mService)) << "which is free";
    actAs(own + 2, 9);
    EXPECT_EQ(10, addMany("third", 10));
    actAs(own, 6);
    EXPECT_EQ(kHalf - 11, addMany("mine", kHalf)) << "all that are left";
    EXPECT_EQ(android::NO_MEMORY, add("more", mService));
}

TEST_F(TheRegistry, GivesALivingServicesNameOnlyToTheSameUser) {
    const sp<IBinder> first = importNode(mScript);
    actAs(1000, 7);
    EXPECT_EQ(OK, add("a", first));
    actAs(1001, 8);
    EXPECT_EQ(android::PERMISSION_DENIED, add("a", mService));
    EXPECT_TRUE(mRegistry->getService(String16("a")) == first);
    actAs(1000, 9);
    EXPECT_EQ(OK, add("a", mService));
    EXPECT_TRUE(mRegistry->getService(String16("a")) == mService);
    EXPECT_EQ("replaced a (process 9, user 1000)", mLines.back());
    EXPECT_FALSE(mScript.watched) << "the old link is taken back";
}

TEST_F(TheRegistry, GivesADeadServicesNameToAnybody) {
    actAs(1000, 7);
    EXPECT_EQ(OK, add("a", importNode(mScript)));
    mScript.dead = true;
    actAs(1001, 8);
    EXPECT_EQ(OK, add("a", mService));
}

TEST_F(TheRegistry, ForgetsAServiceThatDies) {
    const sp<BpBinder> service = importNode(mScript);
    actAs(1000, 7);
    EXPECT_EQ(OK, add("a", service));
    service->reportDeath();
    EXPECT_TRUE(mRegistry->getService(String16("a")) == nullptr);
    EXPECT_EQ("removed a: process 7 has died", mLines.back());
}

TEST_F(TheRegistry, DoesNotGiveOutAServiceWhoseDeathItHasNotBeenToldOfYet) {
    const sp<BpBinder> service = importNode(mScript);
    actAs(1000, 7);
    EXPECT_EQ(OK, add("a", service));
    EXPECT_TRUE(mRegistry->getService(String16("a")) == service);
    mScript.dead = true;
    EXPECT_TRUE(mRegistry->getService(String16("a")) == nullptr);
    const std::string removed = "removed a: process 7 has died";
    EXPECT_EQ(removed, mLines.back());
    EXPECT_EQ(0U, mRegistry->listServices().size());
    service->reportDeath();
    EXPECT_TRUE(mRegistry->checkService(String16("a")) == nullptr);
    EXPECT_EQ(1, std::count(mLines.begin(), mLines.end(), removed));
}

TEST_F(TheRegistry, RefusesAServiceThatIsDeadAlready) {
    mScript.dead = true;
    EXPECT_EQ(DEAD_OBJECT, add("a", importNode(mScript)));
    EXPECT_EQ(0U, mRegistry->listServices().size());
}

// Another thread may have been changing the reference when the process was forked.
TEST(AProxy, LeavesItsReferenceAsItIsInAForkedChild) {
    (void)android::ProcessState::self()->getContextObject(nullptr);  // from here on it knows a fork
    Script script;
    sp<IBinder> held = new BpBinder(std::make_unique<ScriptedReference>(script));
    const pid_t child = fork();
    if (child == 0) {
        held.clear();
        _exit(script.destroyed ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_FALSE(script.destroyed) << "this process still has it";
}

}  // namespace
