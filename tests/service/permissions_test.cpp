// SPDX-License-Identifier: Apache-2.0
// What each request takes, and how a client learns that its user may not.
#include "ipc/TransactionCodes.h"
#include "tests/service/ServiceFixture.h"

namespace voxtreld {

using namespace TTS;

namespace {

constexpr uint32_t kGuest = 1001;
constexpr uint32_t kLongestPause = 60'000;

struct Request {
    const char* name;
    Permission needed;
    int (*send)(VoxtrelService& service);
};

constexpr uint32_t kPid = 101;

int sendSay(VoxtrelService& service) {
    return service.say(kPid, 7, "word", kUnset, 65535.0F, kUnset, kUnset, kUnset, 65535.0F,
                       LANG_NA);
}

int sendSetGlobalConfig(VoxtrelService& service) {
    uint32_t number = 100;
    return service.setGlobalConfig(kPid, GCONF_SPEED, &number);
}

int sendGlobalConfig(VoxtrelService& service) {
    uint32_t number = 0;
    return service.globalConfig(kPid, GCONF_SPEED, &number);
}

int sendEnabled2(VoxtrelService& service) {
    bool flag = false;
    return service.enabled2(kPid, GCONF_SPEED_ENABLE, &flag);
}

const Request kRequests[] = {
    {"say", Permission::Speak, sendSay},
    {"silence", Permission::Speak, [](auto& s) { return s.silence(kPid, 7, 1, kUnset); }},
    {"stopAndFlush", Permission::StopOthers, [](auto& s) { return s.stopAndFlush(kPid, 0); }},
    {"stopAndFlush", Permission::Connect, [](auto& s) { return s.stopAndFlush(kPid, 1); }},
    {"setEnable", Permission::Settings, [](auto& s) { return s.setEnable(kPid, true); }},
    {"setEnable", Permission::Settings,
     [](auto& s) { return s.setEnable2(kPid, static_cast<VOXTRELAPI_GCONF>(1), false); }},
    {"setEnable2", Permission::Settings,
     [](auto& s) { return s.setEnable2(kPid, GCONF_SPEED_ENABLE, true); }},
    {"setVerbosity", Permission::Settings, [](auto& s) { return s.setVerbosity(kPid, 0); }},
    {"setGlobalRate", Permission::Settings, [](auto& s) { return s.setGlobalRate(kPid, 100); }},
    {"setGlobalConfig", Permission::Settings, sendSetGlobalConfig},
    {"factoryReset", Permission::Settings, [](auto& s) { return s.factoryReset(kPid); }},
    {"enabled2", Permission::Connect, sendEnabled2},
    {"globalConfig", Permission::Connect, sendGlobalConfig},
    {"lock", Permission::Lock, [](auto& s) { return s.lock(kPid); }},
    {"unlock", Permission::Lock, [](auto& s) { return s.unlock(kPid); }},
    {"registerCallback", Permission::Connect,
     [](auto& s) { return s.registerCallback(kPid, new RecordingCallback(kPid)); }},
    {"deregisterCallback", Permission::Connect, [](auto& s) { return s.deregisterCallback(kPid); }},
};

class AUser : public ServiceFixture {
protected:
    std::string lastLine() const { return log.empty() ? "" : log.back(); }

