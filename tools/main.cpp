// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "tools/Arguments.h"
#include "tools/CommandTable.h"
#include "tools/Errors.h"
#ifdef VOXTREL_CAN_SPAWN
#include "tools/Spawn.h"
#endif

namespace {

using namespace voxtrelctl;

/// What this program opens must not become the standard output or error of a caller that has closed
/// them. What is written there fails as before.
void fillStandardFiles() {
    int file = STDIN_FILENO;
    while (file >= STDIN_FILENO && file <= STDERR_FILENO) {
        file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    close(file);
}

/// Chooses what the platform's log shows: only what is asked for, because it says what this
/// program's own progress and error lines say. An environment that sets the level is left alone.
void quietLog(bool verbose) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has been started
    (void)setenv("VOXTREL_LOG_LEVEL", verbose ? "2" : "-1", 0);
}

/// Of VX_NO_MEMORY, as if it had come from the library.
constexpr const char* kOutOfMemory = "-200 out of memory: free some and repeat the command";

constexpr const char* kNoThread =
    "no thread can be started: this user, or the machine, has too many; repeat the command";

/// For what another thread throws, and what is thrown where nothing may be.
[[noreturn]] void endAtOnce() {
    const std::exception_ptr caught = std::current_exception();
    try {
        if (caught != nullptr) {
            std::rethrow_exception(caught);
        }
        printError("it does not know how to go on");
    } catch (const std::bad_alloc&) {
        printError(kOutOfMemory);
    } catch (const std::exception& error) {
        printError(error.what());
    } catch (...) {
        printError("an exception of unknown type");
    }
    std::_Exit(EXIT_FAILURE);
}

int run(const Options& options) {
    if (options.command == Command::Help) {
        Terminal(false).print(options.helpText);
        return EXIT_SUCCESS;
    }
    quietLog(options.verbose);
    Terminal terminal(options.verbose);
#ifdef VOXTREL_CAN_SPAWN
    if (options.spawn) {
        ensureRunning(options, terminal);
    }
#endif
    for (const CommandEntry& entry : commandTable()) {
        if (entry.command == options.command) {
            return entry.run(options, terminal);
        }
    }
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    std::set_terminate(endAtOnce);
    fillStandardFiles();
    try {
        return run(parseArguments(argc, argv));
    } catch (const std::bad_alloc&) {
        printError(kOutOfMemory);
    } catch (const std::system_error& error) {
        const bool isNoThread = error.code() == std::errc::resource_unavailable_try_again;
        printError(isNoThread ? kNoThread : error.what());
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return EXIT_FAILURE;
}
