// SPDX-License-Identifier: Apache-2.0
#include "fuzz/service/Scene.h"

#include <array>
#include <cstring>

#include "service/Speaker.h"
#include "service/Text.h"
#include "vocabulary/Status.h"

namespace voxtrel_fuzz {

using android::Parcel;
using android::sp;
using namespace TTS;
using namespace voxtreld;

namespace {

constexpr uint32_t kOwnUser = 1000;
constexpr uint32_t kFirstPid = 101;

/// By process: two of the service's own user, and one each of users that may do all, little,
/// nothing.
constexpr std::array<uint32_t, 5> kUsers = {kOwnUser, kOwnUser, 1001, 1002, 1003};

const std::vector<PolicyRule>& rules() {
    static const std::vector<PolicyRule> all = {
        {PolicyRule::Subject::User, 1001, kAllPermissions},
        {PolicyRule::Subject::User, 1002,
         static_cast<Permissions>(bitOf(Permission::Connect) | bitOf(Permission::Speak))}};
    return all;
}

std::shared_ptr<const Policy> policy() {
    static const auto only = std::make_shared<const Policy>(
        kOwnUser, rules(), [](uint32_t) { return std::vector<uint32_t>(); });
    return only;
}

/// Small enough to be filled.
constexpr QueueLimits kLimits = {4, 3, 600};

bool isWord(const std::string& text, size_t at) {
    return text[at] != ' ' && (at == 0 || text[at - 1] == ' ');
}

}  // namespace

Scene::Scene(const std::string& profile, Input& input) : mInput(input), mProfilePath(profile) {
    newService();
    mSettings = allSettings();
}

void Scene::newService() {
    mService = nullptr;
    mProfile = nullptr;  // writes what it has
    mQueue = std::make_shared<SpeechQueue>(kLimits);
    mProfile = std::make_shared<ProfileStore>(mProfilePath);
    mService = new VoxtrelService(
        {mQueue, mProfile, policy(), [this] { return mCaller; },
         [](LogLevel, const std::string& line) { require(line.find('\n') == std::string::npos); }});
}

void Scene::run() {
    if (mInput.below(8) != 7) {
        announceVoices();
    }
    Mixer mixer(nullptr);
    feedTheQueue();
    Speaker(*this, *this, mixer, *mQueue, *this).run();
    mClients.requireAllEnded();
    mService->flushEvents(std::chrono::hours(1));
    mClients.requireAllToldOf();
    for (uint32_t pid = kFirstPid; pid < kFirstPid + kUsers.size(); ++pid) {
        mCaller = {pid, kUsers[pid - kFirstPid]};
        mNamed = pid;
        die();
    }
    require(!mService->locked());
    requireSettingsSurvive();
    mService = nullptr;
    RemoteCallback::waitUntilGone();
}

void Scene::announceVoices() {
    mService->announceVoices(voices());
    mHasVoices = true;
    mSettings = allSettings();
    mClients.expectAll({EVENT_STATE, STATE_READY, 1});
}

bool Scene::load(std::string&) {
    return true;
}

std::vector<EngineVoice> Scene::voices() const {
    return {{LANG_EN_US, "one"}, {LANG_EN_US, "two"}, {LANG_FR_FR, "un"}};
}

/// One sample a word.
bool Scene::speak(const std::string& text, const Prosody& prosody, SpeechReceiver& receiver) {
    require(prosody.voice >= 1 && prosody.voice <= 2);
    require(isSpeed(prosody.speed) && isPitch(prosody.pitch));
    const int16_t sample = 1;
    for (size_t at = 0; at < text.size(); ++at) {
        if (!isWord(text, at)) {
            continue;
        }
        makeRequests();
        receiver.word(characterCount(std::string_view(text).substr(0, at)));
        makeRequests();
        if (!receiver.samples(&sample, 1)) {
            return true;
        }
    }
    return requestsGoWell();
}

bool Scene::open(unsigned, std::string&) {
    return true;
}

bool Scene::begin(uint32_t, uint32_t) {
    return requestsGoWell();
}

bool Scene::write(const int16_t*, size_t, const Cancel&) {
    return requestsGoWell();
}

bool Scene::end(const Cancel&) {
    return requestsGoWell();
}

void Scene::tell(uint32_t pid, Event event, uint32_t second, uint32_t third) {
    mClients.told(pid, {event, second, third});
    mService->listener().tell(pid, event, second, third);
    makeRequests();
    feedTheQueue();
}

/// Makes requests; false if the operation that they come in the middle of is to fail.
bool Scene::requestsGoWell() {
    makeRequests();
    if (mFailures == 0) {
        return true;
    }
    --mFailures;
    return false;
}

void Scene::makeRequests() {
    while (!mInput.isAtEnd() && makeRequest()) {
    }
}

/// The speech thread would wait for requests where there is nothing to speak.
void Scene::feedTheQueue() {
    while (!mIsClosed && mQueue->idleSince().has_value()) {
        if (mInput.isAtEnd()) {
            mIsClosed = true;
            mQueue->close();
        } else {
            (void)makeRequest();
        }
    }
}

/// @return false where the speech thread is to go on.
bool Scene::makeRequest() {
    const unsigned kind = mInput.below(16);
    if (kind == 0) {
        return false;
    }
    chooseSender();
    if (kind <= 6) {
        speech(kind);
    } else if (kind <= 11) {
        shared(kind);
    } else {
        setting(kind);
    }
    requireRightLock();
    return true;
}

/// Most requests are in order; some name another process, come from another user, or from a one-way
/// call over the kernel's driver, which does not tell the process.
void Scene::chooseSender() {
    const uint8_t byte = mInput.byte();
    const unsigned index = (byte & 0x0FU) % kUsers.size();
    const unsigned oddity = byte >> 4U;
    mNamed = kFirstPid + index;
    mCaller = {mNamed, kUsers[oddity == 15 ? (index + 1) % kUsers.size() : index]};
    if (oddity == 14) {
        mNamed = kFirstPid + (index + 1) % kUsers.size();
    } else if (oddity == 13) {
        mCaller.pid = 0;
    }
}

void Scene::speech(unsigned kind) {
    if (kind <= 3) {
        const uint8_t choice = mInput.byte();
        const auto number = [&](unsigned bit) {
            return (choice >> bit & 1U) != 0 ? mInput.word() : kUnset;
        };
        Parcel request;
        request.writeUint32(mNamed);
        request.writeUint32(++mLastId);
        request.writeCString(mInput.text().c_str());
        request.writeUint32(number(0));
        request.writeFloat(static_cast<float>(number(1)));
        request.writeUint32(number(2));
        request.writeUint32(number(3));
        request.writeUint32(number(4));
        request.writeFloat(static_cast<float>(number(5)));
        request.writeUint32((choice & 0x80U) != 0 ? mInput.byte() : LANG_NA);
        (void)transact(transaction::kSay, request);
    } else if (kind == 4) {
        const uint32_t length = mInput.byte() * mInput.byte();
        (void)callWith(transaction::kSilence, {mNamed, ++mLastId, length, kUnset});
    } else {
        (void)callWith(transaction::kStopAndFlush, {mNamed, mInput.below(3)});
    }
}

void Scene::shared(unsigned kind) {
    switch (kind) {
        case 7:
            join();
            break;
        case 8:
            die();
            break;
        case 9:
            (void)callWith(transaction::kDeregisterCallback, {mNamed});
            break;
        case 10:
            (void)callWith(transaction::kLock, {mNamed});
            break;
        default:
            (void)callWith(transaction::kUnlock, {mNamed});
    }
}

void Scene::setting(unsigned kind) {
    switch (kind) {
        case 12:
            (void)callWith(transaction::kSetEnable2, {mNamed, mInput.below(17), mInput.below(2)});
            break;
        case 13:
            (void)callWith(transaction::kSetGlobalConfig,
                           {mNamed, mInput.below(17), mInput.word()});
            break;
        case 14:
            raw();
            break;
        default:
            mFailures = mInput.below(3);
            if (mClients.contains(mNamed)) {
                mClients.callbackOf(mNamed)->refuseNext(mFailures % 2);
            }
            if (!mHasVoices) {
                announceVoices();
            }
    }
}

/// A callback of the sender's; at times one that has died on the way.
void Scene::join() {
    const bool isDead = mInput.below(16) == 15;
    std::shared_ptr<Journal> journal = mClients.journalFor(mNamed, mCaller.uid);
    const sp<RemoteCallback> callback =
        new RemoteCallback(journal != nullptr ? journal : std::make_shared<Journal>());
    if (isDead) {
        callback->die();
    }
    Parcel request;
    request.writeUint32(mNamed);
    request.writeStrongBinder(callback);
    const int status = transact(transaction::kRegisterCallback, request);
    if (status == STATUS_OK) {
        require(!isDead);
        mClients.joined(mNamed, mCaller.uid, callback);
    } else if (status == STATUS_BAD_PARAMETER) {
        require(isDead);
        mClients.died(mNamed);
        freeLockOf(mNamed);
    }
}

void Scene::die() {
    const sp<RemoteCallback> callback = mClients.callbackOf(mNamed);
    if (callback != nullptr) {
        callback->die();
        mClients.died(mNamed);
        freeLockOf(mNamed);
    }
}

/// Any bytes. Numbers of utterances stay unique, so that each can be told from the others.
void Scene::raw() {
    const uint8_t code = mInput.byte();
    std::vector<uint8_t> image = mInput.bytes(mInput.byte());
    const bool isSpeech = code == transaction::kSay.code || code == transaction::kSilence.code;
    if (isSpeech && image.size() >= 8) {
        ++mLastId;
        std::memcpy(image.data() + 4, &mLastId, sizeof mLastId);
    }
    Parcel request;
    (void)request.setData(image.data(), image.size());
    (void)transact({code, 0}, request);
}

int Scene::callWith(Transaction transaction, std::initializer_list<uint32_t> values) {
    Parcel request;
    for (const uint32_t value : values) {
        request.writeUint32(value);
    }
    return transact(transaction, request);
}

/// @return the status of the request, or of the call if there was none.
int Scene::transact(Transaction transaction, Parcel& request) {
    request.setDataPosition(0);
    const uint32_t pid = request.readUint32();
    const uint32_t id = request.readUint32();
    request.setDataPosition(0);
    Parcel reply;
    const int called = mService->onTransact(transaction.code, request, &reply, transaction.flags);
    reply.setDataPosition(reply.dataSize() >= 4 ? reply.dataSize() - 4 : 0);
    const int status = called == android::OK ? reply.readInt32() : called;
    if (called == android::OK) {
        judge(transaction.code, pid, id, status);
    }
    return status;
}

void Scene::judge(uint32_t code, uint32_t pid, uint32_t id, int status) {
    const bool isLockedOut = mLockOwner != 0 && mLockOwner != pid;
    if (code == transaction::kSay.code || code == transaction::kSilence.code) {
        require(status != STATUS_OK || !isLockedOut);
        judgeSpeech(pid, id, status);
    } else if (code == transaction::kStopAndFlush.code) {
        require(status != STATUS_OK || !isLockedOut || mCaller.pid == mLockOwner);
    } else if (code == transaction::kSetEnable2.code ||
               code == transaction::kSetGlobalConfig.code) {
        require(status != STATUS_OK || !isLockedOut);
    } else if (code == transaction::kDeregisterCallback.code && status == STATUS_OK) {
        mClients.left(pid);
        freeLockOf(pid);
    } else if (code == transaction::kLock.code && status >= STATUS_OK) {
        require(!isLockedOut && mClients.contains(pid));
        setLockOwner(pid);
    } else if (code == transaction::kUnlock.code && status == STATUS_OK) {
        setLockOwner(0);
    }
    judgeChange(code, id, status);
    if (isLockedOut && status == STATUS_LOCKED &&
        (code == transaction::kLock.code || code == transaction::kStopAndFlush.code)) {
        const uint32_t sender = mCaller.pid != 0 ? mCaller.pid : pid;
        mClients.expect(sender, {EVENT_STATE, STATE_LOCK, mLockOwner});
    }
}

/// Everybody is told who has it.
void Scene::setLockOwner(uint32_t pid) {
    if (mLockOwner != pid) {
        mLockOwner = pid;
        mClients.expectAll({EVENT_STATE, STATE_LOCK, pid});
    }
}

void Scene::freeLockOf(uint32_t pid) {
    if (mLockOwner == pid) {
        setLockOwner(0);
    }
}

void Scene::judgeSpeech(uint32_t pid, uint32_t id, int status) {
    if (status == STATUS_OK) {
        mClients.accepted(pid, id);
        return;
    }
    const bool isKnown = mCaller.pid != 0 || mClients.isOfUser(pid, mCaller.uid);
    mClients.refused(mCaller.pid != 0 ? mCaller.pid : isKnown ? pid : 0, id, status);
}

void Scene::requireRightLock() {
    require(mService->locked() == (mLockOwner != 0));
    require(mLockOwner == 0 || mClients.contains(mLockOwner));
}

}  // namespace voxtrel_fuzz
