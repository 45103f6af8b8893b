// SPDX-License-Identifier: Apache-2.0
#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"

namespace {

using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

std::string given(const void* cookie, uint32_t flags) {
    return cookie == nullptr && flags == 0 ? "" : " with more";
}

/// Notes what is asked of the service's binder itself, and how far the join is by then.
class WatchedRemote : public support::RecordingRemote {
public:
    android::sp<TTS::Callback> oldCallback;     ///< that of the connection before
    const DeathRecipient* recipient = nullptr;  ///< as last linked or unlinked

    android::status_t linkToDeath(const android::sp<DeathRecipient>& who, void* cookie,
                                  uint32_t flags) override {
        recipient = who.get();
        support::note("link " + whose(recipient) + given(cookie, flags) + progress());
        return RecordingRemote::linkToDeath(who, cookie, flags);
    }

    android::status_t unlinkToDeath(const android::wp<DeathRecipient>& who, void* cookie,
                                    uint32_t flags, android::wp<DeathRecipient>* out) override {
        recipient = who.unsafe_get();
        support::note("unlink " + whose(recipient) + given(cookie, flags) +
                      (out == nullptr ? "" : " and out"));
        return RecordingRemote::unlinkToDeath(who, cookie, flags, out);
    }

    android::sp<android::IInterface> queryLocalInterface(
        const android::String16& descriptor) override {
        support::note("query" + progress());
        return RecordingRemote::queryLocalInterface(descriptor);
    }

private:
    static std::string whose(const DeathRecipient* who) {
        return who == TTS::gDeathNotifier.get() ? "gDeathNotifier" : "another";
    }

    std::string progress() const {
        const bool isOld = TTSClientPrivate::m_cb == oldCallback;
        return std::string(isOld ? ", old callback" : ", new callback") +
               (TTS::gttsbinder == nullptr ? ", not connected" : ", connected");
    }
};

class TheServicesBinder : public support::JoinedClientTest {
protected:
    /// The service as it comes back in another process.
    void restart() {
        watched->oldCallback = TTSClientPrivate::m_cb;
        manager->service = watched;
        TTS::gttsbinder.clear();
        client.getService();
    }

    const android::sp<WatchedRemote> watched = new WatchedRemote;
    support::ScriptedService reborn{watched};
};

TEST_F(TheServicesBinder, IsLinkedPlainlyThenTheCallbackIsMadeThenTheProxy) {
    restart();
    EXPECT_EQ(Lines({"find tavix.ITextToSpeechFestival",
                     "link gDeathNotifier, old callback, not connected",
                     "query, new callback, not connected", "ask registerCallback(pid, callback)",
                     "ask getCapabilities()"}),
              takeNotes());
}

TEST_F(TheServicesBinder, IsUnlinkedAsPlainlyByADyingNotifier) {
    restart();
    const auto* const notifier = TTS::gDeathNotifier.get();
    takeNotes();
    android::sp<TTS::DeathNotifier> last = TTS::gDeathNotifier;
    TTS::gDeathNotifier.clear();
    last.clear();
    EXPECT_EQ(Lines{"unlink another"}, takeNotes()) << "gDeathNotifier is empty by now";
    EXPECT_EQ(notifier, watched->recipient);
    EXPECT_EQ(0U, watched->links());
}

TEST_F(TheServicesBinder, IsAskedToUnlinkAnOldNotifierThatGoesAfterTheNextJoin) {
    android::sp<TTS::DeathNotifier> old = TTS::gDeathNotifier;
    const auto* const address = old.get();
    restart();
    takeNotes();
    old.clear();
    EXPECT_EQ(Lines{"unlink another"}, takeNotes());
    EXPECT_EQ(address, watched->recipient);
    EXPECT_EQ(1U, watched->links()) << "the new one stays linked";
    EXPECT_EQ(1U, service.binder->links()) << "and nobody asks the old binder";
}

}  // namespace
