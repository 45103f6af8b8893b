// SPDX-License-Identifier: Apache-2.0
// A language at its shortest, and one that claims to be longer than the reply that holds it.
#include <gtest/gtest.h>

#include <string>

#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

namespace {

using android::sp;

constexpr const char* kSixteenBytes =
    "61 62 63 64  65 66 67 68  69 6a 6b 6c  6d 6e 6f 70";  // "abcdefghijklmnop"

class ATooShortLanguageReply : public testing::Test {
protected:
    int ask(const std::string& reply) {
        remote->answerWith(support::fromHex(reply));
        return proxy->globalConfig(1, GCONF_LANGUAGE, out);
    }

    const sp<support::RecordingRemote> remote = new support::RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
    char out[17] = "----------------";
};

TEST_F(ATooShortLanguageReply, StoresThe16BytesThatItHoldsAndReadsNoStatus) {
    for (const char* claimed : {"14 00 00 00 ", "50 00 00 00 ", "ff ff ff 7f "}) {
        EXPECT_EQ(0, ask(claimed + std::string(kSixteenBytes))) << claimed;
        EXPECT_STREQ("abcdefghijklmnop", out);
    }
}

TEST_F(ATooShortLanguageReply, StoresNothingOfLess) {
    ask("14 00 00 00 61 62 63 64 65 66 67 68");
    EXPECT_STREQ("----------------", out);
}

TEST(AnEmptyLanguageRequest, ReachesTheService) {
    const sp<support::RecordingService> service = new support::RecordingService;
    android::Parcel request;
    support::fill(request, support::fromHex("01 00 00 00  0e 00 00 00  00 00 00 00"));
    android::Parcel reply;
    EXPECT_EQ(android::NO_ERROR, service->onTransact(12, request, &reply, 0));
    EXPECT_EQ(std::vector<std::string>{R"(setGlobalConfig(1, 14, ""))"}, service->calls());
    EXPECT_EQ("00 00 00 00\n", support::hex(support::bytesOf(reply)));
}

}  // namespace
