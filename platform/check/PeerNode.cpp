// SPDX-License-Identifier: Apache-2.0
#include "check/PeerNode.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace check {

using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using std::chrono::milliseconds;

namespace {

int32_t callBack(const Parcel& data) {
    const sp<android::IBinder> target = data.readStrongBinder();
    const auto flags = static_cast<uint32_t>(data.readInt32());
    Parcel request;
    Parcel answer;
    request.writeInt32(data.readInt32());
    request.writeInt32(0);
    return target != nullptr ? target->transact(kAdd, request, &answer, flags)
                             : android::UNEXPECTED_NULL;
}

}  // namespace

int32_t PeerNode::meet(int32_t callers) {
    std::unique_lock<std::mutex> held(mLock);
    ++mMeeting;
    mChanged.notify_all();
    return mChanged.wait_for(held, std::chrono::seconds(5), [&] { return mMeeting >= callers; })
               ? 1
               : 0;
}

void PeerNode::note(int32_t number, int32_t wait) {
    {
        const std::lock_guard<std::mutex> held(mLock);
        mMaxInside = std::max(mMaxInside, ++mInside);
        mCallerPid = android::IPCThreadState::self()->getCallingPid();
        mCallerUid = android::IPCThreadState::self()->getCallingUid();
    }
    std::this_thread::sleep_for(milliseconds(wait));
    const std::lock_guard<std::mutex> held(mLock);
    --mInside;
    mNotes.push_back(number);
}

void PeerNode::tellNotes(Parcel& reply) {
    const std::lock_guard<std::mutex> held(mLock);
    reply.writeInt32(mMaxInside);
    reply.writeInt32(mCallerPid);
    reply.writeInt32(static_cast<int32_t>(mCallerUid));
    reply.writeInt32(static_cast<int32_t>(mNotes.size()));
    for (const int32_t number : mNotes) {
        reply.writeInt32(number);
    }
}

sp<android::IBinder> PeerNode::make() {
    const sp<android::IBinder> made = new android::BBinder();
    const std::lock_guard<std::mutex> held(mLock);
    mMade = made;
    return made;
}

int32_t PeerNode::awaitGone() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (;;) {
        {
            const std::lock_guard<std::mutex> held(mLock);
            if (mMade.promote() == nullptr) {
                return 1;
            }
        }
        if (std::chrono::steady_clock::now() >= end) {
            return 0;
        }
        std::this_thread::sleep_for(milliseconds(5));
    }
}

status_t PeerNode::onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    if (code == kNote) {
        const int32_t number = data.readInt32();
        note(number, data.readInt32());
        return OK;
    }
    if (reply == nullptr || code > kAwaitGone) {
        return BBinder::onTransact(code, data, reply, flags);
    }
    switch (code) {
        case kAdd: {
            const int32_t first = data.readInt32();
            return reply->writeInt32(first + data.readInt32());
        }
        case kWait:
            std::this_thread::sleep_for(milliseconds(data.readInt32()));
            return reply->writeInt32(1);
        case kMeet:
            return reply->writeInt32(meet(data.readInt32()));
        case kNotes:
            tellNotes(*reply);
            return OK;
        case kCaller:
            reply->writeInt32(android::IPCThreadState::self()->getCallingPid());
            return reply->writeInt32(
                static_cast<int32_t>(android::IPCThreadState::self()->getCallingUid()));
        case kFail:
            reply->writeInt32(1);
            return android::BAD_VALUE;
        case kCallBack:
            return reply->writeInt32(callBack(data));
        case kIsNull:
            return reply->writeInt32(data.readStrongBinder() == nullptr ? 1 : 0);
        case kMake:
            return reply->writeStrongBinder(make());
        case kAwaitGone:
            return reply->writeInt32(awaitGone());
        default:
            return BBinder::onTransact(code, data, reply, flags);
    }
}

int servePeer(const char* name, const Report& report) {
    const sp<PeerNode> node = new PeerNode();
    const status_t status =
        android::defaultServiceManager()->addService(android::String16(name), node);
    if (status != OK) {
        (void)report.writeLine("status " +
                               std::to_string(status));  // whoever reads it sees the end, too
        return EXIT_FAILURE;
    }
    android::ProcessState::self()->startThreadPool();
    if (!report.writeLine("ready")) {
        return EXIT_FAILURE;
    }
    char nothing = 0;
    while (read(STDIN_FILENO, &nothing, 1) > 0) {
    }
    _exit(0);
}

}  // namespace check
