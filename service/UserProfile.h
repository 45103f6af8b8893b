// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_USERPROFILE_H
#define VOXTREL_SERVICE_USERPROFILE_H

#include <string>

namespace voxtreld {

/// The profile of a service that runs for one user of a PC: voxtrel/voxtrel.ini in $XDG_STATE_HOME,
/// or in ~/.local/state where that is not set to a full path. Its folder is made, for the user
/// alone, where it is not there.
/// @return empty, with `error` saying what is wrong and what to do, when it cannot be had.
std::string userProfile(std::string& error);

}  // namespace voxtreld

#endif
