// SPDX-License-Identifier: Apache-2.0
// What exactly is asked of the service's binder when its death is to be told.
#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"

namespace {

using support::note;

/// Notes the arguments of each death link made to it or taken off it.
class NotingRemote : public support::RecordingRemote {
public:
    android::status_t linkToDeath(const android::sp<DeathRecipient>& recipient, void* cookie,
                                  uint32_t flags) override {
        note("link " + nameOf(recipient.get()) + arguments(cookie, flags));
        return RecordingRemote::linkToDeath(recipient, cookie, flags);
    }
    android::status_t unlinkToDeath(const android::wp<DeathRecipient>& recipient, void* cookie,
                                    uint32_t flags,
                                    android::wp<DeathRecipient>* outRecipient) override {
        note("unlink" + arguments(cookie, flags) +
             (outRecipient == nullptr ? "" : " and asks back"));
        return RecordingRemote::unlinkToDeath(recipient, cookie, flags, outRecipient);
    }

private:
    static std::string nameOf(const DeathRecipient* recipient) {
        return recipient == TTS::gDeathNotifier.get() ? "gDeathNotifier" : "another";
    }
    static std::string arguments(const void* cookie, uint32_t flags) {
        return std::string(cookie == nullptr ? "" : " with a cookie") +
               (flags == 0 ? "" : " with flags");
    }
};

class TheLinkToTheService : public support::ClientTest {
protected:
    void SetUp() override { manager->service = new NotingRemote; }

    static support::Lines links() {
        support::Lines lines;
        for (const std::string& line : support::takeNotes()) {
            if (line.find("DeathNotifier") != std::string::npos || line.find("unlink") == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }
};

TEST_F(TheLinkToTheService, HasNeitherCookieNorFlags) {
    client.getService();
    EXPECT_EQ(support::Lines{"link gDeathNotifier"}, links());
}

TEST_F(TheLinkToTheService, IsTakenOffAsItWasMadeWhenItsNotifierGoes) {
    client.getService();
    links();
    TTS::gDeathNotifier.clear();
    EXPECT_EQ(support::Lines{"unlink"}, links());
}

}  // namespace
