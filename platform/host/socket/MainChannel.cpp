// SPDX-License-Identifier: Apache-2.0
#include "socket/MainChannel.h"

#include <poll.h>

namespace android::transport {

MainChannel::MainChannel(const ControlSocket& control,
                         std::shared_ptr<const DrainingSocket> predecessor)
    : mControl(control), mPredecessor(std::move(predecessor)) {}

status_t MainChannel::trySend(const Header& header, const Parcel& data,
                              const Attachments& attachments, PollTarget& target) {
    const bool oneWay = header.kind == Kind::OneWay;
    Mutex::Autolock held(mSendLock);
    Fd& socket = oneWay && mIsClosed ? mSecond : mSocket;
    status_t status = socket.valid() ? OK : mControl.open(Role::Calls, {}, &socket, target);
    if (status == OK && (oneWay ? !mayFollow(target) : !mWindow.mayGoBehind())) {
        status = WOULD_BLOCK;
    }
    if (status != OK) {
        return status;
    }
    target = {socket.get(), POLLOUT};
    status = sendMessage(socket, header, data, attachments);
    if (status == DEAD_OBJECT) {
        mIsClosed = true;
        mSecond.reset();
    } else if (oneWay && status == OK) {
        mWindow.noteSent(data.dataSize());
    }
    return status;
}

bool MainChannel::mayFollow(PollTarget& target) {
    if (mPredecessor != nullptr && !mPredecessor->isDrained()) {
        target = {mPredecessor->socket.get(), POLLRDHUP};
        return false;
    }
    mPredecessor.reset();
    return true;
}

Fd MainChannel::takeUndrained() {
    Mutex::Autolock held(mSendLock);
    if (mIsClosed) {
        return std::move(mSecond);
    }
    return mWindow.allDone() ? Fd() : std::move(mSocket);
}

}  // namespace android::transport
