// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_C_HANDLES_H
#define VOXTREL_C_HANDLES_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "voxtrel/Client.h"
#include "voxtrel/Profile.h"
#include "voxtrel/c/Border.h"
#include "voxtrel/testing/FakeService.h"
#include "voxtrel/testing/fake.h"
#include "voxtrel/voxtrel.h"

/// What stands behind the handles of C.

struct vx_client {
    voxtrel::Client client;
    const bool isPolled;  ///< VX_THREAD_OF_APPLICATION
};

struct vx_client_options : voxtrel::ClientOptions {};

struct vx_utterance {
    voxtrel::Utterance utterance;
};

struct vx_options : voxtrel::SpeechOptions {};
struct vx_settings : voxtrel::GlobalSettings {};

struct vx_features : voxtrel::Features {};

struct vx_lock {
    voxtrel::Lock lock;
};

struct vx_diagnosis {
    voxtrel::Diagnosis seen;
    voxtrel::Error why;  ///< there is no connection
};

struct vx_profile {
    voxtrel::Profile profile;
};

struct vx_fake {
    voxtrel::testing::FakeService service;
};

struct vx_texts {
    std::vector<std::string> texts;
};

namespace voxtrel::c {

/// Makes a handle of `value` for C to own.
template <typename Handle, typename... Values>
vx_status create(Handle** handle, Values&&... values) noexcept {
    if (!areGiven(handle)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        *handle = new Handle{std::forward<Values>(values)...};
        return VX_OK;
    });
}

template <typename Handle>
vx_status destroy(Handle* handle) noexcept {
    if (!areGiven(handle)) {
        return VX_BAD_PARAMETER;
    }
    delete handle;
    return VX_OK;
}

/// Calls `handler`, which may be null, for what happens from now on; on a thread that is in
/// `vx_next_event`, gives the event to that.
void listen(vx_client& client, vx_handler handler, void* user);

vx_outcome toC(const Outcome& outcome) noexcept;
vx_event toC(const Event& event) noexcept;

}  // namespace voxtrel::c

#endif
