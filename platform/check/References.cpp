// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <thread>
#include <vector>

#include "check/Peer.h"
#include "check/Row.h"
#include "check/Slots.h"

namespace check {
namespace {

using android::sp;
using android::wp;

std::atomic<int> gGone{0};

class Counted : public virtual android::RefBase {
public:
    int value = 1;

protected:
    ~Counted() override {
        value = 0;
        ++gGone;
    }
};

void copyOften(const sp<Counted>& held) {
    for (int i = 0; i < 5000; ++i) {
        sp<Counted> copy = held;
        sp<android::RefBase> asBase = copy;
        sp<Counted> assigned;
        assigned = copy;
        copy.clear();
        assigned.clear();
    }
}

Result strongPointers() {
    sp<Counted> held = new Counted();
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([copy = held] { copyOften(copy); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const int early = gGone;
    held.clear();
    if (early != 0 || gGone != 1) {
        return require(false, "went " + std::to_string(early) + " times while it was held, and " +
                                  std::to_string(gGone - early) + " times when it was let go");
    }
    return require(true, "4 threads copied one 5000 times; it went once, with the last pointer");
}

class Shown : public virtual android::RefBase {};

sp<Shown> gShown;

class Looking : public Shown {
public:
    explicit Looking(bool& sawTheNew) : mSawTheNew(sawTheNew) {}

protected:
    ~Looking() override { mSawTheNew = gShown != nullptr && gShown.get() != this; }

private:
    bool& mSawTheNew;
};

Result strongPointerAssignment() {
    bool sawTheNew = false;
    gShown = new Looking(sawTheNew);
    gShown = new Shown();
    gShown.clear();
    return require(sawTheNew, sawTheNew ? "the destructor saw the new value"
                                        : "the destructor did not see the new value");
}

class NamesItself : public virtual android::RefBase {
public:
    explicit NamesItself(bool& isPromoted) : mIsPromoted(isPromoted) {}

protected:
    ~NamesItself() override {
        const wp<NamesItself> self(this);
        mIsPromoted = self.promote() != nullptr;
    }

private:
    bool& mIsPromoted;
};

Result weakPointerInDestructor() {
    bool isPromoted = false;
    sp<NamesItself> object = new NamesItself(isPromoted);
    object.clear();
    return require(!isPromoted, isPromoted ? "it could be promoted" : "named, and not promoted");
}

Result virtualBases() {
    const size_t first = slotOf(&IProbe::first);
    const size_t second = slotOf(&IProbe::second);
    const size_t told = slotOf(&android::IBinder::DeathRecipient::binderDied);
    const std::string what = "an interface's operations begin in slot " + std::to_string(first) +
                             ", binderDied stands in slot " + std::to_string(told);
    return require(first == 4 && second == 5 && told == 0, what);
}

// In the order in which the library keeps its own.
sp<android::IBinder> gService;
sp<Counted> gNotifier;

Result staticDestruction() {
    static Peer* peer = new Peer();  // it ends with this process
    gService = peer->node();
    gNotifier = new Counted();
    return require(true, "a proxy and an object were let go at exit");
}

}  // namespace

Rows referenceRows() {
    return {
        {"strong-pointers", "the object lives as long as any sp to it, under any number of threads",
         "use after free in client/, which copies the shared pointers without its lock",
         strongPointers},
        {"strong-pointer-assignment", "a destructor that looks at the pointer sees the new value",
         "DeathNotifier's destructor unlinks from the wrong service", strongPointerAssignment},
        {"weak-pointer-in-destructor", "naming it is allowed, promoting it fails",
         "the destructor of DeathNotifier crashes", weakPointerInDestructor},
        {"virtual-bases", "virtual slots as the Itanium C++ ABI lays them out",
         "applications built against another release of the library call the wrong operation",
         virtualBases},
        {"static-destruction", "gttsbinder and the notifiers may be let go while the process exits",
         "a crash at exit, after all work is done", staticDestruction},
    };
}

}  // namespace check
