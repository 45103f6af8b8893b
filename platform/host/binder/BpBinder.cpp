// SPDX-License-Identifier: Apache-2.0
#include "binder/BpBinder.h"

#include <algorithm>
#include <new>
#include <utility>

#include "binder/Parcel.h"
#include "binder/transport/Reference.h"
#include "support/ForkGuard.h"
#include "support/Log.h"

namespace android {

BpBinder::BpBinder(std::unique_ptr<transport::Reference>&& reference)
    : mReference(std::move(reference)) {}

// In a forked child the reference and the links may be as another thread of the parent was about to
// change them: they are left, not destroyed.
BpBinder::~BpBinder() {
    if (transport::isForkedChild()) {
        (void)mReference.release();
        (void)new (std::nothrow) std::vector<Link>(std::move(mLinks));
    }
}

const String16& BpBinder::getInterfaceDescriptor() const {
    static const String16* const unknown = new String16();
    if (transport::refusedAfterFork()) {
        return *unknown;
    }
    {
        Mutex::Autolock held(mLock);
        if (mDescriptor != nullptr) {
            return *mDescriptor;
        }
    }
    const Parcel data;
    Parcel reply;
    if (mReference->call(INTERFACE_TRANSACTION, data, &reply, 0) != OK) {
        return *unknown;
    }
    Mutex::Autolock held(mLock);
    if (mDescriptor == nullptr) {
        mDescriptor = std::make_unique<const String16>(reply.readString16());
    }
    return *mDescriptor;
}

bool BpBinder::isBinderAlive() const {
    return mAlive;
}

status_t BpBinder::pingBinder() {
    const Parcel data;
    Parcel reply;
    return transact(PING_TRANSACTION, data, &reply);
}

status_t BpBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (!mAlive) {
        return DEAD_OBJECT;
    }
    const status_t status = mReference->call(code, data, reply, flags);
    // The node itself may have returned this status, say because one that it called has died.
    if (status == DEAD_OBJECT && mReference->hasEnded()) {
        mAlive = false;
    }
    return status;
}

status_t BpBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie, uint32_t flags) {
    if (recipient == nullptr) {
        return BAD_VALUE;
    }
    if (transport::refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    Mutex::Autolock held(mLock);
    if (mReported) {
        return DEAD_OBJECT;
    }
    const status_t status = mReference->watch(wp<BpBinder>(this));
    if (status == OK) {
        mLinks.push_back({recipient, cookie, flags});
    }
    return status;
}

status_t BpBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie, uint32_t flags,
                                 wp<DeathRecipient>* outRecipient) {
    if (transport::refusedAfterFork()) {
        return INVALID_OPERATION;
    }
    Mutex::Autolock held(mLock);
    if (mReported) {
        return DEAD_OBJECT;
    }
    const auto same = [&](const Link& link) {
        const bool named =
            recipient == nullptr ? link.cookie == cookie : link.recipient == recipient;
        return named && link.flags == flags;
    };
    const auto found = std::find_if(mLinks.begin(), mLinks.end(), same);
    if (found == mLinks.end()) {
        return NAME_NOT_FOUND;
    }
    if (outRecipient != nullptr) {
        *outRecipient = found->recipient;
    }
    mLinks.erase(found);
    if (mLinks.empty()) {
        mReference->unwatch();
    }
    return OK;
}

bool BpBinder::nodeHasEnded() const {
    return !mAlive || mReference->hasEnded();
}

void BpBinder::reportDeath() {
    mAlive = false;
    std::vector<Link> links;
    {
        Mutex::Autolock held(mLock);
        mReported = true;
        links.swap(mLinks);
    }
    for (const Link& link : links) {
        const sp<DeathRecipient> recipient = link.recipient.promote();
        if (recipient != nullptr) {
            tell(*recipient);
        }
    }
}

// One that runs out of memory must not keep the others from hearing of the death.
void BpBinder::tell(DeathRecipient& recipient) {
    try {
        recipient.binderDied(wp<IBinder>(this));
    } catch (const std::bad_alloc&) {
        transport::logLimited("out of memory: a death recipient has not done all that it does");
    }
}

BpBinder* BpBinder::remoteBinder() {
    return this;
}

}  // namespace android
