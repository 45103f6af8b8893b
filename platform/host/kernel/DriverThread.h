// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_DRIVERTHREAD_H
#define VOXTREL_KERNEL_DRIVERTHREAD_H

#include <vector>

#include "binder/Parcel.h"
#include "kernel/CommandBuffer.h"
#include "kernel/Process.h"

namespace android::kernel {

/// What one thread has with the driver (which calls it binder_thread): its commands, its calls, and
/// the calls that it serves, also while it waits for a reply.
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
        bool isDead;      ///< by the driver's word
        bool wasSent;     ///< the node lived when the call was sent
    };
    Result transact(uint32_t handle, uint32_t code, const Parcel& data, Parcel* reply,
                    uint32_t flags);

    /// Serves calls and deaths; `enter` is BC_ENTER_LOOPER or BC_REGISTER_LOOPER. Returns only when
    /// BINDER_WRITE_READ fails, as the log says: the driver then serves this process no longer.
    void serveForever(uint32_t enter);

    /// The proxy of a handle, which this process holds from the next `flush` on at the latest.
    sp<BpBinder> proxyOf(uint32_t handle);
    /// Writes what has been put off.
    void flush();

private:
    /// A transaction of this thread's that the driver has not settled yet. A call that is served
    /// meanwhile has others within it.
    struct Wait {
        const bool forReply;
        Parcel* const reply;
        Wait* outer = nullptr;
        bool isSent = false;     ///< it has reached the receiver
        bool isSettled = false;  ///< there is nothing left to wait for
        uint32_t failure = 0;    ///< the driver's own: BR_DEAD_REPLY, ...
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
    void hold(const Return& one);
    void defer(const Return& one);
    void runDeferred();
    void carryOut(const Deferred& one);
    void reportDeath(binder_uintptr_t cookie);

    sp<BBinder> targetOf(const binder_transaction_data& transaction) const;
    static status_t callTarget(sp<BBinder> node, const binder_transaction_data& transaction,
                               Parcel& data, Parcel* reply);
    void serve(const binder_transaction_data& transaction);
    void sendReply(status_t status, const Parcel& reply);

    status_t receive(const binder_transaction_data& transaction, Parcel* parcel);
    void freeBuffer(const binder_transaction_data& transaction);
    void flushIfUrgent();

    Process& mProcess;
    CommandBuffer mCommands;
    Wait* mWaits = nullptr;  // the innermost first
    // Somebody else waits for what is in mCommands: it does not wait for this thread's next call.
    bool mUrgent = false;
    // New proxies whose handles the driver has not been told of: they are not released before.
    std::vector<sp<BpBinder>> mUnwritten;
    // What runs others' code, which may call: the driver refuses that while this thread waits for a
    // reply.
    std::vector<Deferred> mDeferred;
    bool mIsLooper = false;
};

}  // namespace android::kernel

#endif
