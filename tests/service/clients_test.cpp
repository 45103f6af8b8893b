// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <random>

#include "ipc/BpCallback.h"
#include "tests/service/ServiceFixture.h"
#include "tests/support/RecordingRemote.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// A callback whose death notice is on its way already when the link is taken back: the runtime has
/// hold of the recipient then.
class LateNotice : public support::RecordingRemote {
public:
    android::status_t linkToDeath(const android::sp<DeathRecipient>& recipient, void* cookie,
                                  uint32_t flags) override {
        mRecipient = recipient;
        return RecordingRemote::linkToDeath(recipient, cookie, flags);
    }
    void deliver() { mRecipient->binderDied(android::wp<android::IBinder>(this)); }

private:
    android::sp<DeathRecipient> mRecipient;
};

class AClient : public ServiceFixture {
protected:
    bool isPermitted(uint32_t pid) {
        from(pid);
        TTS::Capabilities caps;
        EXPECT_EQ(0, service->getCapabilities(caps));
        return caps.permitted;
    }
    /// Registers a callback of another process, which the test can let die.
    android::sp<support::RecordingRemote> joinRemotely(uint32_t pid) {
        from(pid);
        const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
        EXPECT_EQ(0, service->registerCallback(pid, new TTS::BpCallback(remote)));
        return remote;
    }
};

TEST_F(AClient, ThatGivesAnotherProcessIdIsRefusedEverywhereWithOneLogLineEach) {
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    from(kBob);
    uint32_t number = 100;
    bool flag = true;
    const std::vector<int> answers = {
        service->say(kAnn, 1, "x", kUnset, 65535.0F, kUnset, kUnset, kUnset, 65535.0F, LANG_NA),
        service->silence(kAnn, 1, 1, kUnset),
        service->stopAndFlush(kAnn, 0),
        service->setEnable(kAnn, false),
        service->setEnable2(kAnn, GCONF_SPEED_ENABLE, false),
        service->enabled2(kAnn, GCONF_SPEED_ENABLE, &flag),
        service->setVerbosity(kAnn, 1),
        service->setGlobalRate(kAnn, 100),
        service->setGlobalConfig(kAnn, GCONF_SPEED, &number),
        service->globalConfig(kAnn, GCONF_SPEED, &number),
        service->factoryReset(kAnn),
        service->registerCallback(kAnn, new RecordingCallback(kBob)),
        service->deregisterCallback(kAnn),
        service->lock(kAnn),
        service->unlock(kAnn)};
    EXPECT_EQ(std::vector<int>(answers.size(), STATUS_PERMISSION_DENIED), answers);
    ASSERT_EQ(answers.size(), log.size());
    EXPECT_EQ("say: process 202 gave the process id 101, refused", log.front());
    EXPECT_TRUE(service->enabled());
    EXPECT_FALSE(service->locked());
    EXPECT_EQ(300, service->globalRate());
    EXPECT_EQ(0U, queue->waiting());
    EXPECT_EQ((Told{kAnn, EVENT_STATE, STATE_READY, 1}), toldTo(ann).back());
}

TEST_F(AClient, ThatTheRuntimeDoesNotNameIsKnownByItsUser) {
    join(kAnn);
    service->announceVoices(engine.voices());
    caller = {0, kUser};
    EXPECT_EQ(0, service->silence(kAnn, 1, 1, kUnset));
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(kBob, 1, 1, kUnset)) << "not registered";
    caller = {0, kUser + 1};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(kAnn, 1, 1, kUnset));
}

TEST_F(AClient, ThatTheRuntimeDoesNotNameIsToldOfItsRefusals) {
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    constexpr uint32_t kTooLong = 60'001;
    caller = {0, kUser};
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->silence(kAnn, 7, kTooLong, kUnset));
    EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 7, statusWord(STATUS_BAD_PARAMETER)}), toldTo(ann).back());
    EXPECT_EQ("silence: process 101 is refused with -3", details.back());
}

TEST_F(AClient, WhoseLeaveOvertookWhatItSaidIsHeard) {
    const auto ann = join(kAnn);
    startSpeech();
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    caller = {0, kUser + 1};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(kAnn, 1, 1, kUnset)) << "another user";
    caller = {0, kUser};
    ASSERT_EQ(0, service->say(kAnn, 1, "goodbye", kUnset, 65535.0F, kUnset, kUnset, kUnset,
                              65535.0F, LANG_NA));
    toldAtTheEndTo(ann);
    EXPECT_EQ("goodbye", engine.spoken().front().first);
}

