// SPDX-License-Identifier: Apache-2.0
#include "binder/internal/ServeCall.h"

#include <cxxabi.h>

#include <exception>
#include <new>

#include "binder/IPCThreadState.h"
#include "support/Log.h"

namespace android {

/// The thread acts for a caller while it serves a call.
class CallingIdentity {
public:
    explicit CallingIdentity(const transport::Caller& caller)
        : mState(*IPCThreadState::self()), mPid(mState.mCallingPid), mUid(mState.mCallingUid) {
        mState.mCallingPid = caller.pid;
        mState.mCallingUid = caller.uid;
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

void logException(const Caller& caller, uint32_t code, const char* what) {
    logLimited("call %u from process %d ended with an exception: %s", code,
               static_cast<int>(caller.pid), what);
}

}  // namespace

// An exception that leaves an implementation would end the whole process for one bad request.
// A forced unwind reaches its handler as a null reference, which the sanitizer would report.
__attribute__((no_sanitize("null"))) status_t serveCall(BBinder& object, const Caller& caller,
                                                        uint32_t code, Parcel& data, Parcel* reply,
                                                        uint32_t flags) {
    const CallingIdentity identity(caller);
    status_t status = UNKNOWN_ERROR;
    try {
        status = object.transact(code, data, reply, flags);
    } catch (const std::bad_alloc& error) {
        status = NO_MEMORY;
        logException(caller, code, error.what());
    } catch (const std::exception& error) {
        logException(caller, code, error.what());
#ifdef __GLIBCXX__  // libc++ enters no handler then
    } catch (const abi::__forced_unwind&) {
        throw;  // the implementation ends its thread
#endif
    } catch (...) {
        logException(caller, code, "no std::exception");
    }
    data.freeData();
    return status;
}

}  // namespace transport

}  // namespace android
