// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_TRANSACTIONCODES_H
#define VOXTREL_IPC_TRANSACTIONCODES_H

#include <cstdint>

namespace TTS {

/// Transaction codes of `ITextToSpeechFestival`. Fixed: services and clients in the field use them.
/// 4 and 6 to 9 were never assigned.
namespace transaction {
enum Code : uint32_t {
    kSay = 1,
    kSilence = 2,
    kStopAndFlush = 3,
    kSetEnable2 = 5,
    /// Shares a code with `kSetEnable2` and sends one value less; services read it as that.
    kSetEnable = 5,
    kSetVerbosity = 10,
    kSetGlobalRate = 11,
    kSetGlobalConfig = 12,
    kEnabled = 13,
    kEnabled2 = 14,
    kLanguage = 15,  ///< sent by the proxy, served by no stub; so are the next three
    kPitch = 16,
    kVoice = 17,
    kSpeed = 18,
    kVerbosity = 19,
    kGlobalRate = 20,
    kGlobalConfig = 21,
    kFactoryReset = 22,
    kRegisterCallback = 23,
    kDeregisterCallback = 24,
    kLock = 25,
    kUnlock = 26,
    kLocked = 27,
    kGetCapabilities = 28,
};
}  // namespace transaction

}  // namespace TTS

#endif
