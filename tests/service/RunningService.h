// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICE_RUNNINGSERVICE_H
#define VOXTREL_TESTS_SERVICE_RUNNINGSERVICE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/service/Processes.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {

/// A line of `speech_client`.
struct EventLine {
    unsigned event = 0;
    unsigned second = 0;
    int third = 0;
    bool isEvent = false;
};

std::string eventLine(unsigned event, unsigned second, int third);

/// The service as it runs: service manager, voxtreld and clients, each a process of its own.
class ARunningService : public testing::Test {
protected:
    ARunningService();

    Process startService(const Lines& options);

    /// Events until so many utterances have had their terminal event; `lines` were read before.
    static std::vector<EventLine> eventsUntilEnded(ChildProcess& client, size_t utterances,
                                                   Lines lines = {});

    /// Each id from 1 to `count` has one start, then one end, of that kind.
    static void expectOneLifeEach(const std::vector<EventLine>& events, unsigned count,
                                  unsigned end);

    voxtrel_test::TempFolder folder;
    Process manager;
};

}  // namespace voxtreld

#endif
