// SPDX-License-Identifier: Apache-2.0
// What a client sees on its way to the service, from C.
#include <cerrno>

#include "tests/voxtrel/c/InC.h"
#include "voxtrel/c/Handles.h"

namespace {

using voxtrel_test::AClientInC;
using voxtrel_test::InC;

TEST_F(AClientInC, DiagnosesThatThereIsNoServiceManager) {
    EXPECT_STREQ(nullptr,
                 missing_manager_is_diagnosed(mClient, mFolder.path("binder").c_str(), ENOENT));
}

TEST_F(InC, AConnectionIsDiagnosed) {
    EXPECT_STREQ(nullptr, connection_is_diagnosed());
}

void expectPeer(const voxtrel::Peer& expected, const vx_peer& peer) {
    EXPECT_EQ(expected.process, peer.process);
    EXPECT_EQ(expected.user.has_value() ? 1 : 0, peer.user_known);
    EXPECT_EQ(expected.user.value_or(0), peer.user);
    EXPECT_EQ(expected.isStopped ? 1 : 0, peer.stopped);
}

TEST(ADiagnosisInC, TellsManagerFromService) {
    voxtrel::Diagnosis seen;
    seen.transport = "driver";
    seen.manager = {11, 1001, false};
    seen.service = {22, {}, true};
    const vx_diagnosis diagnosis = {seen, {}};
    vx_peer peer = {};
    EXPECT_EQ(VX_OK, vx_diagnosis_manager(&diagnosis, &peer));
    expectPeer(seen.manager, peer);
    EXPECT_EQ(VX_OK, vx_diagnosis_service(&diagnosis, &peer));
    expectPeer(seen.service, peer);
    const char* text = nullptr;
    EXPECT_EQ(VX_OK, vx_diagnosis_transport(&diagnosis, &text));
    EXPECT_STREQ("driver", text);
    EXPECT_EQ(VX_OK, vx_diagnosis_path(&diagnosis, &text));
    EXPECT_STREQ("", text);
}

TEST(ADiagnosisInC, TellsOfAServiceThatTakesAnyPause) {
    vx_diagnosis diagnosis = {};
    int takes = 7;
    EXPECT_EQ(VX_OK, vx_diagnosis_takes_any_pause(&diagnosis, &takes));
    EXPECT_EQ(0, takes);
    diagnosis.seen.takesAnyPause = true;
    EXPECT_EQ(VX_OK, vx_diagnosis_takes_any_pause(&diagnosis, &takes));
    EXPECT_EQ(1, takes);
}

}  // namespace
