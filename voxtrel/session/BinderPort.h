// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_BINDERPORT_H
#define VOXTREL_SESSION_BINDERPORT_H

#include <mutex>
#include <optional>
#include <vector>

#include "voxtrel/session/Port.h"

namespace voxtrel {

/// The service that is registered at this machine's service manager. Called on: any one thread.
class BinderPort : public Port {
public:
    using Users = std::vector<std::uint32_t>;

    /// @param trusted as `ClientOptions::trustedUsers`.
    explicit BinderPort(std::optional<Users> trusted) : mTrusted(std::move(trusted)) {}

    Found find(std::function<void()> died) override;
    Diagnosis look() const override;

    /// Whether clients that trust `trusted` talk to a service of this owner.
    /// @param tellsOwners the service manager knows the owners of its services.
    static bool isTrusted(const std::optional<Users>& trusted, const Peer& owner, bool tellsOwners);

private:
    const std::optional<Users> mTrusted;
    mutable std::mutex mMutex;
    mutable Peer mManager = {};  ///< as seen last
    // A copy: a thread that the runtime keeps may outlive static objects.
    const android::String16 mName = TTS::ITextToSpeechFestival::descriptor;
    android::sp<android::IBinder::DeathRecipient> mWatch;  // the runtime holds it weakly
};

}  // namespace voxtrel

#endif
