// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Diagnosis.h"

#include <system_error>

namespace voxtrel {
namespace {

std::string nameOf(const Peer& peer) {
    const std::string process = "process " + std::to_string(peer.process);
    if (peer.isStopped) {
        return " (" + process + " is stopped): continue it, or end it and start it again";
    }
    return (peer.process != 0 ? " (" + process + ")" : "") + ": it may be stopped";
}

std::string withPath(const Diagnosis& seen) {
    if (seen.path.empty()) {
        return "";
    }
    const std::string why =
        seen.error != 0 ? ": " + std::generic_category().message(seen.error) : "";
    return " (" + seen.path + why + ")";
}

std::string strangerIn(const Peer& service) {
    if (!service.user) {
        return "the service manager does not tell whose the service is: start a newer one";
    }
    return "the service is that of user " + std::to_string(*service.user) +
           ", who could read what is said, and was not asked for anything: name that user as "
           "trusted if you trust it";
}

}  // namespace

Error Diagnosis::whyNot() const {
    switch (reach) {
        case Reach::NoManager:
            if (transport == "driver" && error != 0) {
                return {Status::ServiceNotFound,
                        "there is no binder driver" + withPath(*this) + ": load it"};
            }
            return {Status::ServiceNotFound,
                    "there is no service manager" + withPath(*this) + ": start it"};
        case Reach::ManagerNotPermitted:
            return {Status::PermissionDenied, "this user may not talk to the service manager" +
                                                  withPath(*this) + ": ask whoever runs it"};
        case Reach::ManagerSilent:
            return {Status::Unresponsive, "the service manager does not answer" + nameOf(manager)};
        case Reach::NoService:
            return {Status::ServiceNotFound, describe(Status::ServiceNotFound)};
        case Reach::NotTrusted:
            return {Status::PermissionDenied, strangerIn(service)};
        case Reach::ServiceSilent:
            return {Status::Unresponsive, "the service does not answer" + nameOf(service)};
        case Reach::Loading:
            return {Status::NoService, "the service is loading its voices: wait a little longer"};
        case Reach::NotAdmitted:
            return {Status::PermissionDenied,
                    "the service does not let this user in, or has too many clients: ask whoever "
                    "runs it"};
        default:
            return {};
    }
}

}  // namespace voxtrel
