// SPDX-License-Identifier: Apache-2.0
#include "tests/support/RecordingRemote.h"

#include <algorithm>
#include <utility>

namespace support {

using android::sp;
using android::status_t;
using android::wp;

void RecordingRemote::answerWith(const Bytes& reply) {
    answerBy([reply](const Transaction&, const android::Parcel&, android::Parcel& out) {
        fill(out, reply);
        return android::NO_ERROR;
    });
}

void RecordingRemote::failWith(status_t status) {
    answerBy(
        [status](const Transaction&, const android::Parcel&, android::Parcel&) { return status; });
}

void RecordingRemote::answerBy(Answer answer) {
    const std::lock_guard<std::mutex> guard(mMutex);
    mAnswer = std::move(answer);
}

void RecordingRemote::answerLinksWith(status_t status) {
    const std::lock_guard<std::mutex> guard(mMutex);
    mLinkStatus = status;
}

void RecordingRemote::die() {
    std::vector<wp<DeathRecipient>> told;
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        mAlive = false;
        told.swap(mRecipients);
    }
    for (const wp<DeathRecipient>& each : told) {
        const sp<DeathRecipient> recipient = each.promote();
        if (recipient != nullptr) {
            recipient->binderDied(wp<android::IBinder>(this));
        }
    }
}

std::vector<Transaction> RecordingRemote::sent() const {
    const std::lock_guard<std::mutex> guard(mMutex);
    return mSent;
}

size_t RecordingRemote::links() const {
    const std::lock_guard<std::mutex> guard(mMutex);
    return mRecipients.size();
}

const android::String16& RecordingRemote::getInterfaceDescriptor() const {
    static const android::String16 none("");
    return none;
}

bool RecordingRemote::isBinderAlive() const {
    const std::lock_guard<std::mutex> guard(mMutex);
    return mAlive;
}

status_t RecordingRemote::pingBinder() {
    return isBinderAlive() ? android::NO_ERROR : android::DEAD_OBJECT;
}

status_t RecordingRemote::linkToDeath(const sp<DeathRecipient>& recipient, void* /*cookie*/,
                                      uint32_t /*flags*/) {
    const std::lock_guard<std::mutex> guard(mMutex);
    if (!mAlive) {
        return android::DEAD_OBJECT;
    }
    if (mLinkStatus == android::NO_ERROR) {
        mRecipients.push_back(recipient);
    }
    return mLinkStatus;
}

status_t RecordingRemote::unlinkToDeath(const wp<DeathRecipient>& recipient, void* /*cookie*/,
                                        uint32_t /*flags*/, wp<DeathRecipient>* outRecipient) {
    const std::lock_guard<std::mutex> guard(mMutex);
    const auto linked = std::find(mRecipients.begin(), mRecipients.end(), recipient);
    if (linked == mRecipients.end()) {
        return mAlive ? android::NAME_NOT_FOUND : android::DEAD_OBJECT;
    }
    if (outRecipient != nullptr) {
        *outRecipient = *linked;
    }
    mRecipients.erase(linked);
    return android::NO_ERROR;
}

status_t RecordingRemote::onTransact(uint32_t code, const android::Parcel& data,
                                     android::Parcel* reply, uint32_t flags) {
    const Transaction sent{code, flags, bytesOf(data)};
    Answer answer;
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        if (!mAlive) {
            return android::DEAD_OBJECT;
        }
        mSent.push_back(sent);
        answer = mAnswer;
    }
    if (answer == nullptr || reply == nullptr) {
        return android::NO_ERROR;
    }
    return answer(sent, data, *reply);
}

}  // namespace support
