// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/ipc/TransactionCases.h"
#include "tests/support/Bytes.h"
#include "tests/support/GoldenDump.h"
#include "tests/support/RecordingRemote.h"

namespace {

using android::Parcel;
using android::sp;
using support::bytesOf;
using support::GoldenDump;
using support::hex;
using support::RecordingRemote;

GoldenDump dumpOf(const TransactionCase& each) {
    return support::readGoldenDump(std::string(VOXTREL_GOLDEN_DIR "/") + each.dump + ".txt");
}

sp<TTS::BpTextToSpeechFestival> proxyOn(const sp<android::IBinder>& remote) {
    return new TTS::BpTextToSpeechFestival(remote);
}

class EveryTransaction : public testing::TestWithParam<TransactionCase> {};

TEST_P(EveryTransaction, IsWrittenByTheProxyByteForByte) {
    const GoldenDump dump = dumpOf(GetParam());
    const sp<RecordingRemote> remote = new RecordingRemote;
    GetParam().ask(*proxyOn(remote));
    ASSERT_EQ(1U, remote->sent().size());
    support::Transaction sent = remote->sent().front();
    EXPECT_EQ(dump.code, sent.code);
    EXPECT_EQ(dump.flags, sent.flags);
    if (dump.requestEndsWithBinder) {
        ASSERT_GT(sent.request.size(), dump.request.size());
        sent.request.resize(dump.request.size());
    }
    EXPECT_EQ(hex(dump.request), hex(sent.request));
}

TEST_P(EveryTransaction, BringsItsReplyToTheCaller) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    remote->answerWith(dumpOf(GetParam()).reply);
    EXPECT_EQ(GetParam().answer, GetParam().ask(*proxyOn(remote)));
}

TEST_P(EveryTransaction, BringsZerosWhenNoReplyComes) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    EXPECT_EQ(GetParam().silent, GetParam().ask(*proxyOn(remote)));
}

TEST_P(EveryTransaction, BringsZerosWhenItFails) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    remote->failWith(android::DEAD_OBJECT);
    EXPECT_EQ(GetParam().silent, GetParam().ask(*proxyOn(remote)));
}

TEST_P(EveryTransaction, IsNotEvenTriedWithoutARemote) {
    EXPECT_EQ(GetParam().unasked, GetParam().ask(*proxyOn(nullptr)));
}

TEST_P(EveryTransaction, BecomesTheOneCallOfTheServiceAndItsReplyByteForByte) {
    const GoldenDump dump = dumpOf(GetParam());
    Parcel request;
    support::fill(request, dump.request);
    Parcel reply;
    const auto service = serviceOfTheDumps();
    const android::status_t status = service->onTransact(dump.code, request, &reply, dump.flags);
    if (dump.code >= 15 && dump.code <= 18) {  // asked by proxies, left to the binder base
        EXPECT_EQ(android::UNKNOWN_TRANSACTION, status);
        EXPECT_EQ("", hex(bytesOf(reply)));
        EXPECT_TRUE(service->calls().empty());
        return;
    }
    EXPECT_EQ(android::NO_ERROR, status);
    EXPECT_EQ(hex(dump.reply), hex(bytesOf(reply)));
    const bool isCalled = GetParam().call != nullptr;
    EXPECT_EQ(isCalled ? std::vector<std::string>{GetParam().call} : std::vector<std::string>{},
              service->calls());
}

INSTANTIATE_TEST_SUITE_P(Of, EveryTransaction, testing::ValuesIn(transactionCases()),
                         transactionCaseName);

TEST(EveryDump, IsTheDumpOfATransaction) {
    std::set<std::string> used;
    for (const TransactionCase& each : transactionCases()) {
        used.insert(each.dump);
    }
    std::set<std::string> present;
    for (const auto& file : std::filesystem::directory_iterator(VOXTREL_GOLDEN_DIR)) {
        present.insert(file.path().stem());
    }
    EXPECT_EQ(used, present);
}

}  // namespace