TEST_F(AClient, WhoseLeaveOvertookItsLockDoesNotKeepTheLock) {
    join(kAnn);
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    caller = {0, kUser};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->lock(kAnn));
    EXPECT_FALSE(service->locked());
}

TEST_F(AClient, ThatDiedWithoutLeavingIsRefusedQuietlyWhereTheRuntimeDoesNotNameIt) {
    const auto remote = joinRemotely(kAnn);
    service->announceVoices(engine.voices());
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    joinRemotely(kAnn)->die();
    caller = {0, kUser};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(kAnn, 1, 1, kUnset));
    EXPECT_TRUE(log.empty()) << "its requests on the way are no offence";
}

TEST_F(AClient, IsNotToldOfTheRefusalsOfAnotherUserThatNamesIt) {
    const auto ann = join(kAnn);
    const size_t before = toldTo(ann).size();
    caller = {0, kUser + 1};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(kAnn, 7, 1, kUnset));
    EXPECT_EQ(before, toldTo(ann).size());
    EXPECT_EQ(
        "silence: a process of user 1001 gave the process id 101, which is none of its, "
        "refused",
        log.back());
}

TEST_F(AClient, CannotBeProcessZeroWhereTheRuntimeNamesNobody) {
    service->announceVoices(engine.voices());
    caller = {0, kUser};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->silence(0, 1, 1, kUnset));
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->stopAndFlush(0, 0));
}

TEST_F(AClient, OfAnotherUserIsNeitherPermittedNorServedWithoutAPolicy) {
    caller = {kAnn, kUser + 1};
    TTS::Capabilities caps;
    service->getCapabilities(caps);
    EXPECT_FALSE(caps.permitted);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->registerCallback(kAnn, new RecordingCallback(1)));
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->setVerbosity(kAnn, 1));
    EXPECT_EQ("setVerbosity: user 1001 lacks the permission settings, refused", log.back());
    caller.uid = kUser;
    service->getCapabilities(caps);
    EXPECT_TRUE(caps.permitted);
}

TEST_F(AClient, WithoutACallbackCannotRegister) {
    from(kAnn);
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->registerCallback(kAnn, nullptr));
}

TEST_F(AClient, WhoseCallbackIsDeadAlreadyCannotRegister) {
    from(kAnn);
    const android::sp<support::RecordingRemote> remote = new support::RecordingRemote();
    remote->answerLinksWith(android::DEAD_OBJECT);
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->registerCallback(kAnn, new TTS::BpCallback(remote)));
}

TEST_F(AClient, CannotRegisterTheServiceItselfAndKeepTheLockAfterItsDeath) {
    from(kAnn);
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->registerCallback(kAnn, new TTS::BpCallback(service)));
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->lock(kAnn));
    EXPECT_FALSE(service->locked());
}

TEST_F(AClient, ThatRegisteredAgainSurvivesALateNoticeOfItsOldCallbacksDeath) {
    from(kAnn);
    const android::sp<LateNotice> old = new LateNotice();
    ASSERT_EQ(0, service->registerCallback(kAnn, new TTS::BpCallback(old)));
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    ASSERT_EQ(0, service->lock(kAnn));
    ASSERT_EQ(0, say(kAnn, 1));
    old->deliver();
    EXPECT_TRUE(service->locked());
    EXPECT_EQ(1U, queue->waiting());
    EXPECT_EQ(0, say(kAnn, 2)) << "it is not taken for dead";
    EXPECT_EQ(0, service->deregisterCallback(kAnn));
}

TEST_F(AClient, ThatRegistersAgainIsToldThroughItsNewCallbackOnly) {
    const auto remote = joinRemotely(kAnn);
    const auto second = join(kAnn);
    EXPECT_EQ(0U, remote->links());
    service->announceVoices(engine.voices());
    EXPECT_EQ(1U, toldTo(second).size());
    EXPECT_TRUE(remote->sent().empty());
    remote->die();
    EXPECT_EQ(0, service->lock(kAnn)) << "the old callback's death is nobody's";
}

