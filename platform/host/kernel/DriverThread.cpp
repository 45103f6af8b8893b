// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include "kernel/FlatObject.h"
#include "kernel/ParcelImage.h"
#include "support/ForkGuard.h"
#include "support/Log.h"

namespace android::kernel {

namespace {

// Flags that the runtime sets, not its callers.
constexpr uint32_t kOwnFlags = TF_ROOT_OBJECT | TF_STATUS_CODE | TF_ACCEPT_FDS;

status_t statusIn(const binder_transaction_data& transaction) {
    const bool isWhole = transaction.data_size >= sizeof(int32_t);
    return isWhole ? *toPointer<const int32_t>(transaction.data.ptr.buffer)
                   : static_cast<status_t>(UNKNOWN_ERROR);
}

const char* whyFailed(bool wasSent) {
    return wasSent ? "has no reply: this process has no room for it, or the driver refuses it"
                   : "is not sent: the receiver has no room for it, or the driver refuses it";
}

}  // namespace

// Also leaves the wait when an exception, or the end of the thread, unwinds it.
class DriverThread::WaitScope {
public:
    WaitScope(Wait*& innermost, Wait& wait) : mInnermost(innermost), mOuter(innermost) {
        wait.outer = mOuter;
        mInnermost = &wait;
    }
    ~WaitScope() { mInnermost = mOuter; }
    WaitScope(const WaitScope&) = delete;
    WaitScope& operator=(const WaitScope&) = delete;

private:
    Wait*& mInnermost;
    Wait* const mOuter;
};

DriverThread::~DriverThread() {
    if (!transport::isForkedChild()) {
        flush();
        mProcess.device->exitThread();
    }
}

DriverThread::Result DriverThread::transact(uint32_t handle, uint32_t code, const Parcel& data,
                                            Parcel* reply, uint32_t flags) {
    const ParcelImage image(data);
    if (image.status() != OK) {
        return {image.status(), false, false};
    }
    binder_transaction_data transaction = {};
    transaction.target.handle = handle;
    transaction.code = code;
    transaction.flags = flags & ~kOwnFlags;
    image.describe(&transaction);
    mCommands.addTransaction(BC_TRANSACTION, transaction);
    Wait wait = {(flags & TF_ONE_WAY) == 0, reply};
    await(wait);
    if (wait.failure == BR_FAILED_REPLY) {
        transport::logLimited("call %u with %zu bytes %s", code, data.dataSize(),
                              whyFailed(wait.isSent));
    }
    // A looper does so after the call that it serves: the implementation may hold locks here.
    if (mWaits == nullptr && !mIsLooper) {
        runDeferred();
    }
    flushIfUrgent();
    return {wait.status, wait.failure == BR_DEAD_REPLY, wait.isSent};
}

int DriverThread::exchange(ReturnBuffer* returns) {
    const int error = mProcess.device->exchange(mCommands, returns);
    if (error != 0) {
        transport::logLimited("the binder driver fails: %s", strerrordesc_np(error));
        mCommands.clear();  // transactions point to data that their senders free
    }
    if (mCommands.empty()) {
        mUrgent = false;
        // Moved out first: the destructor of a proxy writes again.
        const std::vector<sp<BpBinder>> written = std::move(mUnacquired);
        mUnacquired.clear();
    }
    return error;
}

void DriverThread::flush() {
    for (size_t before = 0; !mCommands.empty() && mCommands.size() != before;) {
        before = mCommands.size();
        (void)exchange(nullptr);  // logs its failure
    }
}

void DriverThread::flushIfUrgent() {
    if (mUrgent) {
        flush();
    }
}

void DriverThread::await(Wait& wait) {
    const WaitScope scope(mWaits, wait);
    while (!wait.isSettled) {
        ReturnBuffer returns;
        if (exchange(&returns) != 0) {
            wait.status = FAILED_TRANSACTION;
            wait.isSettled = true;
        }
        for (Return one; returns.next(&one);) {
            if (!settle(one)) {
                execute(one);
            }
        }
    }
}

// When the caller of a nested call dies, BR_DEAD_REPLY for the outer call may come in the same read
// as the answer to the nested reply.
bool DriverThread::settle(const Return& one) {
    Wait* unsettled = mWaits;
    while (unsettled != nullptr && unsettled->isSettled) {
        unsettled = unsettled->outer;
    }
    return unsettled != nullptr && settle(*unsettled, one);
}

bool DriverThread::settle(Wait& wait, const Return& one) {
    switch (one.command()) {
        case BR_TRANSACTION_COMPLETE:
        case BR_ONEWAY_SPAM_SUSPECT:
        case kTransactionPendingFrozen:
            wait.isSent = true;
            wait.isSettled = !wait.forReply;
            return true;
        case BR_REPLY:
            wait.status = takeReply(one.payload<binder_transaction_data>(), wait.reply);
            break;
        case BR_DEAD_REPLY:
        case BR_FAILED_REPLY:
        case BR_FROZEN_REPLY:
            wait.failure = one.command();
            wait.status = wait.failure == BR_DEAD_REPLY ? static_cast<status_t>(DEAD_OBJECT)
                                                        : static_cast<status_t>(FAILED_TRANSACTION);
            break;
        case BR_ERROR:
            wait.status = one.payload<int32_t>();
            break;
        default:
            return false;
    }
    wait.isSettled = true;
    return true;
}

status_t DriverThread::takeReply(const binder_transaction_data& transaction, Parcel* reply) {
    status_t status = OK;
    if ((transaction.flags & TF_STATUS_CODE) != 0) {
        status = statusIn(transaction);
    } else if (reply != nullptr) {
        status = receive(transaction, reply);
    }
    freeBuffer(transaction);
    return status;
}

}  // namespace android::kernel
