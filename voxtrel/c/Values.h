// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_C_VALUES_H
#define VOXTREL_C_VALUES_H

#include <cmath>
#include <optional>
#include <string>
#include <type_traits>

#include "voxtrel/c/Border.h"

/// How C sets and reads the optional values of options and settings.
namespace voxtrel::c {

template <typename Handle, typename Values>
vx_status set(Handle* handle, std::optional<std::string> Values::*value,
              const char* text) noexcept {
    if (!areGiven(handle, text)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        handle->*value = std::string(text);
        return VX_OK;
    });
}

template <typename Handle, typename Values, typename Number>
vx_status set(Handle* handle, std::optional<Number> Values::*value, Number number) noexcept {
    if (!areGiven(handle)) {
        return VX_BAD_PARAMETER;
    }
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) {
            return badParameter("a number is not finite");
        }
    }
    handle->*value = number;
    return VX_OK;
}

template <typename Handle, typename Values, typename Value, typename Out>
vx_status get(const Handle* handle, std::optional<Value> Values::*value, Out* out) noexcept {
    if (!areGiven(handle, out)) {
        return VX_BAD_PARAMETER;
    }
    if (!(handle->*value)) {
        return fail(VX_NOT_SET);
    }
    if constexpr (std::is_same_v<Value, std::string>) {
        *out = (handle->*value)->c_str();
    } else {
        *out = static_cast<Out>(*(handle->*value));
    }
    return VX_OK;
}

}  // namespace voxtrel::c

#endif
