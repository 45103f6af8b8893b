// SPDX-License-Identifier: Apache-2.0
#include <condition_variable>
#include <mutex>
#include <thread>

#include "check/Peer.h"
#include "check/PeerNode.h"
#include "check/Row.h"

namespace check {
namespace {

using android::Parcel;
using android::sp;
using android::status_t;
using android::wp;

class Recipient : public android::IBinder::DeathRecipient {
public:
    void binderDied(const wp<android::IBinder>& /*who*/) override {
        const std::lock_guard<std::mutex> held(mLock);
        ++mTimes;
        mThread = std::this_thread::get_id();
        mChanged.notify_all();
    }

    /// Waits for the first notice. @return how many have come
    int waitForDeath() {
        std::unique_lock<std::mutex> held(mLock);
        mChanged.wait_for(held, kSoon, [&] { return mTimes > 0; });
        return mTimes;
    }
    /// Waits a moment for one too many. @return how many have come
    int waitForSecondNotice() {
        std::unique_lock<std::mutex> held(mLock);
        mChanged.wait_for(held, std::chrono::milliseconds(200), [&] { return mTimes > 1; });
        return mTimes;
    }
    bool wasToldHere() const { return mThread == std::this_thread::get_id(); }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    int mTimes = 0;
    std::thread::id mThread;
};

sp<android::IBinder> makeThere(const sp<android::IBinder>& node) {
    const Parcel request;
    Parcel reply;
    return node->transact(kMake, request, &reply, 0) == android::OK ? reply.readStrongBinder()
                                                                    : nullptr;
}

/// Whether a link alone keeps its recipient.
bool isHeldByLink(const sp<android::IBinder>& node) {
    sp<Recipient> recipient = new Recipient();
    const wp<Recipient> watched = recipient;
    (void)node->linkToDeath(recipient, nullptr, 0);
    recipient.clear();
    return watched.promote() != nullptr;
}

Result deathLinks() {
    android::ProcessState::self()->startThreadPool();
    Peer peer;
    const sp<android::IBinder> other = makeThere(peer.node());
    const bool isHeld = isHeldByLink(peer.node());
    const sp<Recipient> first = new Recipient();
    const sp<Recipient> late = new Recipient();
    const status_t linked = peer.node()->linkToDeath(first, nullptr, 0);
    peer.kill();
    const int times = first->waitForDeath() > 0 ? first->waitForSecondNotice() : 0;
    const status_t relinked = other != nullptr ? other->linkToDeath(late, nullptr, 0) : -1;
    const int lateTimes = relinked == android::OK ? late->waitForDeath() : 0;
    return require(
        linked == android::OK && times == 1 && !first->wasToldHere() && !isHeld && lateTimes == 1,
        "told " + std::to_string(times) + " times; " + std::to_string(lateTimes) +
            " times of a death before the link" +
            (isHeld ? "; the recipient is held" : "; held weakly"));
}

Result linksAfterDeath() {
    android::ProcessState::self()->startThreadPool();
    Peer peer;
    const sp<Recipient> first = new Recipient();
    (void)peer.node()->linkToDeath(first, nullptr, 0);
    peer.kill();
    if (first->waitForDeath() == 0) {
        return prefer(false, "no death was told");
    }
    const status_t status = peer.node()->linkToDeath(new Recipient(), nullptr, 0);
    return prefer(status == android::DEAD_OBJECT, "status " + std::to_string(status));
}

Result linksToOwnObjects() {
    const sp<android::IBinder> own = new android::BBinder();
    const sp<Recipient> recipient = new Recipient();
    const status_t linked = own->linkToDeath(recipient, nullptr, 0);
    const status_t unlinked = own->unlinkToDeath(recipient, nullptr, 0, nullptr);
    return prefer(linked == android::INVALID_OPERATION && unlinked == android::INVALID_OPERATION,
                  "status " + std::to_string(linked) + " and " + std::to_string(unlinked));
}

Result pingAfterDeath() {
    Peer peer;
    if (peer.node()->pingBinder() != android::OK) {
        return require(false, "one that lives does not answer");
    }
    peer.kill();
    Parcel request;
    (void)peer.node()->transact(kNotes, request, nullptr, 0);
    const status_t status = peer.node()->pingBinder();
    return require(status == android::DEAD_OBJECT, "status " + std::to_string(status));
}

Result lettingGo() {
    const Peer peer;
    sp<android::IBinder> made = makeThere(peer.node());
    // On another thread, since a call of this one would flush as well.
    int32_t isGone = 0;
    std::thread asking([&] {
        const Parcel request;
        Parcel reply;
        (void)peer.node()->transact(kAwaitGone, request, &reply, 0);
        isGone = reply.readInt32();
    });
    made.clear();
    android::IPCThreadState::self()->flushCommands();
    asking.join();
    return prefer(isGone == 1, isGone == 1 ? "the other process let go as well"
                                           : "the other process kept it for 2 s");
}

}  // namespace

Rows deathRows() {
    return {
        {"death-links",
         "the recipient is held weakly and told once, on a thread of the runtime; at once when the "
         "node has died already",
         "gttsbinder is not emptied; operations go on returning 0 without effect", deathLinks},
        {"links-after-death", "DEAD_OBJECT", "nothing: the result is ignored", linksAfterDeath},
        {"links-to-own-objects", "INVALID_OPERATION, and nothing else",
         "nothing: the result is ignored", linksToOwnObjects},
        {"ping-after-death", "DEAD_OBJECT when the service has died meanwhile",
         "a request that died with the service may be told as done, with values of zero",
         pingAfterDeath},
        {"letting-go", "what was let go has left the process on return",
         "the service learns of disconnect a little later", lettingGo},
    };
}

}  // namespace check
