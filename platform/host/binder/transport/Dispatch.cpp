// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Dispatch.h"

#include <poll.h>

#include <cxxabi.h>

#include <exception>

#include "binder/IPCThreadState.h"
#include "binder/transport/Log.h"
#include "binder/transport/Objects.h"
#include "binder/transport/Patience.h"

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
__attribute__((no_sanitize("null"))) status_t run(BBinder& node, Incoming& incoming,
                                                  Parcel* reply) {
    const Header& header = incoming.envelope.header();
    const CallingIdentity identity(incoming.envelope.senderPid(), incoming.envelope.senderUid());
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
    return status == OK ? detachBinders(reply, attachments, patience, caller) : status;
}

// What goes back to the caller of a request.
class Answer {
public:
    Answer(const Fd& socket, const std::atomic<uint32_t>& oneWaysDone)
        : mSocket(socket), mOneWaysDone(oneWaysDone) {}

    status_t send(status_t status, const Parcel& reply, const Attachments& attachments) {
        const Header header = {0, Kind::Reply, mOneWaysDone.load(), status, 0, 0, 0, 0};
        return patiently(mPatience, [&](Obstacle& obstacle) {
            obstacle = {mSocket.get(), POLLOUT};
            return sendMessage(mSocket, header, reply, attachments);
        });
    }
    status_t sendFailure() { return send(FAILED_TRANSACTION, Parcel(), Attachments()); }

private:
    const Fd& mSocket;
    const std::atomic<uint32_t>& mOneWaysDone;
    Patience mPatience;
};

Served servedIf(status_t sent) {
    return sent == OK ? Served::Well : Served::InVain;
}

}  // namespace

Served serveRequest(BBinder& node, Incoming& incoming, const Fd& socket,
                    const std::atomic<uint32_t>& oneWaysDone) {
    if (!attachBinders(incoming.envelope, incoming.parcel)) {
        return Served::Badly;
    }
    Parcel reply;
    Attachments attachments;
    const status_t ran = run(node, incoming, &reply);
    const status_t status = statusOf(ran, reply, incoming.envelope.senderPid(), &attachments);
    if (status != OK) {
        reply.freeData();
        attachments = {};
    }
    Answer answer(socket, oneWaysDone);
    const status_t sent = answer.send(status, reply, attachments);
    // Say, without descriptors for what goes with it: then the caller at least hears that.
    return servedIf(sent == FAILED_TRANSACTION ? answer.sendFailure() : sent);
}

Served failRequest(const Fd& socket, const std::atomic<uint32_t>& oneWaysDone) {
    return servedIf(Answer(socket, oneWaysDone).sendFailure());
}

Served serveOneWay(BBinder& node, Incoming& incoming) {
    if (!attachBinders(incoming.envelope, incoming.parcel)) {
        return Served::Badly;
    }
    Parcel unread;
    (void)run(node, incoming, &unread);  // nobody waits for its status
    return Served::Well;
}

}  // namespace transport

}  // namespace android
