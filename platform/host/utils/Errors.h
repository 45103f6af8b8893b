// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_ERRORS_H
#define VOXTREL_UTILS_ERRORS_H

#include <cerrno>
#include <cstdint>
#include <limits>

namespace android {

/// Result of a runtime call: 0 or one of the negative values below.
using status_t = int32_t;

enum {
    OK = 0,
    NO_ERROR = OK,

    UNKNOWN_ERROR = std::numeric_limits<int32_t>::min(),

    NO_MEMORY = -ENOMEM,
    INVALID_OPERATION = -ENOSYS,
    BAD_VALUE = -EINVAL,
    BAD_TYPE = UNKNOWN_ERROR + 1,
    NAME_NOT_FOUND = -ENOENT,
    PERMISSION_DENIED = -EPERM,
    NO_INIT = -ENODEV,
    ALREADY_EXISTS = -EEXIST,
    DEAD_OBJECT = -EPIPE,
    FAILED_TRANSACTION = UNKNOWN_ERROR + 2,
    BAD_INDEX = -EOVERFLOW,
    NOT_ENOUGH_DATA = -ENODATA,
    WOULD_BLOCK = -EWOULDBLOCK,
    TIMED_OUT = -ETIMEDOUT,
    UNKNOWN_TRANSACTION = -EBADMSG,
    FDS_NOT_ALLOWED = UNKNOWN_ERROR + 7,
    UNEXPECTED_NULL = UNKNOWN_ERROR + 8,
};

}  // namespace android

#endif
