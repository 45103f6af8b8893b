// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/peer/Peer.h"

#include <utility>

namespace foreign {

namespace {

binder_uintptr_t addressOf(const void* pointer) {
    return reinterpret_cast<uintptr_t>(pointer);
}

template <typename T>
const T* pointerOf(binder_uintptr_t address) {
    return reinterpret_cast<const T*>(static_cast<uintptr_t>(address));
}

binder_transaction_data describe(const Image& image) {
    binder_transaction_data transaction = {};
    transaction.data_size = image.bytes.size();
    transaction.data.ptr.buffer = addressOf(image.bytes.data());
    transaction.offsets_size = image.offsets.size() * sizeof(binder_size_t);
    transaction.data.ptr.offsets = addressOf(image.offsets.data());
    return transaction;
}

int32_t statusIn(const Image& image) {
    return ImageReader(image).int32().value_or(-1);
}

}  // namespace

Peer::Peer(const char* path, Serve serve, Tell tell, Died died)
    : mDriver(path), mServe(std::move(serve)), mTell(std::move(tell)), mDied(std::move(died)) {
    mDriver.queue(BC_ENTER_LOOPER);
    mDriver.write();
}

Answer Peer::call(uint32_t handle, uint32_t code, uint32_t flags, const Image& data) {
    binder_transaction_data transaction = describe(data);
    transaction.target.handle = handle;
    transaction.code = code;
    transaction.flags = flags | TF_ACCEPT_FDS;
    mDriver.queue(BC_TRANSACTION, transaction);
    return await((flags & TF_ONE_WAY) != 0);
}

Answer Peer::await(bool isOneWay) {
    Answer answer = {};
    for (bool isSettled = false; !isSettled;) {
        for (const Return& one : mDriver.exchange()) {
            if (!isSettled && settle(one, isOneWay, &answer)) {
                isSettled = true;
            } else {
                handle(one);
            }
        }
    }
    mDriver.write();
    return answer;
}

bool Peer::settle(const Return& one, bool isOneWay, Answer* answer) {
    switch (one.command) {
        case BR_TRANSACTION_COMPLETE:
        case BR_ONEWAY_SPAM_SUSPECT:
            answer->kind = Answer::Kind::Sent;
            return isOneWay;
        case BR_FAILED_REPLY:
            answer->kind = Answer::Kind::Failed;
            return true;
        case BR_DEAD_REPLY:
            answer->kind = Answer::Kind::Dead;
            return true;
        case BR_REPLY: {
            const auto transaction = one.as<binder_transaction_data>();
            answer->data = receive(transaction);
            const bool isStatus = (transaction.flags & TF_STATUS_CODE) != 0;
            answer->kind = isStatus ? Answer::Kind::Status : Answer::Kind::Reply;
            answer->status = isStatus ? statusIn(answer->data) : 0;
            return true;
        }
        default:
            return false;
    }
}

void Peer::work() {
    for (const Return& one : mDriver.exchange()) {
        handle(one);
    }
    mDriver.write();
}

void Peer::handle(const Return& one) {
    switch (one.command) {
        case BR_TRANSACTION:
            return serve(one.as<binder_transaction_data>());
        case BR_INCREFS:
        case BR_ACQUIRE:
        case BR_RELEASE:
        case BR_DECREFS:
            return count(one);
        case BR_DEAD_BINDER: {
            const auto cookie = one.as<binder_uintptr_t>();
            mDriver.queue(BC_DEAD_BINDER_DONE, cookie);
            mTell("died " + std::to_string(cookie));
            return mDied(cookie);
        }
        case BR_CLEAR_DEATH_NOTIFICATION_DONE:
            return mTell("cleared " + std::to_string(one.as<binder_uintptr_t>()));
        default:
            return;  // BR_NOOP
    }
}

void Peer::count(const Return& one) {
    const auto node = one.as<binder_ptr_cookie>();
    const std::string name = "node " + std::to_string(node.ptr);
    switch (one.command) {
        case BR_INCREFS:
            return mDriver.queue(BC_INCREFS_DONE, node);
        case BR_ACQUIRE:
            mDriver.queue(BC_ACQUIRE_DONE, node);
            return mTell(name + " acquired");
        case BR_RELEASE:
            return mTell(name + " released");
        default:
            return;
    }
}

void Peer::serve(const binder_transaction_data& transaction) {
    const Incoming incoming = {transaction.target.ptr,  transaction.code,
                               transaction.flags,       transaction.sender_pid,
                               transaction.sender_euid, receive(transaction)};
    const Outgoing answer = mServe(incoming);
    if ((transaction.flags & TF_ONE_WAY) == 0) {
        reply(answer);
    }
}

void Peer::reply(const Outgoing& answer) {
    Image status;
    status.int32(answer.status);
    binder_transaction_data transaction = describe(answer.status == 0 ? answer.data : status);
    transaction.flags = answer.status == 0 ? 0 : TF_STATUS_CODE;
    mDriver.queue(BC_REPLY, transaction);
    if (await(true).kind != Answer::Kind::Sent) {
        mTell("reply lost");
    }
}

Image Peer::receive(const binder_transaction_data& transaction) {
    Image image;
    const auto* bytes = pointerOf<uint8_t>(transaction.data.ptr.buffer);
    image.bytes.assign(bytes, bytes + transaction.data_size);
    const auto* offsets = pointerOf<binder_size_t>(transaction.data.ptr.offsets);
    image.offsets.assign(offsets, offsets + transaction.offsets_size / sizeof(*offsets));
    for (const binder_size_t offset : image.offsets) {
        const flat_binder_object object = image.objectAt(static_cast<size_t>(offset));
        if (object.hdr.type == BINDER_TYPE_HANDLE && mHeld.insert(object.handle).second) {
            mDriver.queue(BC_INCREFS, object.handle);
            mDriver.queue(BC_ACQUIRE, object.handle);
        }
    }
    mDriver.queue(BC_FREE_BUFFER, transaction.data.ptr.buffer);
    return image;
}

void Peer::release(uint32_t handle) {
    if (mHeld.erase(handle) != 0) {
        mDriver.queue(BC_RELEASE, handle);
        mDriver.queue(BC_DECREFS, handle);
        mDriver.write();
    }
}

// Packed: 12 bytes in every process.
void Peer::requestDeath(uint32_t handle, uint64_t cookie) {
    mDriver.queue(BC_REQUEST_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
    mDriver.write();
}

void Peer::clearDeath(uint32_t handle, uint64_t cookie) {
    mDriver.queue(BC_CLEAR_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
    mDriver.write();
}

}  // namespace foreign
