// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DRIVERTHREAD_H
#define VOXTREL_KERNEL_DRIVERTHREAD_H

#include <vector>

#include "binder/Parcel.h"
#include "kernel/CommandBuffer.h"
#include "kernel/Process.h"

namespace android::kernel {

/// One thread's exchange with the driver, the counterpart of its binder_thread: queued commands,
/// outgoing calls, and the calls that it serves, also nested ones while it waits for a reply.
///
/// Called on: its thread. Locks: none.
class DriverThread {
public:
    explicit DriverThread(Process& process) : mProcess(process) {}
    /// The driver forgets the thread; a call that it was serving fails.
    ~DriverThread();
    DriverThread(const DriverThread&) = delete;
    DriverThread& operator=(const DriverThread&) = delete;

    struct Result {
        status_t status;  ///< as `transport::Reference::call` gives it
        bool isDead;      ///< BR_DEAD_REPLY
        bool wasSent;     ///< BR_TRANSACTION_COMPLETE came first
    };
    Result transact(uint32_t handle, uint32_t code, const Parcel& data, Parcel* reply,
                    uint32_t flags);

    /// Serves calls and deaths; `enter` is BC_ENTER_LOOPER or BC_REGISTER_LOOPER. Returns only when
    /// BINDER_WRITE_READ fails, as the log says: the driver then serves this process no longer.
    void serveForever(uint32_t enter);

    /// The proxy of a handle. A new one's counts are acquired by the next write.
    sp<BpBinder> proxyOf(uint32_t handle);
    /// Writes what is queued.
    void flush();

private:
    /// A transaction of this thread that the driver has not answered yet. Serving a nested call
    /// adds inner ones.
    struct Wait {
        const bool forReply;
        Parcel* const reply;
        Wait* outer = nullptr;
        bool isSent = false;     ///< BR_TRANSACTION_COMPLETE
        bool isSettled = false;  ///< nothing is left to wait for
        uint32_t failure = 0;    ///< BR_DEAD_REPLY, BR_FAILED_REPLY, BR_FROZEN_REPLY
        status_t status = OK;
    };
    class WaitScope;
    class ReceivedBuffer;
    struct Deferred {
        uint32_t command;
        binder_ptr_cookie node;  ///< of BR_DEAD_BINDER: the cookie alone
    };

    int exchange(ReturnBuffer* returns);
    void await(Wait& wait);
    bool settle(const Return& one);
    bool settle(Wait& wait, const Return& one);
    status_t takeReply(const binder_transaction_data& transaction, Parcel* reply);

    void execute(const Return& one);
    void acquireNode(const Return& one);
    void defer(const Return& one);
    void runDeferred();
    void run(const Deferred& one);
    void reportDeath(binder_uintptr_t cookie);

    sp<BBinder> targetOf(const binder_transaction_data& transaction) const;
    static status_t callTarget(const sp<BBinder>& node, const binder_transaction_data& transaction,
                               Parcel& data, Parcel* reply);
    void serve(const binder_transaction_data& transaction);
    void sendReply(status_t status, const Parcel& reply);

    status_t receive(const binder_transaction_data& transaction, Parcel* parcel);
    void freeBuffer(const binder_transaction_data& transaction);
    void flushIfUrgent();

    Process& mProcess;
    CommandBuffer mCommands;
    Wait* mWaits = nullptr;  // the innermost
    // Others wait for what is in mCommands: it is written without waiting for the next call.
    bool mUrgent = false;
    // New proxies whose BC_ACQUIRE has not been written: BC_RELEASE must not come first.
    std::vector<sp<BpBinder>> mUnacquired;
    // Releases and death notices, whose destructors and recipients may make calls: the driver
    // refuses these while the thread waits for a reply.
    std::vector<Deferred> mDeferred;
    bool mIsLooper = false;
};

}  // namespace android::kernel

#endif
