// SPDX-License-Identifier: Apache-2.0
// What one process, and one user, may make another process hold.
#include "socket/Quota.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::transport::PeerIdentity;
using android::transport::QuotaAmount;
using android::transport::QuotaCharge;
using android::transport::Quotas;
using voxtrel_test::ChildProcess;

constexpr size_t kReserve = 128;
constexpr size_t kMiB = size_t{1024} * 1024;

// This process's limit of descriptors, for a while.
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &mBefore);
        set(most);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &mBefore); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

    void set(rlim_t most) const {
        const rlimit limit = {most, mBefore.rlim_max};
        EXPECT_EQ(0, setrlimit(RLIMIT_NOFILE, &limit));
    }

private:
    rlimit mBefore = {};
};

class AQuotaCharge : public testing::Test {
protected:
    // As many sockets as processes of this user are granted, a few for each of them.
    size_t takeSockets(uid_t user) {
        constexpr size_t kOfOneProcess = 50;
        const size_t before = mHeld.size();
        for (;; ++mLastPid) {
            for (size_t i = 0; i < kOfOneProcess; ++i) {
                QuotaCharge charge(mQuotas, {mLastPid, user}, 3);
                if (!charge.granted()) {
                    return mHeld.size() - before;
                }
                mHeld.push_back(std::move(charge));
            }
        }
    }

    bool granted(PeerIdentity peer, int fd) { return QuotaCharge(mQuotas, peer, fd).granted(); }

    Quotas mQuotas;

    const uid_t mOwn = geteuid();
    const uid_t mOther = mOwn + 1;
    const uid_t mThird = mOwn + 2;
    pid_t mLastPid = 1;
    std::vector<QuotaCharge> mHeld;
};

TEST_F(AQuotaCharge, OfOtherUsersSocketsIsGrantedWhileAsManyAreLeft) {
    const DescriptorLimit limit(2048);
    constexpr size_t kAll = 2048 - kReserve;
    EXPECT_EQ(kAll / 2, takeSockets(mOther));
    EXPECT_EQ(kAll / 4, takeSockets(mThird));
    EXPECT_EQ(kAll / 4, takeSockets(mOwn)) << "its own user may have the rest";
    mHeld.clear();
    EXPECT_EQ(kAll / 2, takeSockets(mThird)) << "all has been given back";
}

TEST_F(AQuotaCharge, CountsWhatElseTheProcessHasOpen) {
    const DescriptorLimit limit(2048);
    const PeerIdentity other = {1, mOther};
    std::vector<QuotaCharge> held;
    for (int i = 0; i < 100; ++i) {
        held.emplace_back(mQuotas, other, 3);
        ASSERT_TRUE(held.back().granted());
    }
    constexpr int kHighest = 2048 - static_cast<int>(kReserve) - 101;
    EXPECT_TRUE(granted(other, kHighest));
    EXPECT_FALSE(granted(other, kHighest + 1)) << "100 are held, and 100 left";
    EXPECT_TRUE(granted({1, mOwn}, kHighest + 1));
}

TEST_F(AQuotaCharge, GoesByTheLimitOfDescriptorsThatHoldsNow) {
    const DescriptorLimit limit(2048);
    const PeerIdentity own = {1, mOwn};
    EXPECT_TRUE(granted(own, 1000));
    limit.set(1024);
    EXPECT_FALSE(granted(own, 1000)) << "the reserve begins at 896";
    EXPECT_TRUE(granted(own, 895));
    EXPECT_FALSE(granted(own, 896));
    limit.set(2048);
    EXPECT_TRUE(granted(own, 1000));
}

TEST_F(AQuotaCharge, OfOneProcessEndsWithAQuarterOfTheLimit) {
    const DescriptorLimit limit(1024);
    std::vector<QuotaCharge> held;
    for (size_t i = 0; i < 1024 / 4; ++i) {
        held.emplace_back(mQuotas, PeerIdentity{1, mOwn}, 3);
        ASSERT_TRUE(held.back().granted());
    }
    EXPECT_FALSE(granted({1, mOwn}, 3));
    EXPECT_TRUE(granted({2, mOwn}, 3));
}

