// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/Probe.h"

#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>

#include "tests/support/Eventually.h"
#include "tests/support/Roles.h"

namespace probe {

using android::BBinder;
using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;

namespace {

class Made : public BBinder {
public:
    Made() { ++living(); }

protected:
    ~Made() override { --living(); }
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code != kAdd) {
            return BBinder::onTransact(code, data, reply, flags);
        }
        const int32_t a = data.readInt32();
        return reply->writeInt32(a + data.readInt32());
    }
};

std::atomic<int>& endedThreads() {
    static std::atomic<int> count{0};
    return count;
}

struct CountsItsEnd {
    bool armed = false;
    ~CountsItsEnd() { endedThreads() += armed ? 1 : 0; }
};

[[noreturn]] void endThread() {
    static thread_local CountsItsEnd atTheEnd;
    atTheEnd.armed = true;
    pthread_exit(nullptr);
}

class Node : public BBinder {
protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        switch (code) {
            case kAdd: {
                const uint32_t a = data.readUint32();
                return reply->writeUint32(a + data.readUint32());
            }
            case kEcho:
                return reply->write(data.data(), data.dataSize());
            case kWho:
                reply->writeInt32(IPCThreadState::self()->getCallingPid());
                reply->writeInt32(static_cast<int32_t>(IPCThreadState::self()->getCallingUid()));
                return reply->writeInt32(getpid());
            case kNote:
                return note(data);
            case kNotes:
                return notes(reply);
            case kBlock:
                return block();
            case kUnblock:
                return unblock();
            case kBlocked:
                return reply->writeInt32(mBlockedCalls);
            case kBlockedEver:
                return reply->writeInt32(mBlockedEver);
            case kAnswer:
                ++mAnswered;
                return data.readInt32();
            case kAnswered:
                return reply->writeInt32(mAnswered);
            case kStarve:
                mStarvation.reset();  // a sanitizer takes descriptors when it first looks at a Node
                mStarvation = std::make_unique<Starvation>();
                return OK;
            case kFeed:
                mStarvation.reset();
                return OK;
            case kFail:
                reply->writeInt32(1);
                return -42;
            case kThrow:
                throw std::runtime_error("on purpose");
            case kThrowNumber:
                throw 42;  // NOLINT: not a class, on purpose
            case kRunOut:
                throw std::bad_alloc();
            case kEndThread:
                endThread();
            case kEnded:
                return reply->writeInt32(endedThreads());
            case kBig:
                return reply->writeInplace(static_cast<size_t>(data.readInt32())) != nullptr
                           ? OK
                           : android::NO_MEMORY;
            default:
                return onBinders(code, data, reply, flags);
        }
    }

