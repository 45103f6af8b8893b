// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_RECORDINGREMOTE_H
#define VOXTREL_TESTS_SUPPORT_RECORDINGREMOTE_H

#include <functional>
#include <mutex>
#include <vector>

#include "ipc/BinderHeaders.h"
#include "tests/support/Bytes.h"

namespace support {

/// One transaction as the other side would have received it.
struct Transaction {
    uint32_t code;
    uint32_t flags;
    Bytes request;
};

/// A binder of another process, played by the test: writes down every transaction and answers what
/// the test has set, nothing at first. One-way transactions are answered like the others, so leave
/// the answer empty to play the wire. Lives and dies as the test says.
///
/// A `BBinder`, since what `IBinder` alone leaves open differs between the platform's releases.
///
/// Called on: any thread. Locks: one of its own, never around an answer or a recipient.
class RecordingRemote : public android::BBinder {
public:
    using Answer = std::function<android::status_t(
        const Transaction& sent, const android::Parcel& request, android::Parcel& reply)>;

    /// Every transaction from now on is answered with these bytes and status 0.
    void answerWith(const Bytes& reply);

    /// Every transaction from now on gives this status and an empty reply.
    void failWith(android::status_t status);

    /// Every transaction from now on is answered by `answer`.
    void answerBy(Answer answer);

    /// `linkToDeath` gives this status from now on; a recipient is kept only on 0.
    void answerLinksWith(android::status_t status);

    /// Tells every linked recipient once, on this thread; the binder is dead from now on.
    void die();

    /// The transactions so far, oldest first.
    std::vector<Transaction> sent() const;

    /// Recipients linked and neither unlinked nor told.
    size_t links() const;

    const android::String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    android::status_t pingBinder() override;
    android::status_t linkToDeath(const android::sp<DeathRecipient>& recipient,
                                  void* cookie = nullptr, uint32_t flags = 0) override;
    android::status_t unlinkToDeath(const android::wp<DeathRecipient>& recipient,
                                    void* cookie = nullptr, uint32_t flags = 0,
                                    android::wp<DeathRecipient>* outRecipient = nullptr) override;

protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

private:
    mutable std::mutex mMutex;
    std::vector<Transaction> mSent;
    Answer mAnswer;
    std::vector<android::wp<DeathRecipient>> mRecipients;
    android::status_t mLinkStatus = android::NO_ERROR;
    bool mAlive = true;
};

}  // namespace support

#endif
