// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_SESSION_H
#define VOXTREL_TOOLS_SESSION_H

#include <atomic>
#include <memory>
#include <optional>

#include "client/MutexLock.h"
#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "tools/Errors.h"
#include "tools/EventQueue.h"
#include "tools/Terminal.h"

namespace voxtrelctl {

class ClientUse;

/// One connection to the service, from finding it to leaving it. While it lives, what the service
/// sends and its death arrive in EventQueue.
/// Called on: the main thread. Locks: none.
class Session {
public:
    /// Connects. Searches up to 15 s for the service, for which the client library waits up to 60 s
    /// to be ready; what is waited for is shown on `terminal` once it takes noticeably long.
    /// Throws Failure with -8 (not found), -5 (never ready) or -10 (not admitted, or a service
    /// whose owner is not trusted: that one is sent nothing that anybody says); Ctrl-C meanwhile
    /// ends the process with status 1, because the search cannot be called off.
    explicit Session(Terminal& terminal);

    /// Leaves the service, unless it died before.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// The client, for this statement or as long as the result is kept.
    ClientUse client();
    /// The service itself, past what the library checks before it sends.
    TTS::ITextToSpeechFestival& service() { return *mInterface; }
    const TTS::Capabilities& capabilities() const { return mClient->mCapabilities; }

    /// Throws Failure(-5) if the service does not answer any more. The library reads the answer of
    /// a service that died meanwhile as zeros, which are no data and no success.
    void confirm();

private:
    friend class ClientUse;

    void connect(Terminal& terminal);
    int connectToTrusted();
    void watchService();

    std::unique_ptr<TTS::TTSClientPrivate> mClient;
    android::sp<android::IBinder> mService;
    android::sp<TTS::ITextToSpeechFestival> mInterface;
    android::sp<android::IBinder::DeathRecipient> mObituary;
    std::optional<TTS::MutexLock> mHold;  ///< while there are uses
    size_t mUses = 0;
    std::atomic<bool> mIsRegistered{false};  ///< the search has found the service
    std::optional<Failure> mDoubt;           ///< of the search, once that has ended
};

/// The client with `Clientmutex` held; uses may nest. The library reads the shared connection
/// without the mutex, and the service's death empties that connection on another thread: this keeps
/// the two apart.
class ClientUse {
public:
    explicit ClientUse(Session& session);
    ~ClientUse();
    ClientUse(const ClientUse&) = delete;
    ClientUse& operator=(const ClientUse&) = delete;

    TTS::TTSClientPrivate* operator->() const { return mSession.mClient.get(); }
    TTS::TTSClientPrivate& operator*() const { return *mSession.mClient; }

private:
    Session& mSession;
};

}  // namespace voxtrelctl

#endif