private:
    status_t onBinders(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
        switch (code) {
            case kKeep:
                return keep(data.readStrongBinder());
            case kGive:
                return reply->writeStrongBinder(kept());
            case kLetGo:
                return keep(nullptr);
            case kIsKept:
                return reply->writeInt32(data.readStrongBinder() == kept() ? 1 : 0);
            case kCallBack:
                return callBack(data, reply);
            case kLink:
                return link(data.readStrongBinder());
            case kDeaths:
                return reply->writeInt32(mRecipient->deaths());
            case kMake:
                return reply->writeStrongBinder(new Made());
            case kLiving:
                return reply->writeInt32(living());
            case kDescriptors:
                return reply->writeInt32(descriptors());
            case kHeap:
                return reply->writeInt32(static_cast<int32_t>(mallinfo2().uordblks / 1024));
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

    status_t callBack(const Parcel& data, Parcel* reply) {
        const sp<IBinder> other = data.readStrongBinder();
        const int32_t depth = data.readInt32();
        if (depth == 0) {
            return reply->writeInt32(0);
        }
        Call call;
        call.data.writeStrongBinder(this);
        call.data.writeInt32(depth - 1);
        const status_t status = call.to(other, kCallBack);
        return status == OK ? reply->writeInt32(call.reply.readInt32() + 1) : status;
    }

    status_t keep(const sp<IBinder>& binder) {
        const std::lock_guard<std::mutex> held(mLock);
        mKept = binder;
        return OK;
    }

    // A link lives no longer than its proxy.
    status_t link(const sp<IBinder>& binder) {
        const std::lock_guard<std::mutex> held(mLock);
        mLinked = binder;
        return binder->linkToDeath(mRecipient);
    }

    sp<IBinder> kept() {
        const std::lock_guard<std::mutex> held(mLock);
        return mKept;
    }

    status_t note(const Parcel& data) {
        if (mInside.exchange(true)) {
            ++mAtOnce;
        }
        const int32_t caller = data.readInt32();
        const int32_t number = data.readInt32();
        {
            const std::lock_guard<std::mutex> held(mLock);
            mOutOfOrder += mNext[caller] == number ? 0 : 1;
            mNext[caller] = number + 1;
            ++mCount;
        }
        mInside = false;
        return OK;
    }

    status_t notes(Parcel* reply) {
        const std::lock_guard<std::mutex> held(mLock);
        reply->writeInt32(mCount);
        reply->writeInt32(mOutOfOrder);
        return reply->writeInt32(mAtOnce);
    }

    status_t block() {
        std::unique_lock<std::mutex> held(mLock);
        ++mBlockedCalls;
        ++mBlockedEver;
        const int generation = mGeneration;
        mChanged.wait(held, [this, generation] { return mGeneration != generation; });
        --mBlockedCalls;
        return OK;
    }

    status_t unblock() {
        const std::lock_guard<std::mutex> held(mLock);
        ++mGeneration;
        mChanged.notify_all();
        return OK;
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    int mGeneration = 0;
    std::atomic<int> mBlockedCalls{0};
    std::atomic<int> mBlockedEver{0};
    std::atomic<int> mAnswered{0};
    std::unique_ptr<Starvation> mStarvation;
    sp<IBinder> mKept;
    sp<IBinder> mLinked;
    const sp<CountingDeathRecipient> mRecipient = new CountingDeathRecipient();
    std::map<int32_t, int32_t> mNext;
    int32_t mCount = 0;
    int32_t mOutOfOrder = 0;
    std::atomic<int32_t> mAtOnce{0};
    std::atomic<bool> mInside{false};
};

// A process that offers a test node under a name, with so many threads at most, until its input
// ends.
const voxtrel_test::Role kServer("server", [](const voxtrel_test::Arguments& arguments) {
    const std::string name = arguments.empty() ? kName : arguments[0];
    if (arguments.size() > 1) {
        android::ProcessState::self()->setThreadPoolMaxThreadCount(std::stoul(arguments[1]));
    }
    android::ProcessState::self()->startThreadPool();
    const sp<IBinder> node = makeNode();
    do {
        const status_t status =
            android::defaultServiceManager()->addService(String16(name.c_str()), node);
        voxtrel_test::tell(status == OK ? "ready" : "failed");
    } while (voxtrel_test::hear() == "again");
    return 0;
});

// A process that keeps calling the test node, which watches it; until it is killed.
const voxtrel_test::Role kBusy("busy", [](const voxtrel_test::Arguments&) {
    startPool();
    const sp<IBinder> node = find();
    Call link;
    link.data.writeStrongBinder(makeNode());
    voxtrel_test::tell(link.to(node, kLink) == OK ? "ready" : "failed");
    for (int32_t i = 0;; ++i) {
        Call call;
        call.data.writeStrongBinder(makeNode());
        call.data.writeInt32(2);
        (void)call.to(node, kCallBack, i % 8 == 0 ? IBinder::FLAG_ONEWAY : 0);
    }
    return 0;
});

}  // namespace

void CountingDeathRecipient::binderDied(const android::wp<IBinder>& who) {
    const std::lock_guard<std::mutex> held(mLock);
    mLast = who;
    mToldHere = mToldHere || std::this_thread::get_id() == mHere;
    ++mDeaths;
}

android::wp<IBinder> CountingDeathRecipient::last() const {
    const std::lock_guard<std::mutex> held(mLock);
    return mLast;
}

std::atomic<int>& living() {
    static std::atomic<int> count{0};
    return count;
}

void startPool() {
    android::ProcessState::self()->startThreadPool();
}

sp<IBinder> makeNode() {
    return new Node();
}

sp<IBinder> find(const std::string& name) {
    sp<IBinder> found;
    (void)voxtrel_test::eventually([&] {
        found = android::defaultServiceManager()->getService(String16(name.c_str()));
        return found != nullptr;
    });
    return found;
}

status_t note(const sp<IBinder>& node, int32_t caller, int32_t number, size_t more) {
    Call call;
    call.data.writeInt32(caller);
    call.data.writeInt32(number);
    (void)call.data.writeInplace(more);
    return call.to(node, kNote, IBinder::FLAG_ONEWAY);
}

status_t noteUntilTaken(const sp<IBinder>& node, int32_t caller, int32_t number, size_t more) {
    status_t status = android::FAILED_TRANSACTION;
    while (status == android::FAILED_TRANSACTION) {
        status = note(node, caller, number, more);
    }
    return status;
}

int32_t ask(const sp<IBinder>& node, uint32_t code) {
    Call call;
    return call.to(node, code) == OK ? call.reply.readInt32() : -1;
}

Starvation::Starvation() {
    getrlimit(RLIMIT_NOFILE, &mLimit);
    mTaken.push_back(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    // The highest number in use, and every gap below it.
    int highest = 0;
    for (int fd = 0; fd < static_cast<int>(mLimit.rlim_cur) && fd < 65536; ++fd) {
        highest = fcntl(fd, F_GETFD) >= 0 ? fd : highest;
    }
    while (mTaken.back() >= 0 && mTaken.back() < highest) {
        mTaken.push_back(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    }
    rlimit none = mLimit;
    none.rlim_cur = static_cast<rlim_t>(std::max(highest, mTaken.back())) + 1;
    setrlimit(RLIMIT_NOFILE, &none);
}

Starvation::~Starvation() {
    setrlimit(RLIMIT_NOFILE, &mLimit);
    for (const int fd : mTaken) {
        close(fd);
    }
}

namespace {

int entriesOf(const std::string& path) {
    int count = 0;
    DIR* folder = opendir(path.c_str());
    while (folder != nullptr && readdir(folder) != nullptr) {  // NOLINT(concurrency-mt-unsafe)
        ++count;
    }
    if (folder != nullptr) {
        closedir(folder);
    }
    return count;
}

}  // namespace

int descriptors() {
    return descriptorsOf(getpid());
}

int descriptorsOf(pid_t pid) {
    return entriesOf("/proc/" + std::to_string(pid) + "/fd");
}

int threadsOf(pid_t pid) {
    return entriesOf("/proc/" + std::to_string(pid) + "/task");
}

long residentKiB(pid_t pid) {
    std::ifstream sizes("/proc/" + std::to_string(pid) + "/statm");
    long total = 0;
    long resident = 0;
    sizes >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace probe
