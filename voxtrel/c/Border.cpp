// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Border.h"

#include <cstdio>

#include "voxtrel/Status.h"

static_assert(static_cast<int>(voxtrel::Switch::Speech) == VX_SWITCH_SPEECH);
static_assert(static_cast<int>(voxtrel::Switch::Speed) == VX_SWITCH_SPEED);
static_assert(static_cast<int>(voxtrel::Switch::Pitch) == VX_SWITCH_PITCH);
static_assert(static_cast<int>(voxtrel::Switch::Voice) == VX_SWITCH_VOICE);
static_assert(static_cast<int>(voxtrel::Switch::Volume) == VX_SWITCH_VOLUME);
static_assert(static_cast<int>(voxtrel::Switch::MediaVolume) == VX_SWITCH_MEDIA_VOLUME);
static_assert(static_cast<int>(voxtrel::Switch::SpeechVolume) == VX_SWITCH_SPEECH_VOLUME);

namespace voxtrel::c {
namespace {

// No string: to note that memory ran out must not take any.
thread_local char lastError[512] = "";

const char* meaningOf(vx_status status) noexcept {
    switch (status) {
        case VX_NO_MEMORY:
            return "memory or threads ran out: nothing was done";
        case VX_NO_EVENT:
            return "nothing has happened since the last event: poll the client's descriptor";
        case VX_NOT_SET:
            return "the value is not set";
        case VX_FAILED:
            return "an error that has no status of its own: vx_last_error tells which";
        default:
            return describe(static_cast<Status>(status));
    }
}

}  // namespace

vx_status fail(vx_status status, const char* why) noexcept {
    std::snprintf(lastError, sizeof lastError, "%s", why);
    return status;
}

vx_status fail(vx_status status) noexcept {
    return fail(status, meaningOf(status));
}

vx_status statusOf(const std::exception_ptr& caught) noexcept {
    try {
        std::rethrow_exception(caught);
    } catch (const std::bad_alloc&) {
        return fail(VX_NO_MEMORY);
    } catch (const std::system_error& error) {
        const bool isScarce = error.code() == std::errc::resource_unavailable_try_again;
        return fail(isScarce ? VX_NO_MEMORY : VX_FAILED, error.what());
    } catch (const std::exception& error) {
        return fail(VX_FAILED, error.what());
    } catch (...) {
        return fail(VX_FAILED, "an exception of unknown type");
    }
}

bool readDeadline(int milliseconds, Deadline& deadline) noexcept {
    if (milliseconds < 0 && milliseconds != VX_CLIENT_DEADLINE) {
        badParameter("a deadline is neither VX_CLIENT_DEADLINE nor milliseconds from 0");
        return false;
    }
    deadline = milliseconds < 0 ? Deadline() : Deadline(milliseconds);
    return true;
}

bool readTimeout(int milliseconds, Deadline& timeout) noexcept {
    if (milliseconds < 0 && milliseconds != VX_FOREVER) {
        badParameter("a timeout is neither VX_FOREVER nor milliseconds from 0");
        return false;
    }
    timeout = milliseconds < 0 ? Deadline() : Deadline(milliseconds);
    return true;
}

bool readSwitch(int number, Switch& which) noexcept {
    if (number < VX_SWITCH_SPEECH || number > VX_SWITCH_SPEECH_VOLUME) {
        badParameter("there is no such switch");
        return false;
    }
    which = static_cast<Switch>(number);
    return true;
}

}  // namespace voxtrel::c

using namespace voxtrel::c;

vx_status vx_describe(vx_status status, const char** text) {
    if (!areGiven(text)) {
        return VX_BAD_PARAMETER;
    }
    *text = meaningOf(status);
    return VX_OK;
}

vx_status vx_last_error(const char** text) {
    if (!areGiven(text)) {
        return VX_BAD_PARAMETER;
    }
    *text = lastError;
    return VX_OK;
}
