// SPDX-License-Identifier: Apache-2.0
#include <type_traits>

#include "check/Peer.h"
#include "check/PeerNode.h"
#include "check/Probe.h"
#include "check/Row.h"
#include "check/Slots.h"

namespace check {
namespace {

using android::sp;

bool isName(const android::String16& name) {
    return name == android::String16("voxtrel.platform.check.IProbe");
}

Result interfaceMacros() {
    const sp<BnProbe> local = new BnProbe();
    const bool hasName = isName(IProbe::descriptor) &&
                         isName(static_cast<IProbe*>(local.get())->getInterfaceDescriptor());
    const bool nullIsNull = IProbe::asInterface(nullptr) == nullptr;
    const sp<IProbe> found = IProbe::asInterface(android::IInterface::asBinder(local));
    const bool isFound = found != nullptr;
    return require(hasName && nullIsNull && isFound,
                   std::string(hasName ? "the name given" : "another name than was given") +
                       ", null for " + (nullIsNull ? "null" : "nothing") +
                       (isFound ? ", an interface for a binder" : ", none for a binder"));
}

Result asBinder() {
    const sp<android::IInterface> none;
    const bool nullIsNull = android::IInterface::asBinder(none) == nullptr;
    const size_t slot = AsBinderSlot::get();
    const sp<BnProbe> local = new BnProbe();
    const bool isItself = slot == 2 && android::IInterface::asBinder(local).get() ==
                                           static_cast<android::IBinder*>(local.get());
    return require(nullIsNull && isItself,
                   std::string(nullIsNull ? "null gives null" : "null gives something") +
                       ", onAsBinder in slot " + std::to_string(slot));
}

Result localInterface() {
    const sp<BnProbe> local = new BnProbe();
    const sp<android::IBinder> binder = local;
    if (binder->queryLocalInterface(android::String16("voxtrel.platform.check")) != nullptr) {
        return require(false, "the beginning of a name is taken for the name");
    }
    const bool isItself = IProbe::asInterface(binder).get() == static_cast<IProbe*>(local.get());
    return prefer(isItself, isItself ? "the object itself" : "a proxy");
}

Result nullRemote() {
    const sp<BpProbe> proxy = new BpProbe(nullptr);
    const bool isNull = !proxy->hasRemote();
    return require(isNull, isNull ? "null" : "not null");
}

Result unknownCodes() {
    const Peer peer;
    const android::Parcel request;
    android::Parcel local;
    android::Parcel remote;
    const sp<android::IBinder> node = new BnProbe();
    const android::status_t here = node->transact(999, request, &local, 0);
    const android::status_t there = peer.node()->transact(999, request, &remote, 0);
    const bool isEmpty = local.dataSize() == 0 && remote.dataSize() == 0;
    return require(isEmpty, "status " + std::to_string(here) + " here, " + std::to_string(there) +
                                " elsewhere, " + (isEmpty ? "empty replies" : "with a reply"));
}

struct Service {};

Result binderService() {
    const bool isEmpty = std::is_empty<android::BinderService<Service>>::value;
    return require(isEmpty, isEmpty ? "no data" : "data of its own");
}

}  // namespace

Rows interfaceRows() {
    return {
        {"interface-macros",
         "descriptor, asInterface, getInterfaceDescriptor with the classic meaning; no semicolon "
         "behind them; a narrow literal",
         "does not compile", interfaceMacros},
        {"as-binder", "null gives null", "the release is older than the static form: not supported",
         asBinder},
        {"local-interface", "compares the whole names (strzcmp16) and gives the object itself",
         "a service in the same process is called through a proxy: correct, slower",
         localInterface},
        {"null-remote", "null when made from null; const",
         "operations without a service would crash in place of giving -5", nullRemote},
        {"unknown-codes", "answers what no interface knows; the reply stays empty",
         "a client reading an answer to code 15 to 18 gets what the platform wrote", unknownCodes},
        {"binder-service", "a base without data", "the size of Callback differs", binderService},
    };
}

}  // namespace check
