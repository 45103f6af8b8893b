// SPDX-License-Identifier: Apache-2.0
#include "socket/Dispatch.h"

#include <cxxabi.h>

#include <exception>

#include "binder/IPCThreadState.h"
#include "socket/Log.h"
#include "socket/Manners.h"
#include "socket/Objects.h"
#include "socket/Patience.h"

namespace android {

/// The thread acts for the sender of a message while it serves it.
class CallingIdentity {
public:
    CallingIdentity(pid_t pid, uid_t uid)
        : mState(*IPCThreadState::self()), mPid(mState.mCallingPid), mUid(mState.mCallingUid) {
        mState.mCallingPid = pid;
        mState.mCallingUid = uid;
    }
    ~CallingIdentity() {
        mState.mCallingPid = mPid;
        mState.mCallingUid = mUid;
    }
    CallingIdentity(const CallingIdentity&) = delete;
    CallingIdentity& operator=(const CallingIdentity&) = delete;

private:
    IPCThreadState& mState;
    const pid_t mPid;
    const uid_t mUid;
};

namespace transport {

namespace {

void logException(const Incoming& incoming, const char* what) {
    logLimited("call %u from process %d ended with an exception: %s",
               incoming.envelope.header().code, static_cast<int>(incoming.envelope.senderPid()),
               what);
}

// An exception that an implementation lets out would end the whole process for one bad request.
// A forced unwind is caught as an object that is not there, which only the sanitizer minds.
__attribute__((no_sanitize("null"))) status_t run(BBinder& node, Incoming& incoming, pid_t caller,
                                                  Parcel* reply) {
    const Header& header = incoming.envelope.header();
    const CallingIdentity identity(caller, incoming.envelope.senderUid());
    status_t status = UNKNOWN_ERROR;
    try {
        status = node.transact(header.code, incoming.parcel, reply, header.flags);
    } catch (const std::exception& error) {
        logException(incoming, error.what());
    } catch (const abi::__forced_unwind&) {
        throw;  // the implementation ends its thread, which is not to be held up
    } catch (...) {
        logException(incoming, "no std::exception");
    }
    // The caller may rely on it that what it sent along has been let go when the reply is there.
    incoming.parcel.freeData();
    return status;
}

status_t statusOf(status_t status, const Parcel& reply, pid_t caller, Attachments* attachments) {
    if (status == OK) {
        status = reply.errorCheck();
    }
    if (status == OK && reply.dataSize() > largestPayload(Kind::Reply)) {
        status = FAILED_TRANSACTION;
    }
    Patience patience;
    return status == OK ? detachBinders(reply, attachments, patience, {caller, false}) : status;
}

bool attach(Incoming& incoming) {
    const bool sound = attachBinders(incoming.envelope, incoming.parcel);
    if (!sound) {
        incoming.parcel.freeData();  // of the binders that were
    }
    return sound;
}

// At once or not at all: a caller has read its last reply when it makes the next call on a socket,
// so there is room, and who leaves replies unread holds up nobody.
Served sendReply(const Fd& socket, status_t status, const Parcel& reply,
                 const Attachments& attachments, const std::atomic<uint32_t>& oneWaysDone) {
    const Header header = {0, Kind::Reply, oneWaysDone.load(), status, 0, 0, 0, 0};
    const status_t sent = sendMessage(socket, header, reply, attachments);
    if (sent == FAILED_TRANSACTION && status == OK) {
        // Say, without descriptors for what goes with it: then the caller at least hears that.
        return failRequest(socket, oneWaysDone);
    }
    return sent == OK ? Served::Well : Served::InVain;
}

}  // namespace

Served serveRequest(BBinder& node, Incoming& incoming, const Fd& socket,
                    const std::atomic<uint32_t>& oneWaysDone) {
    if (!attach(incoming)) {
        return Served::Badly;
    }
    Parcel reply;
    Attachments attachments;
    const pid_t caller = incoming.envelope.senderPid();
    const status_t ran = run(node, incoming, caller, &reply);
    const status_t status = statusOf(ran, reply, caller, &attachments);
    if (status != OK) {
        reply.freeData();
        attachments = {};
    }
    return sendReply(socket, status, reply, attachments, oneWaysDone);
}

Served failRequest(const Fd& socket, const std::atomic<uint32_t>& oneWaysDone) {
    return sendReply(socket, FAILED_TRANSACTION, Parcel(), Attachments(), oneWaysDone);
}

Served serveOneWay(BBinder& node, Incoming& incoming) {
    if (!attach(incoming)) {
        return Served::Badly;
    }
    Parcel unread;
    const pid_t caller = gManners.ofDriver ? 0 : incoming.envelope.senderPid();
    (void)run(node, incoming, caller, &unread);  // nobody waits for its status
    return Served::Well;
}

}  // namespace transport

}  // namespace android
