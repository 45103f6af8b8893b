// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PRECONDITIONS_H
#define VOXTREL_SERVICE_PRECONDITIONS_H

#include <string>

namespace voxtreld {

/// True if the profile is a file or not there yet. Opening a FIFO would hang, and replacing a
/// device by a file would do harm. @param error receives what is wrong and what to do.
bool isUsableProfile(const std::string& path, std::string& error);

/// True if the process may have as many file descriptors open as it takes to serve clients; raises
/// the soft limit where the hard one allows it. @param error receives what to do.
bool haveDescriptors(std::string& error);

}  // namespace voxtreld

#endif
