// SPDX-License-Identifier: Apache-2.0
// A forked child lets go of what it inherited, whatever locks its parent's threads held at the
// fork.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/platform/SanitizerOptions.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::INVALID_OPERATION;
using android::OK;
using android::sp;
using probe::Call;
using probe::CountingDeathRecipient;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

struct Inherited {
    sp<IBinder> service;   // of another process, and linked
    sp<IBinder> made;      // also, held by nobody else
    sp<IBinder> exported;  // of this process, once held by the other
    sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
};

sp<IBinder> nodeThatWasExported(const sp<IBinder>& service) {
    sp<IBinder> node = probe::makeNode();
    const int32_t own = node->getStrongCount();
    {
        Call keep;
        keep.data.writeStrongBinder(node);
        (void)keep.to(service, probe::kKeep);
    }
    probe::ask(service, probe::kLetGo);
    return eventually([&] { return node->getStrongCount() == own; }) ? node : nullptr;
}

sp<IBinder> makeIn(const sp<IBinder>& service) {
    Call make;
    (void)make.to(service, probe::kMake);
    return make.reply.readStrongBinder();
}

// Exports nodes and links to deaths, so that at any time some lock is held.
void keepLocking(const sp<IBinder>& service, const std::atomic<bool>& over) {
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    while (!over) {
        Call call;
        call.data.writeStrongBinder(probe::makeNode());
        call.data.writeInt32(1);
        (void)call.to(service, probe::kCallBack);
        const sp<IBinder> made = makeIn(service);
        for (int i = 0; i < 20; ++i) {
            (void)service->linkToDeath(recipient);
            (void)service->unlinkToDeath(recipient);
            (void)made->linkToDeath(recipient);
            (void)made->unlinkToDeath(recipient);
        }
    }
}

void letGoAndExit(Inherited& all) {
    (void)alarm(60);
    all.exported.clear();
    const bool refused = all.service->unlinkToDeath(all.recipient) == INVALID_OPERATION &&
                         all.service->linkToDeath(all.recipient) == INVALID_OPERATION &&
                         all.service->getInterfaceDescriptor().size() == 0;
    all.made.clear();
    all.service.clear();
    std::exit(refused ? 0 : 1);
}

const voxtrel_test::Role kLockingForker("locking-forker", [](const voxtrel_test::Arguments& words) {
    probe::startPool();
    Inherited all;
    all.service = probe::find();
    all.made = makeIn(all.service);
    all.exported = nodeThatWasExported(all.service);
    if (all.exported == nullptr || all.service->linkToDeath(all.recipient) != OK) {
        return 1;
    }
    std::atomic<bool> over{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] { keepLocking(all.service, over); });
    }
    for (int left = std::stoi(words[0]); left > 0; --left) {
        const pid_t child = fork();
        if (child == 0) {
            letGoAndExit(all);
        }
        int status = -1;
        (void)waitpid(child, &status, 0);
        voxtrel_test::tell(std::to_string(status));
    }
    over = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    return 0;
});

class AForkedChildThatLetsGo : public probe::ProbeTest {
private:
    const probe::SanitizersLetChildrenExit mOptions{};
};

TEST_F(AForkedChildThatLetsGo, EndsWhateverLocksItsParentsThreadsHeld) {
    const int kChildren = voxtrel_test::repeats(400);
    ChildProcess forker = ChildProcess::asRole("locking-forker", {std::to_string(kChildren)});
    for (int child = 0; child < kChildren; ++child) {
        ASSERT_EQ("0", forker.readLine()) << "status of child " << child;
    }
    EXPECT_EQ(0, forker.wait());
}

// Serves a node, and forks a child that does nothing for a long time.
const voxtrel_test::Role kLeaver("leaver", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<IBinder> node = probe::makeNode();
    (void)android::defaultServiceManager()->addService(android::String16("leaver"), node);
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    const pid_t child = fork();
    if (child == 0) {
        (void)alarm(120);
        (void)pause();
        _exit(0);
    }
    voxtrel_test::tell(std::to_string(child));
    (void)voxtrel_test::hear();
    return 0;
});

using AForkedChildThatLivesOn = probe::ProbeTest;

TEST_F(AForkedChildThatLivesOn, HoldsNothingOfTheCallsThatWaitedInItsParent) {
    constexpr int kCalls = 4;
    ChildProcess leaver = ChildProcess::asRole("leaver");
    ASSERT_EQ("ready", leaver.readLine());
    const sp<IBinder> node = probe::find("leaver");
    const sp<IBinder> maker = probe::makeNode();
    Call block;
    ASSERT_EQ(OK, block.to(node, probe::kBlock, IBinder::FLAG_ONEWAY));
    ASSERT_TRUE(eventually([&] { return probe::ask(node, probe::kBlocked) == 1; }));
    for (int i = 0; i < kCalls; ++i) {
        Call keep;
        keep.data.writeStrongBinder(makeIn(maker));
        ASSERT_EQ(OK, keep.to(node, probe::kKeep, IBinder::FLAG_ONEWAY));
    }
    // The ping is received behind so few one-way calls: they have arrived, and wait there.
    ASSERT_EQ(OK, node->pingBinder());
    EXPECT_EQ(kCalls, probe::living());
    const pid_t child = std::stoi(leaver.ask("fork"));
    leaver.killNow();
    EXPECT_TRUE(eventually([] { return probe::living() == 0; }));
    EXPECT_EQ(0, kill(child, SIGKILL)) << "it was to live on";
}

}  // namespace
