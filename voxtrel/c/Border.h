// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_C_BORDER_H
#define VOXTREL_C_BORDER_H

#include <chrono>
#include <exception>
#include <new>
#include <optional>
#include <system_error>

#include "voxtrel/Result.h"
#include "voxtrel/Settings.h"
#include "voxtrel/voxtrel.h"

/// What keeps exceptions out of C. Called on: any thread.
namespace voxtrel::c {

/// Notes why a call on this thread failed, for `vx_last_error`.
/// @return `status`.
vx_status fail(vx_status status, const char* why) noexcept;
vx_status fail(vx_status status) noexcept;

inline vx_status badParameter(const char* why) noexcept {
    return fail(VX_BAD_PARAMETER, why);
}

/// Whether none of these pointers is null; notes it otherwise.
template <typename... Pointers>
bool areGiven(const Pointers*... pointers) noexcept {
    const bool given = (... && (pointers != nullptr));
    if (!given) {
        badParameter("a handle or pointer that must not be null is null");
    }
    return given;
}

/// The status of what is under way as the exception `caught`.
vx_status statusOf(const std::exception_ptr& caught) noexcept;

/// Runs `work`, which returns a status; what it throws becomes one.
template <typename Work>
vx_status guarded(Work work) noexcept {
    try {
        return work();
    } catch (...) {
        return statusOf(std::current_exception());
    }
}

/// The status of a result, and its value where there is one.
template <typename Value, typename Take>
vx_status finish(Result<Value>&& result, Take take) {
    if (!result) {
        return fail(static_cast<vx_status>(result.status()), result.message());
    }
    take(std::move(*result));
    return VX_OK;
}

inline vx_status finish(const Result<void>& result) noexcept {
    return result ? VX_OK : fail(static_cast<vx_status>(result.status()), result.message());
}

/// The deadline of a request; unset: the client's own.
using Deadline = std::optional<std::chrono::milliseconds>;

/// Reads the deadline of a request.
/// @return false, and notes it, if it is none.
bool readDeadline(int milliseconds, Deadline& deadline) noexcept;

/// Reads how long to wait for speech; unset: for ever.
/// @return false, and notes it, if it is no time.
bool readTimeout(int milliseconds, Deadline& timeout) noexcept;

/// Reads which switch of the service is meant.
/// @return false, and notes it, if there is none of that number.
bool readSwitch(int number, Switch& which) noexcept;

}  // namespace voxtrel::c

#endif
