// SPDX-License-Identifier: Apache-2.0
// The part of DriverThread that handles what the driver delivers: incoming calls, reference counts,
// death notices.
#include "binder/internal/ServeCall.h"
#include "kernel/DriverThread.h"
#include "kernel/FlatObject.h"
#include "kernel/ParcelImage.h"

namespace android::kernel {

namespace {

// An idle thread may keep a buffer for long. What all threads keep must be a small part of the
// mapping.
constexpr binder_size_t kLarge = binder_size_t{4} * 1024;

}  // namespace

// Frees a received buffer once, also when the implementation ends its thread: the driver holds the
// node's next one-way call back until then.
class DriverThread::ReceivedBuffer {
public:
    ReceivedBuffer(DriverThread& thread, const binder_transaction_data& transaction)
        : mThread(thread), mTransaction(transaction) {}
    ~ReceivedBuffer() { free(); }
    ReceivedBuffer(const ReceivedBuffer&) = delete;
    ReceivedBuffer& operator=(const ReceivedBuffer&) = delete;

    void free() {
        if (!mFreed) {
            mFreed = true;
            mThread.freeBuffer(mTransaction);
        }
    }

private:
    DriverThread& mThread;
    const binder_transaction_data& mTransaction;
    bool mFreed = false;
};

void DriverThread::serveForever(uint32_t enter) {
    mCommands.add(enter);
    mIsLooper = true;
    for (;;) {
        mProcess.threads.retry();
        ReturnBuffer returns;
        if (exchange(&returns) != 0) {
            mIsLooper = false;
            return;
        }
        for (Return one; returns.next(&one);) {
            execute(one);
        }
        runDeferred();
    }
}

void DriverThread::execute(const Return& one) {
    switch (one.command()) {
        case BR_TRANSACTION:
            return serve(one.payload<binder_transaction_data>());
        case BR_TRANSACTION_SEC_CTX:
            return serve(one.payload<binder_transaction_data_secctx>().transaction_data);
        case BR_INCREFS:
        case BR_ACQUIRE:
            return acquireNode(one);
        case BR_RELEASE:
        case BR_DECREFS:
        case BR_DEAD_BINDER:
            return defer(one);
        case BR_SPAWN_LOOPER:
            return mProcess.spawnLooper();
        default:
            return;  // BR_NOOP, BR_OK, BR_CLEAR_DEATH_NOTIFICATION_DONE
    }
}

void DriverThread::acquireNode(const Return& one) {
    const auto node = one.payload<binder_ptr_cookie>();
    const bool isWeak = one.command() == BR_INCREFS;
    if (node.ptr != 0 && isWeak) {
        countsOf(node)->incWeak(this);
    } else if (node.ptr != 0) {
        nodeOf(node)->incStrong(this);
    }
    mCommands.addNode(isWeak ? BC_INCREFS_DONE : BC_ACQUIRE_DONE, node);
    mUrgent = true;
}

void DriverThread::defer(const Return& one) {
    if (one.command() == BR_DEAD_BINDER) {
        mDeferred.push_back({one.command(), {0, one.payload<binder_uintptr_t>()}});
    } else {
        mDeferred.push_back({one.command(), one.payload<binder_ptr_cookie>()});
    }
}

// A destructor or recipient may make calls, and so come here again.
void DriverThread::runDeferred() {
    while (!mDeferred.empty()) {
        const Deferred first = mDeferred.front();
        mDeferred.erase(mDeferred.begin());
        run(first);
    }
}

void DriverThread::run(const Deferred& one) {
    if (one.command == BR_DEAD_BINDER) {
        reportDeath(one.node.cookie);
    } else if (one.node.ptr == 0) {
        return;  // the context manager's node, which the transport holds
    } else if (one.command == BR_RELEASE) {
        nodeOf(one.node)->decStrong(this);
    } else {
        countsOf(one.node)->decWeak(this);
    }
}

void DriverThread::reportDeath(binder_uintptr_t cookie) {
    const sp<BpBinder> proxy = mProcess.deaths.take(cookie);
    if (proxy != nullptr) {
        proxy->reportDeath();
    }
    mCommands.addWord(BC_DEAD_BINDER_DONE, cookie);
    mUrgent = true;
}

// The driver may deliver a call to a node that is being destroyed.
sp<BBinder> DriverThread::targetOf(const binder_transaction_data& transaction) const {
    const binder_ptr_cookie node = {transaction.target.ptr, transaction.cookie};
    if (node.ptr == 0) {
        return mProcess.contextManager.load();
    }
    if (!countsOf(node)->attemptIncStrong(this)) {
        return nullptr;
    }
    const sp<BBinder> held = nodeOf(node);
    held->decStrong(this);
    return held;
}

status_t DriverThread::callTarget(const sp<BBinder>& node,
                                  const binder_transaction_data& transaction, Parcel& data,
                                  Parcel* reply) {
    if (node == nullptr) {
        return UNKNOWN_TRANSACTION;
    }
    const transport::Caller caller = {transaction.sender_pid, transaction.sender_euid};
    return transport::serveCall(*node, caller, transaction.code, data, reply, transaction.flags);
}

void DriverThread::serve(const binder_transaction_data& transaction) {
    if (mWaits == nullptr) {
        runDeferred();  // the call may take long
    }
    ReceivedBuffer buffer(*this, transaction);
    // The driver holds the node until the buffer is freed.
    sp<BBinder> node = targetOf(transaction);
    const bool isOneWay = (transaction.flags & TF_ONE_WAY) != 0;
    Parcel data;
    Parcel reply;
    status_t status = receive(transaction, &data);
    if (!isOneWay) {
        buffer.free();
    }
    flushIfUrgent();
    if (status == OK) {
        status = callTarget(node, transaction, data, &reply);
    }
    node.clear();  // before the caller has its reply
    if (!isOneWay) {
        sendReply(status, reply);
    }
}

void DriverThread::sendReply(status_t status, const Parcel& reply) {
    binder_transaction_data transaction = {};
    const ParcelImage image(reply);
    if (status == OK) {
        status = image.status();
    }
    if (status == OK) {
        image.describe(&transaction);
    } else {
        transaction.flags = TF_STATUS_CODE;
        transaction.data_size = sizeof(status);
        transaction.data.ptr.buffer = toWord(&status);
    }
    mCommands.addTransaction(BC_REPLY, transaction);
    Wait wait = {false, nullptr};
    await(wait);  // the driver tells the caller of a failure
}

status_t DriverThread::receive(const binder_transaction_data& transaction, Parcel* parcel) {
    return receiveParcel(
        transaction, [this](uint32_t handle) { return proxyOf(handle); }, parcel);
}

sp<BpBinder> DriverThread::proxyOf(uint32_t handle) {
    const HandleTable::Found found = mProcess.handles.find(handle);
    if (found.isNew) {
        mCommands.addHandle(BC_INCREFS, handle);
        mCommands.addHandle(BC_ACQUIRE, handle);
        mUnacquired.push_back(found.proxy);
        mUrgent = true;
    }
    return found.proxy;
}

void DriverThread::freeBuffer(const binder_transaction_data& transaction) {
    mCommands.addWord(BC_FREE_BUFFER, transaction.data.ptr.buffer);
    // A buffer with binders holds their nodes.
    mUrgent = mUrgent || transaction.data_size >= kLarge || transaction.offsets_size != 0;
}

}  // namespace android::kernel