TEST_F(AClient, ThatRegistersAgainIsToldWhatItHadNoRoomFor) {
    const auto full = joinRemotely(kAnn);
    full->failWith(android::FAILED_TRANSACTION);
    startSpeech();
    ASSERT_EQ(0, say(kAnn, 1));
    ASSERT_EQ(0, say(kAnn, 2));
    ASSERT_TRUE(voxtrel_test::eventually([&] { return queue->idleSince().has_value(); }));
    EXPECT_EQ((std::vector<Told>{{kAnn, EVENT_STATE, STATE_READY, 1},
                                 {kAnn, EVENT_STARTED, 1, 0},
                                 {kAnn, EVENT_WORD, 1, 0},
                                 {kAnn, EVENT_FINISHED, 1, 0},
                                 {kAnn, EVENT_STARTED, 2, 0},
                                 {kAnn, EVENT_WORD, 2, 0},
                                 {kAnn, EVENT_FINISHED, 2, 0}}),
              toldAtTheEndTo(join(kAnn)));
}

TEST_F(AClient, ThatLeavesIsToldNothingMoreAndFreesItsLock) {
    const auto ann = join(kAnn);
    ASSERT_EQ(0, service->lock(kAnn));
    const size_t before = toldTo(ann).size();
    EXPECT_EQ(0, service->deregisterCallback(kAnn));
    EXPECT_FALSE(service->locked());
    service->announceVoices(engine.voices());
    EXPECT_EQ(before, toldTo(ann).size());
    EXPECT_EQ(0, service->deregisterCallback(kAnn)) << "leaving twice is leaving";
}

TEST_F(AClient, ThatDiesHasItsSpeechStoppedItsQueueDroppedAndItsLockFreed) {
    const auto bob = join(kBob);
    const auto remote = joinRemotely(kAnn);
    engine.hold();
    startSpeech();
    ASSERT_EQ(0, say(kAnn, 1, "one two three"));
    ASSERT_EQ(0, say(kAnn, 2, "never"));
    ASSERT_EQ(0, service->lock(kAnn));
    ASSERT_TRUE(engine.waitUntilHeld());
    remote->die();
    EXPECT_FALSE(service->locked());
    EXPECT_EQ(0U, queue->waiting());
    engine.release();
    ASSERT_EQ(0, say(kBob, 3, "mine"));
    const std::vector<Told> told = toldAtTheEndTo(bob);
    EXPECT_EQ((Told{kBob, EVENT_FINISHED, 3, 0}), told.back());
    EXPECT_NE(told.end(),
              std::find(told.begin(), told.end(), Told{kBob, EVENT_STATE, STATE_LOCK, 0}));
    EXPECT_EQ(ScriptedEngine::kWordSamples, sink.samples().size()) << "only what Bob said";
}

TEST_F(AClient, ThatDiedIsNotHeardThroughRequestsThatWereOnTheirWay) {
    const auto remote = joinRemotely(kAnn);
    service->announceVoices(engine.voices());
    remote->die();
    EXPECT_EQ(STATUS_PERMISSION_DENIED, say(kAnn, 1));
    join(kAnn);  // a new process can get the number of the dead one
    EXPECT_EQ(0, say(kAnn, 2));
}

TEST_F(AClient, BeyondTheLimitIsRefusedWithALogLineUntilAnotherLeaves) {
    constexpr uint32_t kFirst = 1000;
    std::vector<android::sp<RecordingCallback>> clients;
    for (uint32_t i = 0; i < ClientRegistry::kMaxClients; ++i) {
        clients.push_back(join(kFirst + i));
    }
    from(kAnn);
    EXPECT_EQ(STATUS_QUEUE_FULL, service->registerCallback(kAnn, new RecordingCallback(kAnn)));
    ASSERT_EQ(1U, log.size());
    EXPECT_EQ(0U, log[0].find("registerCallback: no room for process 101,"));
    EXPECT_FALSE(isPermitted(kAnn)) << "the answer to its next question is all that it looks at";
    EXPECT_TRUE(isPermitted(kBob)) << "who has not tried";
    EXPECT_TRUE(isPermitted(kFirst));
    clients[0] = join(kFirst);  // a new callback of one that is there needs no new room
    from(kFirst + 1);
    ASSERT_EQ(0, service->deregisterCallback(kFirst + 1));
    (void)join(kAnn);
    EXPECT_TRUE(isPermitted(kAnn));
    from(kAnn);
    ASSERT_EQ(0, service->setVerbosity(kAnn, 1));
    EXPECT_EQ(1U, toldTo(clients[0]).size());
    EXPECT_EQ(1U, toldTo(clients.back()).size());
    EXPECT_TRUE(clients[1]->told().empty());
}

TEST_F(AClient, IsOneOfAsManyAsTheServiceIsToldToTake) {
    constexpr size_t kFew = 3;
    makeService({}, {}, kFew);
    for (uint32_t i = 0; i < kFew; ++i) {
        (void)join(1000 + i);
    }
    from(kAnn);
    EXPECT_EQ(STATUS_QUEUE_FULL, service->registerCallback(kAnn, new RecordingCallback(kAnn)));
}

