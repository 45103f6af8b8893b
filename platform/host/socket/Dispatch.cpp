// SPDX-License-Identifier: Apache-2.0
#include "socket/Dispatch.h"

#include "binder/internal/ServeCall.h"
#include "socket/Deadline.h"
#include "support/Manners.h"

namespace android::transport {

namespace {

status_t statusOf(BinderTranslator& translator, status_t status, const Parcel& reply, pid_t caller,
                  Attachments* attachments) {
    if (status == OK) {
        status = reply.errorCheck();
    }
    if (status == OK && reply.dataSize() > largestPayload(Kind::Reply)) {
        status = FAILED_TRANSACTION;
    }
    Deadline deadline;
    return status == OK ? translator.exportBinders(reply, attachments, deadline, {caller, false})
                        : status;
}

status_t run(BBinder& node, Incoming& incoming, pid_t caller, Parcel* reply) {
    const Header& header = incoming.envelope.header();
    return serveCall(node, {caller, incoming.envelope.senderUid()}, header.code, incoming.parcel,
                     reply, header.flags);
}

bool attach(BinderTranslator& translator, Incoming& incoming) {
    const bool sound = translator.importBinders(incoming.envelope, incoming.parcel);
    if (!sound) {
        incoming.parcel.freeData();  // of the binders that were
    }
    return sound;
}

// Without waiting: a caller has read its last reply when it makes the next call on a socket, so
// there is room. A client that does not read its replies must not block the pool.
Served sendReply(const Fd& socket, status_t status, const Parcel& reply,
                 const Attachments& attachments, const std::atomic<uint32_t>& oneWaysDone) {
    const Header header = {0, Kind::Reply, oneWaysDone.load(), status, 0, 0, 0, 0};
    const status_t sent = sendMessage(socket, header, reply, attachments);
    if (sent == FAILED_TRANSACTION && status == OK) {
        // Perhaps there are no descriptors for what goes with it; then the caller at least hears
        // that.
        return failRequest(socket, oneWaysDone);
    }
    return sent == OK ? Served::Done : Served::Undelivered;
}

}  // namespace

Served serveRequest(BinderTranslator& translator, BBinder& node, Incoming& incoming,
                    const Fd& socket, const std::atomic<uint32_t>& oneWaysDone) {
    if (!attach(translator, incoming)) {
        return Served::Malformed;
    }
    Parcel reply;
    Attachments attachments;
    const pid_t caller = incoming.envelope.senderPid();
    const status_t ran = run(node, incoming, caller, &reply);
    const status_t status = statusOf(translator, ran, reply, caller, &attachments);
    if (status != OK) {
        reply.freeData();
        attachments = {};
    }
    return sendReply(socket, status, reply, attachments, oneWaysDone);
}

Served failRequest(const Fd& socket, const std::atomic<uint32_t>& oneWaysDone) {
    return sendReply(socket, FAILED_TRANSACTION, Parcel(), Attachments(), oneWaysDone);
}

Served serveOneWay(BinderTranslator& translator, BBinder& node, Incoming& incoming) {
    if (!attach(translator, incoming)) {
        return Served::Malformed;
    }
    Parcel unread;
    const pid_t caller = gManners.ofDriver ? 0 : incoming.envelope.senderPid();
    (void)run(node, incoming, caller, &unread);  // nobody waits for its status
    return Served::Done;
}

}  // namespace android::transport
