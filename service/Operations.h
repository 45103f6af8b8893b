// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_OPERATIONS_H
#define VOXTREL_SERVICE_OPERATIONS_H

#include <cstdint>
#include <optional>

#include "ipc/TransactionCodes.h"
#include "service/Permission.h"

namespace voxtreld {

/// Requests, told apart as far as they need different permissions.
enum class Operation {
    Say,
    Silence,
    SilenceTooLong,
    StopOwn,
    StopAll,
    SetEnable,
    SetEnable2,
    SetVerbosity,
    SetGlobalRate,
    SetGlobalConfig,
    FactoryReset,
    Enabled,
    Enabled2,
    Verbosity,
    GlobalRate,
    GlobalConfig,
    RegisterCallback,
    DeregisterCallback,
    Lock,
    Unlock,
    BreakLock,
    Locked,
};

/// How a client learns that it was refused.
enum class Refusal {
    InStatus,   ///< the reply has a status
    InStopped,  ///< EVENT_STOPPED with the number of the utterance
    InState,    ///< EVENT_STATE, STATE_REFUSED
    InCall,     ///< neither status nor process id on the wire: the call itself fails
};

/// The permission that an operation needs, and how a refusal is reported.
struct OperationRule {
    Operation operation;
    const char* name;  ///< in the log
    TTS::Transaction transaction;
    Permission permission;
    Refusal refusal;
};

const OperationRule& ruleOf(Operation operation);

/// The operation of a transaction that names no process, so that it is judged as it arrives.
std::optional<Operation> bareOperation(uint32_t code);

}  // namespace voxtreld

#endif