TEST_F(AClient, FindsRoomHoweverManyAnotherUserHas) {
    makeService({{PolicyRule::Subject::Any, 0, bitOf(Permission::Connect)}});
    const auto registerAs = [this](uint32_t pid, uint32_t user) {
        caller = {pid, user};
        return service->registerCallback(pid, new RecordingCallback(pid));
    };
    uint32_t pid = 1000;
    int status = STATUS_OK;
    for (; status == STATUS_OK && pid < 1000 + ClientRegistry::kMaxClients; ++pid) {
        status = registerAs(pid, kUser + 1);
    }
    EXPECT_EQ(STATUS_QUEUE_FULL, status);
    EXPECT_EQ(STATUS_OK, registerAs(1000, kUser + 1)) << "who is there may register again";
    EXPECT_EQ(STATUS_OK, registerAs(kAnn, kUser + 2));
    EXPECT_EQ(STATUS_OK, registerAs(kBob, kUser));
}

TEST_F(AClient, ThatWasRefusedForRoomAndSaysGoodbyeMayComeAgain) {
    for (uint32_t i = 0; i < ClientRegistry::kMaxClients; ++i) {
        (void)join(1000 + i);
    }
    from(kAnn);
    ASSERT_EQ(STATUS_QUEUE_FULL, service->registerCallback(kAnn, new RecordingCallback(kAnn)));
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    EXPECT_TRUE(isPermitted(kAnn));
}

/// Keeps each call until the test opens it.
class Gate {
public:
    void pass() {
        mMonitor.change([&] { ++mCalls; });
        (void)mMonitor.waitFor([&] { return mOpen; });
    }
    bool waitForCalls(size_t count) const {
        return mMonitor.waitFor([&] { return mCalls >= count; });
    }
    void open() {
        mMonitor.change([&] { mOpen = true; });
    }

private:
    Monitor mMonitor;
    size_t mCalls = 0;
    bool mOpen = false;
};

TEST_F(AClient, ThatHangsAndRegistersAgainAndAgainCannotUseUpOurThreads) {
    const auto gate = std::make_shared<Gate>();  // threads of the service may outlive the test
    const auto bob = join(kBob);
    constexpr uint32_t kProcesses = 64;
    constexpr size_t kMaxSenders = ClientRegistry::kSendersPerClient * ClientRegistry::kMaxClients;
    size_t accepted = 0;
    int status = STATUS_OK;
    for (; status == STATUS_OK && accepted <= kMaxSenders; ++accepted) {
        const android::sp<support::RecordingRemote> stuck = new support::RecordingRemote();
        stuck->answerBy([gate](auto&, auto&, auto&) {
            gate->pass();
            return android::OK;
        });
        const uint32_t pid = kAnn + 1000 + accepted % kProcesses;
        if (accepted % kProcesses == 0) {  // each hangs in a call to its last callback
            ASSERT_TRUE(gate->waitForCalls(accepted));
        }
        from(pid);
        status = service->registerCallback(pid, new TTS::BpCallback(stuck));
        if (status == STATUS_OK) {
            ASSERT_EQ(0, service->setVerbosity(pid, 1 - service->verbosity()));
        }
    }
    EXPECT_EQ(STATUS_QUEUE_FULL, status);
    EXPECT_GT(accepted, ClientRegistry::kMaxClients);
    from(kBob);
    ASSERT_EQ(0, service->setEnable(kBob, false));
    EXPECT_TRUE(bob->waitFor({kBob, EVENT_STATE, STATE_ENABLED, 0})) << "others are not delayed";
    gate->open();
    from(kAnn);
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    while (status != STATUS_OK && std::chrono::steady_clock::now() < deadline) {
        status = service->registerCallback(kAnn, new RecordingCallback(kAnn));
    }
    EXPECT_EQ(STATUS_OK, status) << "the threads have ended";
}

TEST_F(AClient, SendingARequestWithoutATextIsAnsweredAndTheServiceGoesOn) {
    from(kAnn);
    constexpr uint32_t kSay = 1;
    const android::Parcel empty;
    android::Parcel reply;
    EXPECT_EQ(android::BAD_VALUE, service->onTransact(kSay, empty, &reply, 0));
    EXPECT_EQ(1U, log.size());
    EXPECT_TRUE(service->enabled());
}

