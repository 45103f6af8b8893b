// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_ACCOUNTS_H
#define VOXTREL_SERVICEMANAGER_ACCOUNTS_H

#include <sys/types.h>

#include <string>

namespace servicemanager {

/// The user, or group, of that name, or of that number, which need not have a name. False when
/// there is none. Called on: the main thread, before there are others.
bool findUser(const std::string& text, uid_t& user);
bool findGroup(const std::string& text, gid_t& group);

}  // namespace servicemanager

#endif
