// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_FUZZ_CLIENT_HOSTILESERVICE_H
#define VOXTREL_FUZZ_CLIENT_HOSTILESERVICE_H

#include <functional>
#include <vector>

#include "fuzz/Input.h"
#include "ipc/BinderHeaders.h"
#include "ipc/TransactionCodes.h"
#include "tests/support/RecordingRemote.h"

namespace voxtrel_fuzz {

/// One request, and the words of its reply as the client reads them: behind the end they are 0.
class Exchange {
public:
    Exchange(uint32_t code, const android::Parcel& reply);

    uint32_t code() const { return mCode; }
    int32_t word(size_t place) const { return place < mWords.size() ? mWords[place] : 0; }

private:
    uint32_t mCode;
    std::vector<int32_t> mWords;
};

/// A service that answers as the input says, with sense, with any bytes or not at all, and keeps
/// every callback that it was ever given. It can be started again; its earlier lives can end late.
class HostileService {
public:
    using Note = std::function<void(const Exchange&)>;

    /// @param note is called with each request that was answered, before the client goes on.
    HostileService(Input& input, Note note);
    ~HostileService();
    HostileService(const HostileService&) = delete;
    HostileService& operator=(const HostileService&) = delete;

    /// Where it is found now; null: nowhere.
    android::sp<android::IBinder> binder() const;
    void start();
    void vanish();
    /// One of its lives, which may have ended before, ends: who is linked is told, on this thread.
    void die();
    /// Lets go of all that it holds. Of its binders, nobody else may hold one any more.
    void end();

    /// The callbacks of all registrations, the last at the back.
    const std::vector<android::sp<android::IBinder>>& callbacks() const { return mCallbacks; }

private:
    android::status_t answer(const support::Transaction& sent, const android::Parcel& request,
                             android::Parcel& reply);
    void answerWithSense(uint32_t code, const android::Parcel& request, android::Parcel& reply);

    Input& mInput;
    const Note mNote;
    std::vector<android::sp<support::RecordingRemote>> mLives;
    bool mIsFound = false;
    bool mIsOfThisProcess = false;  ///< so that one-way requests have a reply as well
    std::vector<android::sp<android::IBinder>> mCallbacks;
};

}  // namespace voxtrel_fuzz

#endif