TEST_F(AQuotaCharge, OfMemoryIsLimitedByProcessAndByOtherUser) {
    std::vector<QuotaCharge> held;
    for (pid_t pid = 1; pid <= 4; ++pid) {
        held.emplace_back(mQuotas, PeerIdentity{pid, mOther}, -1, QuotaAmount{0, 8 * kMiB});
        EXPECT_TRUE(held.back().granted());
        held.emplace_back(mQuotas, PeerIdentity{pid, mOther}, -1, QuotaAmount{0, 8 * kMiB});
        EXPECT_TRUE(held.back().granted());
        EXPECT_FALSE(QuotaCharge(mQuotas, {pid, mOther}, -1, {0, 1}).granted());
        EXPECT_TRUE(granted({pid, mOther}, 3)) << "a socket takes none of it";
    }
    EXPECT_FALSE(QuotaCharge(mQuotas, {5, mOther}, -1, {0, 1}).granted());
    EXPECT_TRUE(QuotaCharge(mQuotas, {5, mThird}, -1, {0, 1}).granted());
    for (pid_t pid = 6; pid <= 10; ++pid) {
        held.emplace_back(mQuotas, PeerIdentity{pid, mOwn}, -1, QuotaAmount{0, 16 * kMiB});
        EXPECT_TRUE(held.back().granted()) << "its own user's processes are limited one by one";
    }
}

TEST_F(AQuotaCharge, IsForWhomTheServiceManagerNamesAndNobodyElse) {
    const PeerIdentity named = {getpid(), mOwn};
    constexpr pid_t kManager = 1000000;
    const PeerIdentity manager = {kManager, mOther};
    EXPECT_EQ(kManager, mQuotas.chargedPeer(manager, named).pid);
    EXPECT_EQ(mOther, mQuotas.chargedPeer(manager, named).uid);
    mQuotas.trustManager(kManager);
    EXPECT_EQ(getpid(), mQuotas.chargedPeer(manager, named).pid);
    EXPECT_EQ(mOwn, mQuotas.chargedPeer(manager, named).uid);
    EXPECT_EQ(kManager, mQuotas.chargedPeer(manager, {}).pid);
    EXPECT_EQ(kManager + 1, mQuotas.chargedPeer({kManager + 1, mOther}, named).pid);
}

// Connects, becomes another user if it is told to, and opens sockets until one is refused.
const voxtrel_test::Role kGrabber("grabber", [](const voxtrel_test::Arguments& arguments) {
    const raw::Fd control = raw::connectTo(arguments[0]);
    if (arguments.size() > 1 && setuid(static_cast<uid_t>(std::stoul(arguments[1]))) != 0) {
        return 1;
    }
    std::vector<raw::Fd> held;
    for (int i = 0; i < 300; ++i) {
        pollfd room = {control.get(), POLLOUT, 0};
        (void)poll(&room, 1, 60000);
        held.push_back(raw::openCalls(control.get()));
    }
    voxtrel_test::tell(raw::hangsUp(held.back().get()) ? "refused" : "has all");
    (void)voxtrel_test::hear();
    return 0;
});

using ManyProcesses = probe::ProbeTest;

// Each of these processes has a share of 256 by itself. Who is not the superuser cannot become
// another user; then they are the service manager's own user, which no such share limits.
TEST_F(ManyProcesses, OfAnotherUserLeaveAServiceHalfOfItsDescriptors) {
    mRuntime.killManager();
    const ChildProcess limited({"sh", "-c", "ulimit -n 1024; exec " VOXTREL_SERVICEMANAGER});
    ASSERT_TRUE(
        voxtrel_test::eventually([this] { return raw::connectTo(mRuntime.socket()).get() >= 0; }));
    const bool others = geteuid() == 0;
    std::vector<std::string> arguments = {mRuntime.socket()};
    if (others) {
        arguments.emplace_back("65534");
    }
    std::vector<ChildProcess> grabbers;
    for (int i = 0; i < 3; ++i) {
        grabbers.push_back(ChildProcess::asRole("grabber", arguments));
        EXPECT_EQ("refused", grabbers.back().readLine());
    }
    const int open = probe::descriptorsOf(limited.pid());
    if (others) {
        EXPECT_LE(open, 1024 / 2);
        EXPECT_GT(open, 1024 / 2 - 100);
    } else {
        EXPECT_GT(open, 3 * 1024 / 4);
    }
    ChildProcess other = ChildProcess::asRole("server", {"other"});
    EXPECT_EQ("ready", other.readLine());
}

}  // namespace
