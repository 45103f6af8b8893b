// SPDX-License-Identifier: Apache-2.0
// A process that lets SIGPIPE end it, as every process does that does not say otherwise: nothing
// that the runtime sends to the dead raises it.
#include <gtest/gtest.h>
#include <signal.h>

#include <string>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::DEAD_OBJECT;
using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

struct Kind {
    const char* name;
    uint32_t flags;
    bool called;  // while the node lived
    void (*fill)(Call& call);
};

// Each has a node of its own: a proxy that has seen the end sends nothing more.
std::vector<Kind> kinds() {
    std::vector<Kind> all;
    for (const uint32_t flags : {uint32_t{0}, uint32_t{IBinder::FLAG_ONEWAY}}) {
        for (const bool called : {false, true}) {
            all.push_back({"small", flags, called, [](Call& call) { call.data.writeInt32(1); }});
            all.push_back(
                {"large", flags, called, [](Call& call) { call.data.writeInplace(100000); }});
            all.push_back({"with a binder", flags, called,
                           [](Call& call) { call.data.writeStrongBinder(probe::makeNode()); }});
        }
    }
    return all;
}

sp<IBinder> make(const sp<IBinder>& where) {
    Call call;
    return call.to(where, probe::kMake) == OK ? call.reply.readStrongBinder() : nullptr;
}

// Holds nodes of "mortal", waits for its death and calls them all, then passes one on.
const voxtrel_test::Role kCallerOfTheDead("caller-of-the-dead", [](const voxtrel_test::Arguments&) {
    if (signal(SIGPIPE, SIG_DFL) != SIG_DFL) {
        return 2;
    }
    const sp<IBinder> mortal = probe::find("mortal");
    const sp<IBinder> passedOn = make(mortal);
    std::vector<sp<IBinder>> nodes;
    for (const Kind& kind : kinds()) {
        nodes.push_back(make(mortal));
        if (kind.called) {
            (void)nodes.back()->pingBinder();
        }
    }
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    std::string wrong;
    for (size_t i = 0; i < nodes.size(); ++i) {
        Call call;
        kinds()[i].fill(call);
        const bool dead = call.to(nodes[i], probe::kAdd, kinds()[i].flags) == DEAD_OBJECT;
        wrong += dead ? std::string() : std::string(" ") + kinds()[i].name;
    }
    Call keep;
    keep.data.writeStrongBinder(passedOn);
    wrong += keep.to(probe::find(), probe::kKeep) == OK ? "" : " passed on";
    voxtrel_test::tell("wrong:" + wrong);
    return 0;
});

using ABrokenPipe = probe::ProbeTest;

TEST_F(ABrokenPipe, DoesNotEndACallerOfTheDead) {
    ChildProcess mortal = ChildProcess::asRole("server", {"mortal"});
    ASSERT_EQ("ready", mortal.readLine());
    ChildProcess caller = ChildProcess::asRole("caller-of-the-dead");
    ASSERT_EQ("ready", caller.readLine());
    mortal.killNow();
    EXPECT_EQ("wrong:", caller.ask("go"));
    EXPECT_EQ(0, caller.wait());
}

const voxtrel_test::Role kBlockedCaller("blocked-caller", [](const voxtrel_test::Arguments&) {
    Call call;
    (void)call.to(probe::find(), probe::kBlock);
    return 0;
});

TEST_F(ABrokenPipe, DoesNotEndAServiceThatAnswersADeadCaller) {
    for (int i = 1; i <= 5; ++i) {
        ChildProcess caller = ChildProcess::asRole("blocked-caller");
        ASSERT_TRUE(eventually([&] { return probe::ask(mNode, probe::kBlockedEver) == i; }));
        caller.killNow();
        probe::ask(mNode, probe::kUnblock);
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 0; }));
        EXPECT_EQ(OK, mNode->pingBinder());
    }
}

}  // namespace
