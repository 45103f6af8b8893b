// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Outcome.h"

namespace voxtrel {
namespace {

const char* stoppedBy(Outcome::Stopper stopper) {
    switch (stopper) {
        case Outcome::Stopper::ThisClient:
            return "stopped by this client";
        case Outcome::Stopper::ThisProcess:
            return "stopped by another client of this process";
        default:
            return "stopped by another process";
    }
}

}  // namespace

const char* Outcome::message() const noexcept {
    switch (mKind) {
        case Kind::Pending:
            return "still speaking, or waiting for its turn";
        case Kind::Finished:
            return "spoken to its end";
        case Kind::Stopped:
            return mStatus == Status::Ok ? stoppedBy(mStopper) : describe(mStatus);
        default:
            return describe(mStatus);
    }
}

}  // namespace voxtrel
