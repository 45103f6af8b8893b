// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PLATFORM_PROBE_H
#define VOXTREL_TESTS_PLATFORM_PROBE_H

#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

#include <sys/resource.h>
#include <sys/types.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace probe {

/// What the test node of another process can be asked to do.
enum Code : uint32_t {
    kAdd = 1,   ///< int32 a, b -> int32 a + b
    kEcho,      ///< any bytes -> the same bytes
    kWho,       ///< -> int32 caller's pid, int32 caller's uid, int32 own pid
    kKeep,      ///< binder: keeps it
    kGive,      ///< -> the kept binder
    kLetGo,     ///< lets go of the kept binder
    kCallBack,  ///< binder, int32 depth: the binder is asked the same with depth - 1 -> int32
    kNote,      ///< int32 caller, int32 number (one-way): remembered
    kNotes,     ///< -> int32 count, int32 out of order, int32 at once
    kBlock,     ///< waits until kUnblock
    kUnblock,
    kFail,         ///< -> status -42
    kMake,         ///< -> a new node
    kLiving,       ///< -> int32 number of nodes of kMake that live
    kIsKept,       ///< binder -> int32 1 when it is the very object that is kept
    kDescriptors,  ///< -> int32 open descriptors of the process
    kThrow,        ///< ends with an exception
    kBig,          ///< int32 n -> n bytes
    kBlocked,      ///< -> int32 calls that wait in kBlock
    kLink,         ///< binder: its death is counted
    kDeaths,       ///< -> int32 deaths counted so far
    kBlockedEver,  ///< -> int32 calls that have come to kBlock so far
    kAnswer,       ///< int32 status -> that status
    kAnswered,     ///< -> int32 how often kAnswer has been carried out
    kStarve,       ///< from here on the process can open no descriptor
    kFeed,         ///< the end of that
    kThrowNumber,  ///< ends with an exception of no class
    kEndThread,    ///< ends the thread that serves it
    kEnded,        ///< -> int32 threads that kEndThread has ended
    kRunOut,       ///< ends for lack of memory
    kHeap,         ///< -> int32 KiB of heap that the process has in use
};

inline constexpr const char* kName = "probe";

/// How many nodes of `kMake` live in this process.
std::atomic<int>& living();

/// A new test node.
android::sp<android::IBinder> makeNode();

/// The node that some process has added under `name`; waits until it is there.
android::sp<android::IBinder> find(const std::string& name = kName);

/// From here on this process serves calls and death notices.
void startPool();

/// Counts the deaths that it is told of.
class CountingDeathRecipient : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>& who) override;
    int deaths() const { return mDeaths; }
    /// Never in the thread that made this object.
    bool toldElsewhere() const { return !mToldHere; }
    /// What died last; for comparing only.
    android::wp<android::IBinder> last() const;

private:
    const std::thread::id mHere = std::this_thread::get_id();
    std::atomic<bool> mToldHere{false};
    std::atomic<int> mDeaths{0};
    mutable std::mutex mLock;
    android::wp<android::IBinder> mLast;
};

/// One call; what it replied stands in `reply`.
struct Call {
    android::Parcel data;
    android::Parcel reply;
    android::status_t to(const android::sp<android::IBinder>& node, uint32_t code,
                         uint32_t flags = 0) {
        return node->transact(code, data, &reply, flags);
    }
};

/// Sends one `kNote` with so many bytes behind it; how the sending went.
android::status_t note(const android::sp<android::IBinder>& node, int32_t caller, int32_t number,
                       size_t more = 0);
/// The same, until it is taken: who is busy for 100 ms refuses what it has no room for.
android::status_t noteUntilTaken(const android::sp<android::IBinder>& node, int32_t caller,
                                 int32_t number, size_t more = 0);

/// A call without arguments whose reply is one int32.
int32_t ask(const android::sp<android::IBinder>& node, uint32_t code);

/// Lets this process open no further descriptor while it lives.
class Starvation {
public:
    Starvation();
    ~Starvation();
    Starvation(const Starvation&) = delete;
    Starvation& operator=(const Starvation&) = delete;

private:
    rlimit mLimit{};
    std::vector<int> mTaken;
};

/// Open descriptors of this process.
int descriptors();
int descriptorsOf(pid_t pid);
/// The threads that a process has.
int threadsOf(pid_t pid);
/// Memory of a process that is in use, in KiB.
long residentKiB(pid_t pid);

}  // namespace probe

#endif
