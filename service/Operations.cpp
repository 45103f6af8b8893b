// SPDX-License-Identifier: Apache-2.0
#include "service/Operations.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "ipc/TransactionCodes.h"

namespace voxtreld {
namespace {

namespace code = TTS::transaction;

// In the order of `Operation`.
constexpr OperationRule kRules[] = {
    {Operation::Say, "say", code::kSay, Permission::Speak, Refusal::InStopped},
    {Operation::Silence, "silence", code::kSilence, Permission::Speak, Refusal::InStopped},
    // Never spoken: its refusal tells a client that all before it was served.
    {Operation::SilenceTooLong, "silence", code::kSilence, Permission::Connect, Refusal::InStopped},
    {Operation::StopOwn, "stopAndFlush", code::kStopAndFlush, Permission::Connect,
     Refusal::InState},
    {Operation::StopAll, "stopAndFlush", code::kStopAndFlush, Permission::StopOthers,
     Refusal::InState},
    {Operation::SetEnable, "setEnable", code::kSetEnable, Permission::Settings, Refusal::InStatus},
    {Operation::SetEnable2, "setEnable2", code::kSetEnable2, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetVerbosity, "setVerbosity", code::kSetVerbosity, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetGlobalRate, "setGlobalRate", code::kSetGlobalRate, Permission::Settings,
     Refusal::InStatus},
    {Operation::SetGlobalConfig, "setGlobalConfig", code::kSetGlobalConfig, Permission::Settings,
     Refusal::InStatus},
    {Operation::FactoryReset, "factoryReset", code::kFactoryReset, Permission::Settings,
     Refusal::InStatus},
    {Operation::Enabled, "enabled", code::kEnabled, Permission::Connect, Refusal::InCall},
    {Operation::Enabled2, "enabled2", code::kEnabled2, Permission::Connect, Refusal::InStatus},
    {Operation::Verbosity, "verbosity", code::kVerbosity, Permission::Connect, Refusal::InCall},
    {Operation::GlobalRate, "globalRate", code::kGlobalRate, Permission::Connect, Refusal::InCall},
    {Operation::GlobalConfig, "globalConfig", code::kGlobalConfig, Permission::Connect,
     Refusal::InStatus},
    {Operation::RegisterCallback, "registerCallback", code::kRegisterCallback, Permission::Connect,
     Refusal::InStatus},
    {Operation::DeregisterCallback, "deregisterCallback", code::kDeregisterCallback,
     Permission::Connect, Refusal::InStatus},
    {Operation::Lock, "lock", code::kLock, Permission::Lock, Refusal::InState},
    {Operation::Unlock, "unlock", code::kUnlock, Permission::Lock, Refusal::InState},
    {Operation::BreakLock, "unlock", code::kUnlock, Permission::BreakLock, Refusal::InState},
    {Operation::Locked, "locked", code::kLocked, Permission::Connect, Refusal::InCall},
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
            return rule.code == code && rule.refusal == Refusal::InCall;
        });
    return found == std::end(kRules) ? std::nullopt : std::optional(found->operation);
}

}  // namespace voxtreld
