// SPDX-License-Identifier: Apache-2.0
#include "fuzz/service/Clients.h"

#include <algorithm>

#include "fuzz/Input.h"
#include "ipc/ICallback.h"

namespace voxtrel_fuzz {
namespace {

using android::sp;
using android::status_t;
using android::wp;

/// The callbacks that there are.
struct Count {
    std::mutex mutex;
    std::condition_variable changed;
    int value = 0;
};

Count& callbacks() {
    static Count count;
    return count;
}

void count(int change) {
    const std::lock_guard<std::mutex> lock(callbacks().mutex);
    callbacks().value += change;
    callbacks().changed.notify_all();
}

/// Whether a request without a status is refused is the policy's affair.
bool isOfPolicy(const Notice& notice) {
    return notice.event == TTS::EVENT_STATE && notice.second == TTS::STATE_REFUSED;
}

}  // namespace

void Journal::add(const Notice& notice) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mNotices.push_back(notice);
}

std::vector<Notice> Journal::read() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mNotices;
}

RemoteCallback::RemoteCallback(std::shared_ptr<Journal> journal) : mJournal(std::move(journal)) {
    count(1);
}

RemoteCallback::~RemoteCallback() {
    count(-1);
}

void RemoteCallback::waitUntilGone() {
    std::unique_lock<std::mutex> lock(callbacks().mutex);
    callbacks().changed.wait(lock, [] { return callbacks().value == 0; });
}

void RemoteCallback::die() {
    std::vector<wp<DeathRecipient>> told;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsDead = true;
        told.swap(mRecipients);
    }
    for (const wp<DeathRecipient>& each : told) {
        const sp<DeathRecipient> recipient = each.promote();
        if (recipient != nullptr) {
            recipient->binderDied(wp<android::IBinder>(this));
        }
    }
}

void RemoteCallback::refuseNext(unsigned calls) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRefusals = calls;
}

status_t RemoteCallback::linkToDeath(const sp<DeathRecipient>& recipient, void*, uint32_t) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsDead) {
        return android::DEAD_OBJECT;
    }
    mRecipients.emplace_back(recipient);
    return android::OK;
}

status_t RemoteCallback::unlinkToDeath(const wp<DeathRecipient>& recipient, void*, uint32_t,
                                       wp<DeathRecipient>*) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = std::find(mRecipients.begin(), mRecipients.end(), recipient);
    if (found == mRecipients.end()) {
        return mIsDead ? android::DEAD_OBJECT : android::NAME_NOT_FOUND;
    }
    mRecipients.erase(found);
    return android::OK;
}

status_t RemoteCallback::onTransact(uint32_t code, const android::Parcel& data, android::Parcel*,
                                    uint32_t) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsDead) {
        return android::DEAD_OBJECT;
    }
    if (mRefusals > 0) {
        --mRefusals;
        return android::FAILED_TRANSACTION;
    }
    require(code == TTS::ICallback::kNotify && data.dataSize() == 3 * sizeof(int32_t));
    Notice notice = {};
    notice.event = data.readUint32();
    notice.second = data.readUint32();
    notice.third = data.readUint32();
    mJournal->add(notice);
    return android::OK;
}

void Clients::joined(uint32_t pid, uint32_t uid, const sp<RemoteCallback>& callback) {
    Member& member = mMembers[pid];
    if (member.journal == nullptr || member.uid != uid) {
        member.expected.clear();
    }
    member.journal = callback->journal();
    member.uid = uid;
    member.callback = callback;
}

void Clients::left(uint32_t pid) {
    mMembers.erase(pid);
}

void Clients::died(uint32_t pid) {
    mMembers.erase(pid);
    for (Utterance& utterance : mSpeech[pid].accepted) {
        utterance.isForgotten = true;
    }
}

bool Clients::isOfUser(uint32_t pid, uint32_t uid) const {
    const auto found = mMembers.find(pid);
    return found != mMembers.end() && found->second.uid == uid;
}

sp<RemoteCallback> Clients::callbackOf(uint32_t pid) const {
    const auto found = mMembers.find(pid);
    return found == mMembers.end() ? nullptr : found->second.callback;
}

std::shared_ptr<Journal> Clients::journalFor(uint32_t pid, uint32_t uid) const {
    return isOfUser(pid, uid) ? mMembers.at(pid).journal : nullptr;
}

void Clients::accepted(uint32_t pid, uint32_t id) {
    mSpeech[pid].accepted.push_back({id, false});
}

void Clients::refused(uint32_t pid, uint32_t id, int32_t status) {
    expect(pid, {TTS::EVENT_STOPPED, id, static_cast<uint32_t>(status)});
}

void Clients::told(uint32_t pid, const Notice& notice) {
    Speech& speech = mSpeech[pid];
    if (notice.event == TTS::EVENT_STARTED) {
        started(speech, notice.second);
    } else {
        require(speech.isFirstStarted && speech.accepted.front().id == notice.second);
        if (notice.event == TTS::EVENT_FINISHED || notice.event == TTS::EVENT_STOPPED) {
            speech.isFirstStarted = false;
            speech.accepted.pop_front();
        }
    }
    expect(pid, notice);
}

/// Each in its turn, once.
void Clients::started(Speech& speech, uint32_t id) {
    require(!speech.isFirstStarted);
    auto& accepted = speech.accepted;
    while (!accepted.empty() && accepted.front().isForgotten && accepted.front().id != id) {
        accepted.pop_front();
    }
    require(!accepted.empty() && accepted.front().id == id);
    speech.isFirstStarted = true;
}

void Clients::expect(uint32_t pid, const Notice& notice) {
    const auto found = mMembers.find(pid);
    if (found != mMembers.end()) {
        found->second.expected.push_back(notice);
    }
}

void Clients::expectAll(const Notice& notice) {
    for (auto& [pid, member] : mMembers) {
        member.expected.push_back(notice);
    }
}

void Clients::requireAllEnded() const {
    for (const auto& [pid, speech] : mSpeech) {
        require(std::all_of(speech.accepted.begin(), speech.accepted.end(),
                            [](const Utterance& each) { return each.isForgotten; }));
    }
}

void Clients::requireAllToldOf() const {
    for (const auto& [pid, member] : mMembers) {
        std::vector<Notice> got;
        for (const Notice& notice : member.journal->read()) {
            require(notice.event >= TTS::EVENT_STARTED && notice.event <= TTS::EVENT_MARK);
            if (!isOfPolicy(notice)) {
                got.push_back(notice);
            }
        }
        require(got == member.expected);
    }
}

}  // namespace voxtrel_fuzz
