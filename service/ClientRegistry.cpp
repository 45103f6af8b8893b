// SPDX-License-Identifier: Apache-2.0
#include "service/ClientRegistry.h"

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

#include "vocabulary/Status.h"

namespace voxtreld {
/// Watches one callback. The runtime may still hold it when the registry is destroyed, hence
/// `retire`.
class ClientRegistry::CallbackDeathRecipient : public android::IBinder::DeathRecipient {
public:
    CallbackDeathRecipient(ClientRegistry& registry, uint32_t pid)
        : mRegistry(&registry), mPid(pid) {}

    /// Without memory the service ends here, and another takes its place: a runtime that went on
    /// would leave the lock and the texts of the dead for good.
    void binderDied(const android::wp<android::IBinder>& /*who*/) noexcept override {
        const MutexLock lock(mMutex);
        if (mRegistry != nullptr) {
            mRegistry->died(mPid, this);
        }
    }

    void retire() {
        const MutexLock lock(mMutex);
        mRegistry = nullptr;
    }

private:
    Mutex mMutex;
    ClientRegistry* mRegistry VOXTRELD_GUARDED_BY(mMutex);
    const uint32_t mPid;
};

ClientRegistry::ClientRegistry(Died died, uint32_t ownUser, size_t maxClients)
    : mDied(std::move(died)), mOwnUser(ownUser), mMaxClients(maxClients) {
    mBroadcaster = std::thread([this] { broadcast(); });
}

ClientRegistry::~ClientRegistry() {
    std::unordered_map<uint32_t, Client> clients;
    {
        const MutexLock lock(mMutex);
        clients.swap(mClients);
        mEnding = true;
    }
    mBroadcast.notify_one();
    mBroadcaster.join();
    for (const auto& [pid, client] : clients) {
        client.deathRecipient->retire();
        unlink(client);
    }
}

void ClientRegistry::unlink(const Client& client) {
    // Refused when the binder is dead or local; there is nothing to unlink then.
    (void)android::IInterface::asBinder(client.callback)
        ->unlinkToDeath(client.deathRecipient, nullptr, 0, nullptr);
}

bool ClientRegistry::hasRoomFor(uint32_t uid) const {
    const auto isOfUser = [uid](const auto& entry) { return entry.second.uid == uid; };
    const auto held = std::count_if(mClients.begin(), mClients.end(), isOfUser);
    return mClients.size() < mMaxClients &&
           (uid == mOwnUser || static_cast<size_t>(held) < mMaxClients / 2);
}

/// An outbox for the client's callback, or the one that it has, redirected to it.
bool ClientRegistry::startOutbox(Client& client) const {
    const auto release = [senders = mSenders](const void*) { --*senders; };
    const bool isRoom = mSenders->fetch_add(1) < kSendersPerClient * mMaxClients;
    const std::shared_ptr<const void> sender(mSenders.get(), release);
    if (!isRoom) {
        return false;
    }
    try {
        if (client.outbox == nullptr) {
            client.outbox = std::make_shared<EventOutbox>(client.callback, sender);
        } else {
            client.outbox->redirect(client.callback, sender);
        }
        return true;
    } catch (const std::system_error&) {
        return false;  // no more threads can be started
    }
}

int ClientRegistry::add(uint32_t pid, uint32_t uid, const android::sp<TTS::ICallback>& callback) {
    Client client = {uid, callback, new CallbackDeathRecipient(*this, pid), nullptr, 0};
    Client replaced;
    {
        const MutexLock lock(mMutex);
        const auto found = mClients.find(pid);
        if (found == mClients.end() && !hasRoomFor(uid)) {
            return refuse(pid, uid);
        }
        client.nextBroadcast = mBroadcasts.end();
        if (found != mClients.end() && found->second.uid == uid) {
            client.outbox = found->second.outbox;
            client.nextBroadcast = found->second.nextBroadcast;
        }
        if (!startOutbox(client)) {
            return refuse(pid, uid);
        }
        replaced = std::exchange(mClients[pid], client);
        forget(mLeft, pid);
        forget(mDead, pid);
        forget(mRefused, pid);
    }
    if (replaced.callback != nullptr) {
        unlink(replaced);
    }
    // Linked after it is stored, so that a death in between is not missed. A local callback refuses
    // the link and cannot die before this process does.
    const android::status_t linked =
        android::IInterface::asBinder(callback)->linkToDeath(client.deathRecipient, nullptr, 0);
    if (linked == android::DEAD_OBJECT) {
        died(pid, client.deathRecipient.get());
        return TTS::STATUS_BAD_PARAMETER;
    }
    if (linked != android::OK && linked != android::INVALID_OPERATION) {
        (void)remove(pid);  // nobody would hear of its death
        const MutexLock lock(mMutex);
        return refuse(pid, uid);
    }
    return TTS::STATUS_OK;
}

int ClientRegistry::refuse(uint32_t pid, uint32_t uid) {
    forget(mRefused, pid);
    remember(mRefused, {pid, uid, std::chrono::steady_clock::now()});
    return TTS::STATUS_QUEUE_FULL;
}

bool ClientRegistry::remove(uint32_t pid, Time now) {
    Client removed;
    {
        const MutexLock lock(mMutex);
        forget(mRefused, pid);
        const auto found = mClients.find(pid);
        if (found == mClients.end()) {
            return false;
        }
        removed = std::move(found->second);
        mClients.erase(found);
        remember(mLeft, {pid, removed.uid, now});
    }
    unlink(removed);
    return true;
}

bool ClientRegistry::contains(uint32_t pid) const {
    const MutexLock lock(mMutex);
    return mClients.count(pid) != 0;
}

bool ClientRegistry::isEmpty() const {
    const MutexLock lock(mMutex);
    return mClients.empty();
}

bool ClientRegistry::isUser(uint32_t pid, uint32_t uid, Time now) const {
    const auto isMeant = [=](const Former& former) {
        return former.pid == pid && former.uid == uid;
    };
    const MutexLock lock(mMutex);
    const auto found = mClients.find(pid);
    if (found != mClients.end()) {
        return found->second.uid == uid;
    }
    const auto left = std::find_if(mLeft.begin(), mLeft.end(), isMeant);
    return (left != mLeft.end() && now - left->gone < kLeftRemembered) ||
           std::any_of(mDead.begin(), mDead.end(), isMeant);
}

bool ClientRegistry::isDead(uint32_t pid) const {
    const MutexLock lock(mMutex);
    return isAmong(mDead, pid);
}

bool ClientRegistry::isRefused(uint32_t pid) const {
    const MutexLock lock(mMutex);
    return isAmong(mRefused, pid);
}

void ClientRegistry::tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) {
    const MutexLock lock(mMutex);
    const auto found = mClients.find(pid);
    if (found != mClients.end()) {
        catchUp(found->second);
        (void)found->second.outbox->post(event, second, third);
    }
}

