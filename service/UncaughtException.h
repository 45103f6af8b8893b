// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTRELD_UNCAUGHTEXCEPTION_H
#define VOXTRELD_UNCAUGHTEXCEPTION_H

namespace voxtreld {

/// Ends the process at once, with status 1 and one line about the exception that is being handled.
/// Nothing that was acknowledged is lost: it is on the disk before it is. Takes no memory. Also the
/// handler for `std::set_terminate`. Called on: any thread.
[[noreturn]] void endAtOnce() noexcept;

}  // namespace voxtreld

#endif
