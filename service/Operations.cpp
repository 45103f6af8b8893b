// SPDX-License-Identifier: Apache-2.0
#include "service/Operations.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace voxtreld {
namespace {

namespace transaction = TTS::transaction;

// In the order of `Operation`.
constexpr OperationRule kRules[] = {
    {Operation::Say, "say", transaction::kSay, Permission::Speak, Refusal::InStopped},
    {Operation::Silence, "silence", transaction::kSilence, Permission::Speak, Refusal::InStopped},
    // Never spoken: its refusal tells a client that all before it was served.
    {Operation::SilenceTooLong, "silence", transaction::kSilence, Permission::Connect,
     Refusal::InStopped},
    {Operation::StopOwn, "stopAndFlush", transaction::kStopAndFlush, Permission::Connect,
     Refusal::InState},
    {Operation::StopAll, "stopAndFlush", transaction::kStopAndFlush, Permission::StopOthers,
     Refusal::InState},
    {Operation::SetEnable, "setEnable", transaction::kSetEnable, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetEnable2, "setEnable2", transaction::kSetEnable2, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetVerbosity, "setVerbosity", transaction::kSetVerbosity, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetGlobalRate, "setGlobalRate", transaction::kSetGlobalRate, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetGlobalConfig, "setGlobalConfig", transaction::kSetGlobalConfig,
     Permission::Settings, Refusal::InStatus},
    {Operation::FactoryReset, "factoryReset", transaction::kFactoryReset, Permission::Settings,
     Refusal::InStatus},
    {Operation::Enabled, "enabled", transaction::kEnabled, Permission::Connect, Refusal::InCall},
    {Operation::Enabled2, "enabled2", transaction::kEnabled2, Permission::Connect,
     Refusal::InStatus},
    {Operation::Verbosity, "verbosity", transaction::kVerbosity, Permission::Connect,
     Refusal::InCall},
    {Operation::GlobalRate, "globalRate", transaction::kGlobalRate, Permission::Connect,
     Refusal::InCall},
    {Operation::GlobalConfig, "globalConfig", transaction::kGlobalConfig, Permission::Connect,
     Refusal::InStatus},
    {Operation::RegisterCallback, "registerCallback", transaction::kRegisterCallback,
     Permission::Connect, Refusal::InStatus},
    {Operation::DeregisterCallback, "deregisterCallback", transaction::kDeregisterCallback,
     Permission::Connect, Refusal::InStatus},
    {Operation::Lock, "lock", transaction::kLock, Permission::Lock, Refusal::InState},
    {Operation::Unlock, "unlock", transaction::kUnlock, Permission::Lock, Refusal::InState},
    {Operation::BreakLock, "unlock", transaction::kUnlock, Permission::BreakLock, Refusal::InState},
    {Operation::Locked, "locked", transaction::kLocked, Permission::Connect, Refusal::InCall},
};

constexpr bool isInOrder() {
    for (size_t i = 0; i < std::size(kRules); ++i) {
        if (static_cast<size_t>(kRules[i].operation) != i) {
            return false;
        }
    }
    return std::size(kRules) == static_cast<size_t>(Operation::Locked) + 1;
}
static_assert(isInOrder(), "they are found by their place");

}  // namespace

const OperationRule& ruleOf(Operation operation) {
    return kRules[static_cast<size_t>(operation)];
}

std::optional<Operation> bareOperation(uint32_t code) {
    const auto* found =
        std::find_if(std::begin(kRules), std::end(kRules), [code](const OperationRule& rule) {
            return rule.transaction.code == code && rule.refusal == Refusal::InCall;
        });
    return found == std::end(kRules) ? std::nullopt : std::optional(found->operation);
}

}  // namespace voxtreld
