// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_CLIENTREGISTRY_H
#define VOXTREL_SERVICE_CLIENTREGISTRY_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ipc/ICallback.h"
#include "service/Broadcasts.h"
#include "service/EventOutbox.h"
#include "service/Listener.h"
#include "service/Locking.h"

namespace voxtreld {

/// The clients that registered a callback, by process id, and those that left, died or were refused
/// lately.
///
/// What is for every client is handed to their outboxes by a thread of the registry's, so that who
/// changes a setting does not wait until a thread has been woken for each of them.
///
/// Called on: any thread. Locks: its own, never while it calls out.
class ClientRegistry : public Listener {
public:
    /// Called on a binder thread after a client's callback died and was forgotten.
    using Died = std::function<void(uint32_t pid)>;

    /// @param ownUser the service's own user, whose clients others cannot keep out.
    /// @param maxClients maximum number of registered processes; bounds the service's threads and
    ///     memory. A user other than the service's own may have half of them.
    ClientRegistry(Died died, uint32_t ownUser, size_t maxClients = kMaxClients);
    ~ClientRegistry() override;
    ClientRegistry(const ClientRegistry&) = delete;
    ClientRegistry& operator=(const ClientRegistry&) = delete;

    /// Registered processes, unless another number is asked for.
    static constexpr size_t kMaxClients = 128;

    /// For each of them, the maximum number of threads that send events: its own, and those of
    /// earlier callbacks whose last call has not returned yet.
    static constexpr size_t kSendersPerClient = 2;

    /// Entries kept of clients that left, that died, and that were refused for lack of room, of
    /// each kind: twice as many as may be registered, and at least so many. Far more than can have
    /// requests in flight.
    static constexpr size_t kMinFormers = 256;

    /// How long these entries are kept. Requests are in flight for milliseconds.
    static constexpr std::chrono::seconds kLeftRemembered{10};

    using Time = std::chrono::steady_clock::time_point;

    /// Registers a client. It replaces an earlier callback of the same process, and gets the events
    /// that were not sent to that one yet.
    /// @return -3, with the client forgotten, if the callback is dead already; -12, with nothing
    ///     changed, if there are too many clients or threads; -12, with the client forgotten, if
    ///     its death cannot be watched.
    int add(uint32_t pid, uint32_t uid, const android::sp<TTS::ICallback>& callback);

    /// Removes a process that unregisters. @return false if it was not registered.
    bool remove(uint32_t pid, Time now = std::chrono::steady_clock::now());

    bool contains(uint32_t pid) const;

    /// True if the latest `add` of the process failed for lack of room, until it unregisters.
    bool isRefused(uint32_t pid) const;

    /// True while no process is registered.
    bool isEmpty() const;

    /// True if the process belongs to the user and is registered, or was until lately: its
    /// unregistration can overtake its one-way requests, which may still be in flight.
    bool isUser(uint32_t pid, uint32_t uid, Time now = std::chrono::steady_clock::now()) const;

    /// True for a process whose callback died and that did not register again. Its last requests
    /// may still be in flight.
    bool isDead(uint32_t pid) const;

    /// To one client; dropped if the process is not registered.
    void tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) override;

    /// To every client that is registered now, in the order of all calls of `tell` and `tellAll`.
    /// Returns before they are woken.
    void tellAll(TTS::Event event, uint32_t second, uint32_t third);

    /// Returns when all events posted before the call have been sent, or the time is up.
    void flush(std::chrono::milliseconds atMost);

private:
    class CallbackDeathRecipient;
    struct Client {
        uint32_t uid = 0;
        android::sp<TTS::ICallback> callback;
        android::sp<CallbackDeathRecipient> deathRecipient;
        std::shared_ptr<EventOutbox> outbox;
        uint64_t nextBroadcast = 0;
    };

    struct Former {
        uint32_t pid;
        uint32_t uid;
        Time gone;
    };
    using Formers = std::deque<Former>;  ///< a process once; the latest at the end

    bool hasRoomFor(uint32_t uid) const VOXTRELD_REQUIRES(mMutex);
    bool startOutbox(Client& client) const;
    int refuse(uint32_t pid, uint32_t uid) VOXTRELD_REQUIRES(mMutex);
    void broadcast();
    void broadcastTo(const std::vector<uint32_t>& pids);
    std::vector<uint32_t> registered() const VOXTRELD_REQUIRES(mMutex);
    void catchUp(Client& client) VOXTRELD_REQUIRES(mMutex);
    void died(uint32_t pid, const CallbackDeathRecipient* deathRecipient);
    void remember(Formers& formers, const Former& former) const;
    static void forget(Formers& formers, uint32_t pid);
    static bool isAmong(const Formers& formers, uint32_t pid);
    static void unlink(const Client& client);

    const Died mDied;
    const uint32_t mOwnUser;
    const size_t mMaxClients;
    const std::shared_ptr<std::atomic<size_t>> mSenders = std::make_shared<std::atomic<size_t>>(0);
    mutable Mutex mMutex;
    std::unordered_map<uint32_t, Client> mClients VOXTRELD_GUARDED_BY(mMutex);
    Formers mLeft VOXTRELD_GUARDED_BY(mMutex);
    Formers mDead VOXTRELD_GUARDED_BY(mMutex);
    Formers mRefused VOXTRELD_GUARDED_BY(mMutex);
    Broadcasts mBroadcasts VOXTRELD_GUARDED_BY(mMutex);
    bool mEnding VOXTRELD_GUARDED_BY(mMutex) = false;
    std::condition_variable mBroadcast;
    std::thread mBroadcaster;
};

}  // namespace voxtreld

#endif
