// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_CLIENTREGISTRY_H
#define VOXTREL_SERVICE_CLIENTREGISTRY_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>

#include "ipc/ICallback.h"
#include "service/EventOutbox.h"
#include "service/Listener.h"
#include "service/Locking.h"

namespace voxtreld {

/// The clients that registered a callback, by process id, and those that left, died or were refused
/// lately.
///
/// Called on: any thread. Locks: its own, never while it calls out.
class ClientRegistry : public Listener {
public:
    /// Called on a binder thread after a client's callback died and was forgotten.
    using Died = std::function<void(uint32_t pid)>;

    /// @param ownUser the service's own user, whose clients others cannot keep out.
    ClientRegistry(Died died, uint32_t ownUser);
    ~ClientRegistry() override;
    ClientRegistry(const ClientRegistry&) = delete;
    ClientRegistry& operator=(const ClientRegistry&) = delete;

    /// How many processes may be registered, so that nobody can use up our threads and memory.
    static constexpr size_t kMaxClients = 128;

    /// Of one user other than the service's own.
    static constexpr size_t kMaxOfOtherUser = kMaxClients / 2;

    /// Threads that send events: one a client, and those of earlier callbacks that have not
    /// returned from their last call yet.
    static constexpr size_t kMaxSenders = 2 * kMaxClients;

    /// Of the clients that left, of those that died, and of those for which there was no room, so
    /// many are remembered: far more than can have requests on their way.
    static constexpr size_t kMaxFormer = 256;

    /// For so long. A request waits for a thread of ours, which takes milliseconds.
    static constexpr std::chrono::seconds kLeftRemembered{10};

    using Time = std::chrono::steady_clock::time_point;

    /// Registers a client, in the place of an earlier callback of the same process, which what that
    /// was not sent yet is sent to.
    /// @return -3, with the client forgotten, if the callback is dead already; -12, with nothing
    ///     changed, if there are too many clients or threads.
    int add(uint32_t pid, uint32_t uid, const android::sp<TTS::ICallback>& callback);

    /// For a process that leaves. @return false if it had registered nothing.
    bool remove(uint32_t pid, Time now = std::chrono::steady_clock::now());

    bool contains(uint32_t pid) const;

    /// True for a process whose latest `add` found no room, until it leaves.
    bool isRefused(uint32_t pid) const;

    /// True while no process is registered.
    bool isEmpty() const;

    /// True if the process is registered, or left or died lately, and belongs to the user. Its
    /// leave can overtake its one-way requests, so those may still be on their way.
    bool isUser(uint32_t pid, uint32_t uid, Time now = std::chrono::steady_clock::now()) const;

    /// True for a process whose callback died and that did not register again. Its last requests
    /// may still be on their way.
    bool isDead(uint32_t pid) const;

    /// To one client; dropped if the process is not registered.
    void tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) override;

    /// To every client.
    void tellAll(TTS::Event event, uint32_t second, uint32_t third);

    /// Returns when every client has been sent what it was told before, or the time is up.
    void flush(std::chrono::milliseconds atMost);

private:
    class CallbackDeathRecipient;
    struct Client {
        uint32_t uid = 0;
        android::sp<TTS::ICallback> callback;
        android::sp<CallbackDeathRecipient> deathRecipient;
        std::shared_ptr<EventOutbox> outbox;
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
    void died(uint32_t pid, const CallbackDeathRecipient* deathRecipient);
    static void remember(Formers& formers, const Former& former);
    static void forget(Formers& formers, uint32_t pid);
    static bool isAmong(const Formers& formers, uint32_t pid);
    static void unlink(const Client& client);

    const Died mDied;
    const uint32_t mOwnUser;
    const std::shared_ptr<std::atomic<size_t>> mSenders = std::make_shared<std::atomic<size_t>>(0);
    mutable Mutex mMutex;
    std::unordered_map<uint32_t, Client> mClients VOXTRELD_GUARDED_BY(mMutex);
    Formers mLeft VOXTRELD_GUARDED_BY(mMutex);
    Formers mDead VOXTRELD_GUARDED_BY(mMutex);
    Formers mRefused VOXTRELD_GUARDED_BY(mMutex);
};

}  // namespace voxtreld

#endif