void ClientRegistry::tellAll(TTS::Event event, uint32_t second, uint32_t third) {
    {
        const MutexLock lock(mMutex);
        if (mBroadcasts.isFull()) {
            for (auto& [pid, client] : mClients) {
                catchUp(client);
            }
            mBroadcasts.forget(mBroadcasts.end());
        }
        mBroadcasts.add(event, second, third);
    }
    mBroadcast.notify_one();
}

void ClientRegistry::catchUp(Client& client) {
    mBroadcasts.post(*client.outbox, client.nextBroadcast);
}

std::vector<uint32_t> ClientRegistry::registered() const {
    std::vector<uint32_t> all;
    all.reserve(mClients.size());
    for (const auto& [pid, client] : mClients) {
        all.push_back(pid);
    }
    return all;
}

/// Gives the lock up between two clients, so that nobody waits for all of them to be woken.
void ClientRegistry::broadcastTo(const std::vector<uint32_t>& pids) {
    for (const uint32_t pid : pids) {
        const MutexLock lock(mMutex);
        const auto found = mClients.find(pid);
        if (found != mClients.end()) {
            catchUp(found->second);
        }
    }
}

/// Runs on the registry's thread until the registry ends.
void ClientRegistry::broadcast() {
    for (;;) {
        uint64_t end = 0;
        std::vector<uint32_t> behind;
        {
            MutexLock lock(mMutex);
            while (mBroadcasts.isEmpty() && !mEnding) {
                lock.wait(mBroadcast);
            }
            if (mEnding) {
                return;
            }
            end = mBroadcasts.end();
            behind = registered();
        }
        broadcastTo(behind);
        const MutexLock lock(mMutex);
        mBroadcasts.forget(end);
    }
}

void ClientRegistry::flush(std::chrono::milliseconds atMost) {
    const auto deadline = std::chrono::steady_clock::now() + atMost;
    std::vector<std::shared_ptr<EventOutbox>> outboxes;
    {
        const MutexLock lock(mMutex);
        for (auto& [pid, client] : mClients) {
            catchUp(client);
            outboxes.push_back(client.outbox);
        }
    }
    for (const auto& outbox : outboxes) {
        (void)outbox->flush(std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now()));
    }
}

void ClientRegistry::remember(Formers& formers, const Former& former) const {
    formers.push_back(former);
    if (formers.size() > std::max(kMinFormers, 2 * mMaxClients)) {
        formers.pop_front();
    }
}

void ClientRegistry::forget(Formers& formers, uint32_t pid) {
    formers.erase(std::remove_if(formers.begin(), formers.end(),
                                 [pid](const Former& former) { return former.pid == pid; }),
                  formers.end());
}

bool ClientRegistry::isAmong(const Formers& formers, uint32_t pid) {
    return std::any_of(formers.begin(), formers.end(),
                       [pid](const Former& former) { return former.pid == pid; });
}

void ClientRegistry::died(uint32_t pid, const CallbackDeathRecipient* deathRecipient) {
    Client removed;  // its proxy is released without the lock
    {
        const MutexLock lock(mMutex);
        const auto found = mClients.find(pid);
        if (found == mClients.end() || found->second.deathRecipient.get() != deathRecipient) {
            return;  // the process registered another callback meanwhile, or left
        }
        removed = std::move(found->second);
        mClients.erase(found);
        remember(mDead, {pid, removed.uid, std::chrono::steady_clock::now()});
    }
    mDied(pid);
}

}  // namespace voxtreld
