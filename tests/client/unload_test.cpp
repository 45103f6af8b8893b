// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>

#include "tests/client/ClientTest.h"

namespace {

/// Says aloud what a dying process does with it.
class LoudRemote : public support::RecordingRemote {
public:
    android::status_t unlinkToDeath(const android::wp<DeathRecipient>& recipient, void* cookie,
                                    uint32_t flags,
                                    android::wp<DeathRecipient>* outRecipient) override {
        const android::status_t status =
            RecordingRemote::unlinkToDeath(recipient, cookie, flags, outRecipient);
        (void)std::fprintf(stderr, "unlinked with %d;", status);
        return status;
    }
    ~LoudRemote() override { (void)std::fprintf(stderr, "released;"); }
};

class TheEndOfTheProcess : public support::ConnectionTest {
protected:
    /// Leaves the process in the middle of a connection.
    void leaveConnected() {
        android::sp<LoudRemote> remote = new LoudRemote;
        manager->service = remote;
        static auto* const client = new TTS::TTSClientPrivate("app", nullptr);
        client->getService();
        manager->service.clear();
        remote.clear();
        std::exit(0);
    }
};

TEST_F(TheEndOfTheProcess, UnlinksTheDeathNotifierBeforeTheProxyGoes) {
    EXPECT_EXIT(leaveConnected(), testing::ExitedWithCode(0), "unlinked with 0;released;");
}

}  // namespace
