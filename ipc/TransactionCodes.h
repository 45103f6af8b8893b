// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_TRANSACTIONCODES_H
#define VOXTREL_IPC_TRANSACTIONCODES_H

#include <cstdint>

#include "ipc/BinderHeaders.h"

namespace TTS {

/// A transaction of the interface: its code, and how it is sent.
struct Transaction {
    uint32_t code;
    uint32_t flags;
};

/// The transactions of `ITextToSpeechFestival`. Fixed: services and clients in the field use them.
/// 4 and 6 to 9 were never assigned.
namespace transaction {

constexpr uint32_t kTwoWay = 0;
constexpr uint32_t kOneWay = android::IBinder::FLAG_ONEWAY;

constexpr Transaction kSay{1, kOneWay};
constexpr Transaction kSilence{2, kOneWay};
constexpr Transaction kStopAndFlush{3, kOneWay};
constexpr Transaction kSetEnable2{5, kTwoWay};
/// Shares a code with `kSetEnable2` and sends one value less; services read it as that.
constexpr Transaction kSetEnable{5, kTwoWay};
constexpr Transaction kSetVerbosity{10, kTwoWay};
constexpr Transaction kSetGlobalRate{11, kTwoWay};
constexpr Transaction kSetGlobalConfig{12, kTwoWay};
constexpr Transaction kEnabled{13, kTwoWay};
constexpr Transaction kEnabled2{14, kTwoWay};
/// Sent by the proxy, served by no stub; so are the next three.
constexpr Transaction kLanguage{15, kTwoWay};
constexpr Transaction kPitch{16, kTwoWay};
constexpr Transaction kVoice{17, kTwoWay};
constexpr Transaction kSpeed{18, kTwoWay};
constexpr Transaction kVerbosity{19, kTwoWay};
constexpr Transaction kGlobalRate{20, kTwoWay};
constexpr Transaction kGlobalConfig{21, kTwoWay};
constexpr Transaction kFactoryReset{22, kTwoWay};
constexpr Transaction kRegisterCallback{23, kTwoWay};
constexpr Transaction kDeregisterCallback{24, kTwoWay};
constexpr Transaction kLock{25, kOneWay};
constexpr Transaction kUnlock{26, kOneWay};
constexpr Transaction kLocked{27, kOneWay};
constexpr Transaction kGetCapabilities{28, kTwoWay};

}  // namespace transaction
}  // namespace TTS

#endif
