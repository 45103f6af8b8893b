// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrel_process/Calls.h"

namespace voxtrel_test {

using voxtrel::Client;
using voxtrel::Milliseconds;
using voxtrel::Switch;

const std::vector<Call>& waitingCalls() {
    static const std::vector<Call> calls = {
        {"waitUntilConnected",
         [](Client& c, Milliseconds d) { return c.waitUntilConnected(d).error(); }},
        {"features", [](Client& c, Milliseconds d) { return c.features(d).error(); }},
        {"settings", [](Client& c, Milliseconds d) { return c.settings(d).error(); }},
        {"change",
         [](Client& c, Milliseconds d) {
             voxtrel::GlobalSettings settings;
             settings.speed = 200;
             return c.change(settings, d).error();
         }},
        {"isOn", [](Client& c, Milliseconds d) { return c.isOn(Switch::Speech, d).error(); }},
        {"turn", [](Client& c, Milliseconds d) { return c.turn(Switch::Speed, true, d).error(); }},
        {"resetSettings", [](Client& c, Milliseconds d) { return c.resetSettings(d).error(); }},
        {"stopEverybody", [](Client& c, Milliseconds d) { return c.stopEverybody(d).error(); }},
        {"lock", [](Client& c, Milliseconds d) { return c.lock(d).error(); }},
    };
    return calls;
}

}  // namespace voxtrel_test
