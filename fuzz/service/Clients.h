// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_FUZZ_SERVICE_CLIENTS_H
#define VOXTREL_FUZZ_SERVICE_CLIENTS_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "ipc/BinderHeaders.h"
#include "vocabulary/Events.h"

namespace voxtrel_fuzz {

struct Notice {
    uint32_t event;
    uint32_t second;
    uint32_t third;

    bool operator==(const Notice& other) const {
        return event == other.event && second == other.second && third == other.third;
    }
};

/// What one client was told over all its callbacks, from its registration until it leaves. Called
/// on: any thread.
class Journal {
public:
    void add(const Notice& notice);
    std::vector<Notice> read() const;

private:
    mutable std::mutex mMutex;
    std::vector<Notice> mNotices;
};

/// A client's callback as the service sees it: of another process, which can die, and whose buffer
/// can be full. Called on: any thread.
class RemoteCallback : public android::BBinder {
public:
    explicit RemoteCallback(std::shared_ptr<Journal> journal);

    /// Tells who is linked, on this thread.
    void die();
    void refuseNext(unsigned calls);
    const std::shared_ptr<Journal>& journal() const { return mJournal; }

    /// Waits until the service holds none any more.
    static void waitUntilGone();

    android::status_t linkToDeath(const android::sp<DeathRecipient>& recipient, void* cookie,
                                  uint32_t flags) override;
    android::status_t unlinkToDeath(const android::wp<DeathRecipient>& recipient, void* cookie,
                                    uint32_t flags,
                                    android::wp<DeathRecipient>* outRecipient) override;

protected:
    ~RemoteCallback() override;
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

private:
    const std::shared_ptr<Journal> mJournal;
    std::mutex mMutex;
    std::vector<android::wp<DeathRecipient>> mRecipients;
    bool mIsDead = false;
    unsigned mRefusals = 0;
};

/// What must be true of the clients of a service and of what they are told, whatever they ask for.
/// Called on: one thread.
class Clients {
public:
    /// A registration that was accepted; the next callback of a client takes the place of the last.
    void joined(uint32_t pid, uint32_t uid, const android::sp<RemoteCallback>& callback);
    void left(uint32_t pid);
    /// Its callback died. Nothing: there is none, or the service has had another since.
    void died(uint32_t pid);

    bool contains(uint32_t pid) const { return mMembers.count(pid) != 0; }
    bool isOfUser(uint32_t pid, uint32_t uid) const;
    android::sp<RemoteCallback> callbackOf(uint32_t pid) const;
    /// The journal of the next callback of this client's.
    std::shared_ptr<Journal> journalFor(uint32_t pid, uint32_t uid) const;

    void accepted(uint32_t pid, uint32_t id);
    void refused(uint32_t pid, uint32_t id, int32_t status);
    /// The speech thread tells of an accepted utterance.
    void told(uint32_t pid, const Notice& notice);

    /// It is told that next, if it is a client.
    void expect(uint32_t pid, const Notice& notice);
    void expectAll(const Notice& notice);

    /// At the end of all speech, when all events were sent.
    void requireAllEnded() const;
    void requireAllToldOf() const;

private:
    struct Member {
        uint32_t uid;
        android::sp<RemoteCallback> callback;
        std::shared_ptr<Journal> journal;
        std::vector<Notice> expected;
    };
    struct Utterance {
        uint32_t id;
        bool isForgotten;  ///< its client has died since: nothing need be told of it
    };
    struct Speech {
        std::deque<Utterance> accepted;  ///< and not ended, in the order of acceptance
        bool isFirstStarted = false;
    };

    static void started(Speech& speech, uint32_t id);

    std::map<uint32_t, Member> mMembers;
    std::map<uint32_t, Speech> mSpeech;
};

}  // namespace voxtrel_fuzz

#endif
