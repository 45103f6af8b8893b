// SPDX-License-Identifier: Apache-2.0
#include <binder/BpBinder.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <future>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using ACallAcrossProcesses = probe::ProbeTest;

TEST_F(ACallAcrossProcesses, CarriesItsValuesThereAndBack) {
    Call call;
    call.data.writeInt32(40);
    call.data.writeInt32(2);
    EXPECT_EQ(OK, call.to(mNode, probe::kAdd));
    EXPECT_EQ(42, call.reply.readInt32());
    EXPECT_EQ(4U, call.reply.dataSize());
}

TEST_F(ACallAcrossProcesses, NamesItsCallerByTheKernelsWord) {
    Call call;
    ASSERT_EQ(OK, call.to(mNode, probe::kWho));
    EXPECT_EQ(getpid(), call.reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(getuid()), call.reply.readInt32());
    EXPECT_EQ(mServer.pid(), call.reply.readInt32());
}

TEST_F(ACallAcrossProcesses, GivesTheStatusOfAFailureAndAnEmptyReply) {
    Call call;
    EXPECT_EQ(-42, call.to(mNode, probe::kFail));
    EXPECT_EQ(0U, call.reply.dataSize());
    EXPECT_EQ(android::UNKNOWN_TRANSACTION, call.to(mNode, 9999));
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_EQ(OK, mNode->transact(probe::kAdd, call.data, nullptr));
}

TEST_F(ACallAcrossProcesses, SurvivesAnExceptionInTheService) {
    Call call;
    EXPECT_EQ(android::UNKNOWN_ERROR, call.to(mNode, probe::kThrow));
    EXPECT_EQ(android::UNKNOWN_ERROR, call.to(mNode, probe::kThrowNumber));
    EXPECT_EQ(android::NO_MEMORY, call.to(mNode, probe::kRunOut));
    EXPECT_EQ(OK, mNode->pingBinder());
}

TEST_F(ACallAcrossProcesses, IsCarriedOutOnceWhateverStatusItEndsWith) {
    for (const android::status_t status : {android::WOULD_BLOCK, android::FAILED_TRANSACTION,
                                           android::DEAD_OBJECT, android::TIMED_OUT}) {
        Call call;
        call.data.writeInt32(status);
        const int32_t before = probe::ask(mNode, probe::kAnswered);
        EXPECT_EQ(status, call.to(mNode, probe::kAnswer));
        EXPECT_EQ(before + 1, probe::ask(mNode, probe::kAnswered)) << status;
    }
}

TEST_F(ACallAcrossProcesses, IsNotMadeWithAParcelThatFailed) {
    Call call;
    call.data.setError(android::NO_MEMORY);
    EXPECT_EQ(android::NO_MEMORY, call.to(mNode, probe::kAdd));
}

TEST_F(ACallAcrossProcesses, IsNotNeededToTellAProxyFromALocalObject) {
    EXPECT_EQ(0U, mNode->getInterfaceDescriptor().size());
    EXPECT_TRUE(mNode->remoteBinder() != nullptr);
    EXPECT_TRUE(mNode->localBinder() == nullptr);
}

// Bytes, not words: padding of the last ones must not leak into the size.
std::string echoed(const sp<IBinder>& node, const std::string& text) {
    Call call;
    call.data.write(text.data(), text.size());
    if (call.to(node, probe::kEcho) != OK) {
        return "failed";
    }
    const void* bytes = call.reply.readInplace(text.size());
    return bytes != nullptr ? std::string(static_cast<const char*>(bytes), text.size()) : "short";
}

TEST_F(ACallAcrossProcesses, CarriesEverySizeWhole) {
    for (const size_t size : {0U, 4U, 1084U, 1088U, 1092U, 65500U, 65504U, 65508U, 300000U}) {
        std::string text(size, 'x');
        for (size_t i = 0; i < size; ++i) {
            text[i] = static_cast<char>('a' + i % 23);
        }
        EXPECT_EQ(text, echoed(mNode, text)) << size;
    }
}

android::status_t sizedCall(const sp<IBinder>& node, size_t size, uint32_t code, uint32_t flags) {
    Call call;
    call.data.writeInplace(size);
    return call.to(node, code, flags);
}

TEST_F(ACallAcrossProcesses, MayBeAsLargeAsTheDriverAllowsAndNoLarger) {
    EXPECT_EQ(OK, sizedCall(mNode, 1040384, probe::kAdd, 0));
    EXPECT_EQ(android::FAILED_TRANSACTION, sizedCall(mNode, 1040392, probe::kAdd, 0));
    EXPECT_EQ(OK, sizedCall(mNode, 520192, probe::kAdd, IBinder::FLAG_ONEWAY));
    EXPECT_EQ(android::FAILED_TRANSACTION,
              sizedCall(mNode, 520200, probe::kAdd, IBinder::FLAG_ONEWAY));
    EXPECT_EQ("still here", echoed(mNode, "still here"));
}

