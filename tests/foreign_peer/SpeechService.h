// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_SPEECHSERVICE_H
#define VOXTREL_TESTS_FOREIGN_PEER_SPEECHSERVICE_H

#include <string>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// Of the speech service's protocol.
inline constexpr const char* kSpeechService = "tavix.ITextToSpeechFestival";
enum SpeechCode : uint32_t {
    kSay = 1,
    kEnabled = 13,
    kRegisterCallback = 23,
    kDeregisterCallback,
    kLock,
    kUnlock,
    kGetCapabilities = 28,
};

/// voxtreld without a sound.
class SpeechService {
public:
    void killNow() { mProcess.killNow(); }
    pid_t pid() const { return mProcess.pid(); }

    /// Its handle at a peer, once it has loaded its voices.
    static std::string awaitReady(ForeignPeer& peer) {
        const std::string handle = peer.await(kSpeechService);
        const std::string ask = "call " + handle + " 28 0 iffiffiiii";
        (void)eventually([&] {
            const std::string answer = peer.ask(ask);
            return answer.find(" i:1 +") != std::string::npos;
        });
        return handle;
    }

private:
    const TempFolder mFolder;
    ChildProcess mProcess{
        {VOXTREL_SERVICE, "--profile", mFolder.path("voxtrel.ini"), "--sink", "none"}, ""};
};

}  // namespace voxtrel_test

#endif
