// SPDX-License-Identifier: Apache-2.0
// The interface prints nothing, whatever happens.
#include <gtest/gtest.h>

#include "tests/support/Roles.h"
#include "tests/support/TempFolder.h"
#include "tests/voxtrel_process/Calls.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Event;
using voxtrel::Milliseconds;

namespace {

void useAll(Client& client, const std::string& folder) {
    for (const Call& call : waitingCalls()) {
        (void)call.make(client, Milliseconds(200));
    }
    (void)client.say("Hello.").wait(Milliseconds(1000));
    (void)client.say("Bonjour.", {/*language=*/"fr"}).wait(Milliseconds(1000));
    (void)client.saveProfile(folder + "/quiet.ini");
    (void)client.loadProfile(folder + "/quiet.ini");
    (void)client.saveProfile(folder + "/none/quiet.ini");
    (void)client.loadProfile(folder + "/none/quiet.ini");
    client.stop();
}

/// Everything, with a service that comes and goes.
int liveQuietly(const Arguments& /*arguments*/) {
    Machine machine;
    {
        Recorder events;
        Client client;
        events.listenTo(client);
        useAll(client, machine.path("."));
        machine.startService({"--real-time"});
        (void)client.waitUntilConnected(kLimit);
        useAll(client, machine.path("."));
        machine.stopService();
        useAll(client, machine.path("."));
        machine.killService();
        (void)events.awaits(Event::Kind::Disconnected);
        machine.startService();
        (void)events.awaits(Event::Kind::Connected, 2);
        machine.shutDownService();
        (void)events.awaits(Event::Kind::Disconnected, 2);
        machine.killManager();
        useAll(client, machine.path("."));
    }
    return 0;
}

const Role kLiveQuietly("liveQuietly", liveQuietly);

TEST(TheInterface, PrintsNothing) {
    setenv("VOXTREL_BINDER_SEED", "7", 1);  // the runtime logs one that it draws
    setenv("VOXTREL_LANGUAGE_WITH_VOICES", "fr_FR.none", 1);
    ChildProcess process({ownPath(), "--role=liveQuietly"}, "");
    const auto outcome = process.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "");
}

}  // namespace