TEST_F(ACallAcrossProcesses, HasAReplyWithinTheSameLimit) {
    Call fits;
    fits.data.writeInt32(1040384);
    EXPECT_EQ(OK, fits.to(mNode, probe::kBig));
    EXPECT_EQ(1040384U, fits.reply.dataSize());
    Call tooLarge;
    tooLarge.data.writeInt32(1040392);
    EXPECT_EQ(android::FAILED_TRANSACTION, tooLarge.to(mNode, probe::kBig));
    EXPECT_EQ(0U, tooLarge.reply.dataSize());
}

TEST_F(ACallAcrossProcesses, CarriesABinderInALargeParcel) {
    const sp<IBinder> binder = new android::BBinder();
    Call call;
    call.data.writeStrongBinder(binder);
    call.data.writeInplace(500000);
    EXPECT_EQ(OK, call.to(mNode, probe::kKeep));
    Call back;
    EXPECT_EQ(OK, back.to(mNode, probe::kGive));
    EXPECT_TRUE(back.reply.readStrongBinder() == binder);
}

TEST_F(ACallAcrossProcesses, RunsWhileOthersWait) {
    constexpr int kWaiters = 12;
    std::vector<std::future<android::status_t>> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.push_back(std::async(std::launch::async, [this] {
            Call call;
            return call.to(mNode, probe::kBlock);
        }));
    }
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == kWaiters; }));
    EXPECT_EQ("meanwhile", echoed(mNode, "meanwhile"));
    probe::ask(mNode, probe::kUnblock);
    for (auto& waiter : waiters) {
        EXPECT_EQ(OK, waiter.get());
    }
}

TEST_F(ACallAcrossProcesses, IsNotHeldUpByASlowOneWayCallOfTheSameCaller) {
    Call slow;
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(OK, slow.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    }
    // One after the other is let go; what lets them go is never stuck behind them.
    EXPECT_TRUE(eventually([this] {
        probe::ask(mNode, probe::kUnblock);
        return probe::ask(mNode, probe::kBlockedEver) == 40;
    }));
}

TEST_F(ACallAcrossProcesses, MayBeMadeByManyThreadsOfOneProxy) {
    std::vector<std::future<int>> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.push_back(std::async(std::launch::async, [this, thread] {
            int wrong = 0;
            for (int i = 0; i < voxtrel_test::repeats(500); ++i) {
                const std::string text = std::to_string(thread) + ":" + std::to_string(i);
                wrong += echoed(mNode, text) == text ? 0 : 1;
            }
            return wrong;
        }));
    }
    for (auto& thread : threads) {
        EXPECT_EQ(0, thread.get());
    }
}

TEST_F(ACallAcrossProcesses, NestsBothWaysDeeperThanThePoolIsLarge) {
    Call call;
    call.data.writeStrongBinder(probe::makeNode());
    call.data.writeInt32(60);
    ASSERT_EQ(OK, call.to(mNode, probe::kCallBack));
    EXPECT_EQ(60, call.reply.readInt32());
}

TEST_F(ACallAcrossProcesses, ReachesANodeThatASecondProcessHasPassedOn) {
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    ASSERT_EQ("ready", other.readLine());
    const sp<IBinder> middle = probe::find("other");
    Call keep;
    keep.data.writeStrongBinder(mNode);
    ASSERT_EQ(OK, keep.to(middle, probe::kKeep));
    Call back;
    ASSERT_EQ(OK, back.to(middle, probe::kGive));
    EXPECT_TRUE(back.reply.readStrongBinder() == mNode);
}

// A process that makes calls as soon as it is told to, from eight threads; each call comes back.
const voxtrel_test::Role kNester("nester", [](const voxtrel_test::Arguments& arguments) {
    probe::startPool();
    const sp<IBinder> node = probe::find();
    const int calls = std::stoi(arguments[0]);
    std::vector<std::future<int>> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.push_back(std::async(std::launch::async, [&node, calls] {
            const sp<IBinder> own = probe::makeNode();
            int right = 0;
            for (int i = 0; i < calls; ++i) {
                Call call;
                call.data.writeStrongBinder(own);
                call.data.writeInt32(3);
                right += call.to(node, probe::kCallBack) == OK && call.reply.readInt32() == 3;
            }
            return right;
        }));
    }
    int right = 0;
    for (auto& thread : threads) {
        right += thread.get();
    }
    voxtrel_test::tell(std::to_string(right));
    return 0;
});

TEST_F(ACallAcrossProcesses, NestsInEightProcessesOfEightThreadsAtOnce) {
    const int kCalls = voxtrel_test::repeats(50);
    std::vector<ChildProcess> processes;
    for (int i = 0; i < 8; ++i) {
        processes.push_back(ChildProcess::asRole("nester", {std::to_string(kCalls)}));
    }
    for (ChildProcess& process : processes) {
        EXPECT_EQ(std::to_string(8 * kCalls), process.readLine());
        EXPECT_EQ(0, process.wait());
    }
}

}  // namespace
