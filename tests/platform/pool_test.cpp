// SPDX-License-Identifier: Apache-2.0
// The threads of a process that serves: how few there may be.
#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::OK;
using android::sp;
using voxtrel_test::ChildProcess;

using AThreadPool = probe::ProbeTest;

TEST_F(AThreadPool, ThatMayHaveNoThreadsHasOneOnceItIsStarted) {
    ChildProcess small = ChildProcess::asRole("server", {"small", "0"});
    ASSERT_EQ("ready", small.readLine());
    EXPECT_EQ(OK, probe::find("small")->pingBinder());
}

TEST_F(AThreadPool, OfOneThreadIsNeverLeftByAll) {
    ChildProcess small = ChildProcess::asRole("server", {"small", "1"});
    ASSERT_EQ("ready", small.readLine());
    const sp<android::IBinder> node = probe::find("small");
    const sp<android::IBinder> own = probe::makeNode();
    const int kCalls =
        voxtrel_test::repeats(8000);  // the pool was gone after as many, two times in three
    for (int i = 0; i < kCalls; ++i) {
        probe::Call call;
        call.data.writeStrongBinder(own);
        call.data.writeInt32(3);
        ASSERT_EQ(OK, call.to(node, probe::kCallBack));
    }
}

std::promise<void> gReleased;
const std::shared_future<void> gEnd = gReleased.get_future().share();

// An object whose end waits for a call.
class Stubborn : public android::BBinder {
protected:
    ~Stubborn() override { gEnd.wait(); }
};

class StubbornMaker : public android::BBinder {
public:
    enum : uint32_t { kMake = 1, kRelease };

protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& /*data*/,
                                 android::Parcel* reply, uint32_t /*flags*/) override {
        if (code == kMake) {
            return reply->writeStrongBinder(new Stubborn());
        }
        gReleased.set_value();
        return OK;
    }
};

const voxtrel_test::Role kStubborn("stubborn", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    android::defaultServiceManager()->addService(android::String16("stubborn"),
                                                 new StubbornMaker());
    (void)voxtrel_test::hear();
    return 0;
});

const voxtrel_test::Role kReleaser("releaser", [](const voxtrel_test::Arguments&) {
    voxtrel_test::tell(
        std::to_string(probe::Call().to(probe::find("stubborn"), StubbornMaker::kRelease)));
    return 0;
});

TEST_F(AThreadPool, ServesOnWhileTheEndsOfObjectsWait) {
    ChildProcess process = ChildProcess::asRole("stubborn");
    const sp<android::IBinder> maker = probe::find("stubborn");
    std::vector<sp<android::IBinder>> objects;
    for (int i = 0; i < 6; ++i) {
        probe::Call make;
        ASSERT_EQ(OK, make.to(maker, StubbornMaker::kMake));
        objects.push_back(make.reply.readStrongBinder());
    }
    objects.clear();
    // By then no thread of it stays on a socket of this process.
    ChildProcess releaser = ChildProcess::asRole("releaser");
    EXPECT_EQ("0", releaser.readLine()) << "nobody is left to serve the call that is waited for";
}

}  // namespace