    /// A service that grants the guest this, with the guest's client registered if it may be.
    android::sp<RecordingCallback> guestWith(unsigned granted) {
        makeService({{PolicyRule::Subject::User, kGuest, static_cast<Permissions>(granted)}});
        service->announceVoices(engine.voices());
        caller = {kPid, kGuest};
        const android::sp<RecordingCallback> callback = new RecordingCallback(kPid);
        if (granted != kNoPermissions) {
            EXPECT_EQ(0, service->registerCallback(kPid, callback));
        }
        log.clear();
        return callback;
    }
};

TEST_F(AUser, MayAskForWhatItHasThePermissionOf) {
    for (const Request& request : kRequests) {
        const auto guest = guestWith(bitOf(request.needed));
        EXPECT_GE(request.send(*service), 0) << request.name;
        EXPECT_EQ("", lastLine());
    }
}

TEST_F(AUser, MayNotAskForWhatOnlyOtherPermissionsAllow) {
    for (const Request& request : kRequests) {
        // Any other permission brings the one to connect with it.
        const bool isConnect = request.needed == Permission::Connect;
        const auto guest =
            guestWith(isConnect ? kNoPermissions : kAllPermissions & ~bitOf(request.needed));
        EXPECT_EQ(STATUS_PERMISSION_DENIED, request.send(*service)) << request.name;
        EXPECT_EQ(STATUS_PERMISSION_DENIED, request.send(*service)) << request.name;
        const std::vector<std::string> expected = {std::string(request.name) +
                                                   ": user 1001 lacks the permission " +
                                                   wordOf(request.needed) + ", refused"};
        EXPECT_EQ(expected, log);
    }
}

TEST_F(AUser, WhoseRequestWasRefusedChangesNothing) {
    const auto guest = guestWith(bitOf(Permission::Connect));
    for (const Request& request : kRequests) {
        if (request.needed != Permission::Connect) {
            (void)request.send(*service);
        }
    }
    EXPECT_EQ(0U, queue->waiting());
    EXPECT_EQ(300, service->globalRate());
    EXPECT_FALSE(service->locked());
}

TEST_F(AUser, ThatMayNotSpeakIsToldSoForEachUtterance) {
    const auto guest = guestWith(bitOf(Permission::Connect));
    (void)sendSay(*service);
    (void)service->silence(kPid, 8, kLongestPause, kUnset);
    const std::vector<Told> expected = {
        {kPid, EVENT_STOPPED, 7, statusWord(STATUS_PERMISSION_DENIED)},
        {kPid, EVENT_STOPPED, 8, statusWord(STATUS_PERMISSION_DENIED)}};
    EXPECT_EQ(expected, toldTo(guest));
}

TEST_F(AUser, ThatMayNotSpeakLearnsAllTheSameWhatWasServedBefore) {
    const auto guest = guestWith(bitOf(Permission::Connect));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->silence(kPid, 8, kLongestPause + 1, kUnset));
    const std::vector<Told> expected = {{kPid, EVENT_STOPPED, 8, statusWord(STATUS_BAD_PARAMETER)}};
    EXPECT_EQ(expected, toldTo(guest));
    EXPECT_TRUE(log.empty());
}

TEST_F(AUser, IsToldOfRefusedRequestsThatBringNoStatusBack) {
    const auto guest = guestWith(bitOf(Permission::Connect));
    (void)service->stopAndFlush(kPid, 0);
    (void)service->lock(kPid);
    (void)service->unlock(kPid);
    (void)service->setVerbosity(kPid, 1);
    const std::vector<Told> expected = {{kPid, EVENT_STATE, STATE_REFUSED, REQUEST_STOP},
                                        {kPid, EVENT_STATE, STATE_REFUSED, REQUEST_LOCK},
                                        {kPid, EVENT_STATE, STATE_REFUSED, REQUEST_UNLOCK}};
    EXPECT_EQ(expected, toldTo(guest));
}

TEST_F(AUser, ThatTheRuntimeDoesNotNameIsToldOfItsRefusals) {
    const auto guest = guestWith(bitOf(Permission::Connect));
    caller = {0, kGuest};
    (void)sendSay(*service);
    (void)service->lock(kPid);
    const std::vector<Told> expected = {
        {kPid, EVENT_STOPPED, 7, statusWord(STATUS_PERMISSION_DENIED)},
        {kPid, EVENT_STATE, STATE_REFUSED, REQUEST_LOCK}};
    EXPECT_EQ(expected, toldTo(guest));
}

TEST_F(AUser, WithoutAnyPermissionReadsNothingThatTheServiceTells) {
    for (const Transaction& asked :
         {transaction::kEnabled, transaction::kVerbosity, transaction::kGlobalRate}) {
        for (const bool permitted : {false, true}) {
            (void)guestWith(permitted ? bitOf(Permission::Connect) : kNoPermissions);
            const android::Parcel request;
            android::Parcel reply;
            EXPECT_EQ(permitted ? android::OK : android::PERMISSION_DENIED,
                      service->onTransact(asked.code, request, &reply, 0));
            EXPECT_EQ(permitted ? 4U : 0U, reply.dataSize()) << asked.code;
            EXPECT_EQ(permitted ? 0U : 1U, log.size());
        }
    }
}

TEST_F(AUser, IsToldWithTheCapabilitiesWhetherItMayConnect) {
    for (const PermissionWord& entry : kPermissionWords) {
        (void)guestWith(bitOf(entry.permission));
        TTS::Capabilities caps;
        service->getCapabilities(caps);
        EXPECT_TRUE(caps.permitted) << entry.word;
    }
    (void)guestWith(kNoPermissions);
    TTS::Capabilities caps;
    service->getCapabilities(caps);
    EXPECT_FALSE(caps.permitted);
    EXPECT_TRUE(caps.ready);
}

class ALockOfAnother : public AUser {
protected:
    /// Ann, of the service's own user, has the lock; the guest is another client.
    android::sp<RecordingCallback> guestBeside(unsigned granted) {
        makeService({{PolicyRule::Subject::User, kGuest, static_cast<Permissions>(granted)}});
        service->announceVoices(engine.voices());
        (void)join(kAnn);
        EXPECT_EQ(0, service->lock(kAnn));
        caller = {kBob, kGuest};
        const android::sp<RecordingCallback> callback = new RecordingCallback(kBob);
        EXPECT_EQ(0, service->registerCallback(kBob, callback));
        return callback;
    }
};

TEST_F(ALockOfAnother, IsBrokenByWhoMayAndNamesItsHolder) {
    const auto guest = guestBeside(bitOf(Permission::BreakLock));
    EXPECT_EQ(0, service->unlock(kAnn));
    EXPECT_FALSE(service->locked());
    EXPECT_EQ((Told{kBob, EVENT_STATE, STATE_LOCK, 0}), toldTo(guest).back());
    EXPECT_EQ("user 1001 has broken the lock of process 101", lastLine());
}

TEST_F(ALockOfAnother, StaysWhereTheUserMayNotBreakIt) {
    const auto guest = guestBeside(kAllPermissions & ~bitOf(Permission::BreakLock));
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->unlock(kAnn));
    EXPECT_TRUE(service->locked());
    EXPECT_EQ((Told{kBob, EVENT_STATE, STATE_REFUSED, REQUEST_UNLOCK}), toldTo(guest).back());
    EXPECT_EQ("unlock: user 1001 lacks the permission break-lock, refused", lastLine());
}

TEST_F(ALockOfAnother, StaysWhenAClientFreesWhatItDoesNotHold) {
    const auto guest = guestBeside(kAllPermissions);
    EXPECT_EQ(STATUS_LOCKED, service->unlock(kBob));
    EXPECT_TRUE(service->locked());
}

TEST_F(ALockOfAnother, IsBrokenByAnotherClientOfTheServicesOwnUser) {
    (void)guestBeside(kNoPermissions | bitOf(Permission::Connect));
    from(kBob);
    EXPECT_EQ(0, service->unlock(kAnn));
    EXPECT_FALSE(service->locked());
}

TEST_F(ALockOfAnother, IsNotBrokenByNamingSomebodyElse) {
    (void)guestBeside(kAllPermissions);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->unlock(kAnn + 1));
    EXPECT_TRUE(service->locked());
}

}  // namespace
}  // namespace voxtreld
