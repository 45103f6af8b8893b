// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::Diagnosis;
using voxtrel::Peer;
using voxtrel::Reach;

static_assert(static_cast<int>(Reach::NoManager) == VX_REACH_NO_MANAGER);
static_assert(static_cast<int>(Reach::ManagerNotPermitted) == VX_REACH_MANAGER_NOT_PERMITTED);
static_assert(static_cast<int>(Reach::ManagerSilent) == VX_REACH_MANAGER_SILENT);
static_assert(static_cast<int>(Reach::NoService) == VX_REACH_NO_SERVICE);
static_assert(static_cast<int>(Reach::NotTrusted) == VX_REACH_NOT_TRUSTED);
static_assert(static_cast<int>(Reach::ServiceSilent) == VX_REACH_SERVICE_SILENT);
static_assert(static_cast<int>(Reach::Loading) == VX_REACH_LOADING);
static_assert(static_cast<int>(Reach::NotAdmitted) == VX_REACH_NOT_ADMITTED);
static_assert(static_cast<int>(Reach::Connected) == VX_REACH_CONNECTED);

namespace {

vx_status giveText(const vx_diagnosis* diagnosis, std::string Diagnosis::*field,
                   const char** text) noexcept {
    if (!areGiven(diagnosis, text)) {
        return VX_BAD_PARAMETER;
    }
    *text = (diagnosis->seen.*field).c_str();
    return VX_OK;
}

vx_status givePeer(const vx_diagnosis* diagnosis, Peer Diagnosis::*field, vx_peer* peer) noexcept {
    if (!areGiven(diagnosis, peer)) {
        return VX_BAD_PARAMETER;
    }
    const Peer& seen = diagnosis->seen.*field;
    *peer = {seen.process, seen.user ? 1 : 0, seen.user.value_or(0), seen.isStopped ? 1 : 0, {}};
    return VX_OK;
}

}  // namespace

vx_status vx_diagnose(vx_client* client, int deadline_ms, vx_diagnosis** diagnosis) {
    Deadline deadline;
    if (!areGiven(client, diagnosis) || !readDeadline(deadline_ms, deadline)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const Diagnosis seen = client->client.diagnose(deadline);
        return create(diagnosis, seen, seen.whyNot());
    });
}

vx_status vx_diagnosis_free(vx_diagnosis* diagnosis) {
    return destroy(diagnosis);
}

vx_status vx_diagnosis_reach(const vx_diagnosis* diagnosis, int* reach) {
    if (!areGiven(diagnosis, reach)) {
        return VX_BAD_PARAMETER;
    }
    *reach = static_cast<int>(diagnosis->seen.reach);
    return VX_OK;
}

vx_status vx_diagnosis_why_not(const vx_diagnosis* diagnosis, vx_status* why, const char** text) {
    if (!areGiven(diagnosis, why, text)) {
        return VX_BAD_PARAMETER;
    }
    *why = static_cast<vx_status>(diagnosis->why.status);
    *text = diagnosis->why.message.c_str();
    return VX_OK;
}

vx_status vx_diagnosis_transport(const vx_diagnosis* diagnosis, const char** transport) {
    return giveText(diagnosis, &Diagnosis::transport, transport);
}

vx_status vx_diagnosis_path(const vx_diagnosis* diagnosis, const char** path) {
    return giveText(diagnosis, &Diagnosis::path, path);
}

vx_status vx_diagnosis_error(const vx_diagnosis* diagnosis, int* error) {
    if (!areGiven(diagnosis, error)) {
        return VX_BAD_PARAMETER;
    }
    *error = diagnosis->seen.error;
    return VX_OK;
}

vx_status vx_diagnosis_manager(const vx_diagnosis* diagnosis, vx_peer* manager) {
    return givePeer(diagnosis, &Diagnosis::manager, manager);
}

vx_status vx_diagnosis_service(const vx_diagnosis* diagnosis, vx_peer* service) {
    return givePeer(diagnosis, &Diagnosis::service, service);
}

vx_status vx_diagnosis_takes_any_pause(const vx_diagnosis* diagnosis, int* takes) {
    if (!areGiven(diagnosis, takes)) {
        return VX_BAD_PARAMETER;
    }
    *takes = diagnosis->seen.takesAnyPause ? 1 : 0;
    return VX_OK;
}
