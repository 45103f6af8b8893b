// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_IPC_TRANSACTIONCASES_H
#define VOXTREL_TESTS_IPC_TRANSACTIONCASES_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingService.h"

/// One transaction of the service interface as a row: what is asked of the proxy, what that must
/// look like on the wire, and what a service must see and answer.
struct TransactionCase {
    const char* dump;  ///< golden/<dump>.txt
    /// Calls the proxy with the dump's request; gives what the call brought back, as text.
    std::string (*ask)(TTS::BpTextToSpeechFestival& proxy);
    const char* answer;   ///< what `ask` gives on the dump's reply
    const char* unasked;  ///< what `ask` gives on a proxy without a remote
    const char* silent;   ///< what `ask` gives when no reply comes
    const char* call;     ///< the service's one call; null where the stub makes none
};

/// Every row of the transaction table, setters and getters of configuration once a kind of value.
const std::vector<TransactionCase>& transactionCases();

/// The name of a row as the name of a test.
std::string transactionCaseName(const testing::TestParamInfo<TransactionCase>& each);

/// A service with the answers that the dumps hold.
android::sp<support::RecordingService> serviceOfTheDumps();

#endif
