// SPDX-License-Identifier: Apache-2.0
// A process that may open nothing more: what needs a descriptor fails, all else goes on, and once
// there is room again everything works.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::FAILED_TRANSACTION;
using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;

// While it lives this process can open nothing.
class NoMoreDescriptors {
public:
    NoMoreDescriptors() {
        getrlimit(RLIMIT_NOFILE, &mUsual);
        const int lowest = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
        close(lowest);
        rlimit none = mUsual;
        none.rlim_cur = static_cast<rlim_t>(lowest);
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &mUsual); }
    NoMoreDescriptors(const NoMoreDescriptors&) = delete;
    NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

private:
    rlimit mUsual = {};
};

class AProcessOutOfDescriptors : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        EXPECT_TRUE(othersGoOn());
        showClassesToTheSanitizer();
    }

    // It opens a pipe when it meets a class for the first time, be it on the class's way out.
    void showClassesToTheSanitizer() {
        const int before = probe::descriptors();
        sp<IBinder> node = probe::makeNode();
        Call keep;
        keep.data.writeStrongBinder(node);
        ASSERT_EQ(OK, keep.to(mNode, probe::kKeep));
        keep.data.freeData();
        node.clear();
        Call letGo;
        ASSERT_EQ(OK, letGo.to(mNode, probe::kLetGo));
        EXPECT_TRUE(voxtrel_test::eventually([&] { return probe::descriptors() <= before; }));
    }

    bool othersGoOn() {
        Call add;
        add.data.writeInt32(40);
        add.data.writeInt32(2);
        return probe::note(mNode, 1, mNotes++) == OK && add.to(mNode, probe::kAdd) == OK &&
               add.reply.readInt32() == 42;
    }

    // Works before and after. What is sent before may make the next two-way call open a socket.
    void failsMeanwhile(const std::function<status_t()>& attempt) {
        constexpr int kAttempts = 20;
        EXPECT_EQ(OK, attempt());
        EXPECT_TRUE(othersGoOn());
        int failed = 0;
        int others = 0;
        {
            const NoMoreDescriptors none;
            for (int i = 0; i < kAttempts; ++i) {
                failed += attempt() == FAILED_TRANSACTION ? 1 : 0;
                others += othersGoOn() ? 1 : 0;
            }
        }
        EXPECT_EQ(kAttempts, failed);
        EXPECT_EQ(kAttempts, others);
        EXPECT_EQ(OK, attempt());
        EXPECT_TRUE(othersGoOn());
    }

    int32_t mNotes = 0;
};

TEST_F(AProcessOutOfDescriptors, CannotSendABinder) {
    failsMeanwhile([this] {
        Call call;
        call.data.writeStrongBinder(probe::makeNode());
        return call.to(mNode, probe::kKeep);
    });
}

TEST_F(AProcessOutOfDescriptors, CannotPassOnAReference) {
    failsMeanwhile([this] {
        Call call;
        call.data.writeStrongBinder(mNode);
        return call.to(mNode, probe::kKeep);
    });
}

TEST_F(AProcessOutOfDescriptors, CannotSendALargeParcel) {
    for (const uint32_t flags : {uint32_t{0}, uint32_t{IBinder::FLAG_ONEWAY}}) {
        failsMeanwhile([this, flags] {
            Call call;
            call.data.writeInplace(100000);
            return call.to(mNode, probe::kAdd, flags);
        });
    }
}

TEST_F(AProcessOutOfDescriptors, CannotReceiveABinder) {
    failsMeanwhile([this] {
        Call call;
        return call.to(mNode, probe::kMake);
    });
}

TEST_F(AProcessOutOfDescriptors, CannotReceiveALargeReply) {
    failsMeanwhile([this] {
        Call call;
        call.data.writeInt32(100000);
        return call.to(mNode, probe::kBig);
    });
}

TEST_F(AProcessOutOfDescriptors, CannotCallThroughAReferenceForTheFirstTime) {
    std::vector<sp<IBinder>> uncalled;
    for (int i = 0; i < 3; ++i) {
        Call make;
        ASSERT_EQ(OK, make.to(mNode, probe::kMake));
        uncalled.push_back(make.reply.readStrongBinder());
    }
    EXPECT_EQ(OK, uncalled[0]->pingBinder());
    {
        const NoMoreDescriptors none;
        EXPECT_EQ(FAILED_TRANSACTION, uncalled[1]->pingBinder());
        EXPECT_EQ(OK, uncalled[0]->pingBinder());
        Call oneWay;
        EXPECT_EQ(FAILED_TRANSACTION, oneWay.to(uncalled[2], probe::kAdd, IBinder::FLAG_ONEWAY));
        EXPECT_TRUE(othersGoOn());
    }
    for (const sp<IBinder>& node : uncalled) {
        EXPECT_EQ(OK, node->pingBinder());
    }
}

TEST_F(AProcessOutOfDescriptors, KeepsNoneOfTheDescriptorsOfCallsThatFailed) {
    const auto attempts = [this] {
        Call large;
        large.data.writeInplace(100000);
        (void)large.to(mNode, probe::kAdd);
        Call own;
        own.data.writeStrongBinder(probe::makeNode());
        (void)own.to(mNode, probe::kKeep);
        Call keep;
        keep.data.writeStrongBinder(mNode);
        (void)keep.to(mNode, probe::kKeep);
    };
    attempts();
    const int before = probe::descriptors();
    for (int round = 0; round < 10; ++round) {
        {
            const NoMoreDescriptors none;
            attempts();
        }
        attempts();
    }
    EXPECT_TRUE(voxtrel_test::eventually([&] { return probe::descriptors() <= before; }));
}

}  // namespace
