// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PEERNODE_H
#define VOXTREL_PLATFORM_CHECK_PEERNODE_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "check/Headers.h"
#include "check/Report.h"

namespace check {

/// What the node of the second process serves.
enum PeerCode : uint32_t {
    kAdd = 1,    ///< int32, int32 -> their sum
    kWait,       ///< int32 milliseconds -> 1, after so long
    kMeet,       ///< int32 callers -> 1 once so many are in this call at a time, 0 after 5 s
    kNote,       ///< int32 number, int32 milliseconds: notes the number after so long
    kNotes,      ///< -> int32 max at a time, int32 pid and uid of the last caller, the numbers
    kCaller,     ///< -> int32 pid and uid of who calls this
    kFail,       ///< writes an int32 into the reply and fails
    kCallBack,   ///< binder, int32 flags, int32 -> status of calling it (code kAdd) with the number
    kIsNull,     ///< binder -> 1 when it is null
    kMake,       ///< -> a binder, which is not kept here
    kAwaitGone,  ///< -> 1 when nobody holds what kMake made, 0 after 2 s
};

class PeerNode : public android::BBinder {
protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

private:
    int32_t meet(int32_t callers);
    void note(int32_t number, int32_t milliseconds);
    void tellNotes(android::Parcel& reply);
    android::sp<android::IBinder> make();
    int32_t awaitGone();

    std::mutex mLock;
    std::condition_variable mChanged;
    std::vector<int32_t> mNotes;
    int32_t mInside = 0;
    int32_t mMaxInside = 0;
    int32_t mMeeting = 0;
    pid_t mCallerPid = 0;
    uid_t mCallerUid = 0;
    android::wp<android::IBinder> mMade;
};

/// Registers a node under `name`, reports so, and serves until standard input closes.
/// @return the exit status.
int servePeer(const char* name, const Report& report);

}  // namespace check

#endif