/// A parcel of a few random words, in which every value, small and huge, turns up often.
void fillAtRandom(android::Parcel& parcel, std::mt19937& random) {
    constexpr int32_t kTelling[] = {0, 1, 2, 3, 14, 15, -1, 255, 256, 65535, INT32_MAX, INT32_MIN};
    const size_t words = random() % 12;
    for (size_t i = 0; i < words; ++i) {
        switch (random() % 4) {
            case 0:
                parcel.writeInt32(static_cast<int32_t>(random()));
                break;
            case 1:
                parcel.writeCString("h\xC3\xA9llo \xFF");
                break;
            case 2:
                parcel.writeInt32(101);  // the caller, so that some requests are served
                break;
            default:
                parcel.writeInt32(kTelling[random() % std::size(kTelling)]);
        }
    }
    parcel.setDataPosition(0);
}

TEST_F(AClient, CannotCrashTheServiceWithAnyRequest) {
    join(kAnn);
    startSpeech();
    std::mt19937 random(20);  // the same requests in every run
    for (int i = 0; i < 20'000; ++i) {
        android::Parcel request;
        android::Parcel reply;
        fillAtRandom(request, random);
        from(kAnn);
        (void)service->onTransact(random() % 32, request, &reply, random() % 2);
    }
    const auto ann = join(kAnn);
    ASSERT_EQ(0, service->setEnable(kAnn, true));
    ASSERT_EQ(0, service->stopAndFlush(kAnn, 0));
    ASSERT_EQ(0, say(kAnn, 77, "still here"));
    EXPECT_EQ((Told{kAnn, EVENT_FINISHED, 77, 0}), toldAtTheEndTo(ann).back());
}

class TheLock : public ServiceFixture {};

TEST_F(TheLock, IsTakenOnceAndToldToAll) {
    const auto ann = join(kAnn);
    const auto bob = join(kBob);
    from(kAnn);
    EXPECT_EQ(0, service->lock(kAnn));
    EXPECT_EQ(1, service->lock(kAnn)) << "held already";
    EXPECT_TRUE(service->locked());
    const std::vector<Told> expected = {{kBob, EVENT_STATE, STATE_LOCK, kAnn}};
    EXPECT_EQ(expected, toldTo(bob));
    EXPECT_EQ(0, service->unlock(kAnn));
    EXPECT_EQ(1, service->unlock(kAnn)) << "free already";
    EXPECT_EQ((Told{kBob, EVENT_STATE, STATE_LOCK, 0}), toldTo(bob).back());
}

TEST_F(TheLock, RefusesEveryChangeByAnotherClient) {
    join(kAnn);
    const auto bob = join(kBob);
    service->announceVoices(engine.voices());
    from(kAnn);
    ASSERT_EQ(0, service->lock(kAnn));
    from(kBob);
    uint32_t number = 100;
    const std::vector<int> answers = {service->stopAndFlush(kBob, 0),
                                      service->setEnable(kBob, false),
                                      service->setEnable2(kBob, GCONF_SPEED_ENABLE, false),
                                      service->setVerbosity(kBob, 1),
                                      service->setGlobalRate(kBob, 100),
                                      service->setGlobalConfig(kBob, GCONF_SPEED, &number),
                                      service->factoryReset(kBob),
                                      service->lock(kBob),
                                      service->unlock(kBob)};
    EXPECT_EQ(std::vector<int>(answers.size(), STATUS_LOCKED), answers);
    EXPECT_EQ((Told{kBob, EVENT_STATE, STATE_LOCK, kAnn}), toldTo(bob).back());
    EXPECT_EQ(STATUS_LOCKED, say(kBob, 6));
    EXPECT_EQ((Told{kBob, EVENT_STOPPED, 6, statusWord(STATUS_LOCKED)}), toldTo(bob).back());
    EXPECT_EQ(0, say(kAnn, 7)) << "its holder speaks on";
}

TEST_F(TheLock, LetsOthersRead) {
    join(kAnn);
    ASSERT_EQ(0, service->lock(kAnn));
    from(kBob);
    bool flag = false;
    float pitch = 0;
    EXPECT_EQ(0, service->enabled2(kBob, GCONF_PITCH_ENABLE, &flag));
    EXPECT_TRUE(flag);
    EXPECT_EQ(0, service->globalConfig(kBob, GCONF_PITCH, &pitch));
    EXPECT_FLOAT_EQ(200.0F, pitch);
}

TEST_F(TheLock, IsNotGivenToAProcessWithoutACallback) {
    from(kAnn);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->lock(kAnn));
    EXPECT_FALSE(service->locked());
}

}  // namespace
}  // namespace voxtreld
