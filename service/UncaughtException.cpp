// SPDX-License-Identifier: Apache-2.0
#include "service/UncaughtException.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

namespace voxtreld {
namespace {

/// For writing only; the type has no const.
iovec partOf(std::string_view text) {
    return {const_cast<char*>(text.data()), text.size()};
}

/// Not by the log, which takes memory.
void write(std::string_view what) {
    const iovec parts[] = {partOf("voxtreld: "), partOf(what), partOf("\n")};
    (void)!writev(STDERR_FILENO, parts, 3);
}

}  // namespace

void endAtOnce() noexcept {
    const std::exception_ptr caught = std::current_exception();
    try {
        if (caught != nullptr) {
            std::rethrow_exception(caught);
        }
        write("it does not know how to go on");
    } catch (const std::bad_alloc&) {
        write("out of memory: it ends");
    } catch (const std::exception& error) {
        write(error.what());
    } catch (...) {
        write("an exception of unknown type");
    }
    std::_Exit(EXIT_FAILURE);
}

}  // namespace voxtreld
