// SPDX-License-Identifier: Apache-2.0
#include "check/Options.h"

#include <getopt.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "check/Row.h"

namespace check {
namespace {

constexpr const char* kHelp =
    "Usage: voxtrel-platform-check [OPTIONS] [ROW...]\n"
    "\n"
    "Tests the binder runtime and the TTS common library of this device against what the\n"
    "Voxtrel client library relies on, with a second process of its own. Prints a line for\n"
    "each row of platform/README.md: what was seen, what is relied on, and what happens\n"
    "otherwise. It needs a service manager, and the right to register a service.\n"
    "\n"
    "Options:\n"
    "  -h, --help                  Print this help and exit\n"
    "  -V, --version               Print the version and exit\n"
    "  -l, --list                  Print the rows and exit\n"
    "  --deadline SECONDS          How long a row may take (1 to 600; default: 20)\n"
    "  --restart-manager COMMAND   Check what happens when COMMAND, for the shell, restarts\n"
    "                              the service manager\n"
    "  --verbose                   Show what the runtime logs\n"
    "\n"
    "Exit status: 0 when the library can rely on everything; 1 when it cannot, or when a row\n"
    "could not be checked; 2 when the command line is wrong.\n";

enum : int { kDeadlineOption = 256, kRestartOption, kVerboseOption };

constexpr option kOptions[] = {{"help", no_argument, nullptr, 'h'},
                               {"version", no_argument, nullptr, 'V'},
                               {"list", no_argument, nullptr, 'l'},
                               {"deadline", required_argument, nullptr, kDeadlineOption},
                               {"restart-manager", required_argument, nullptr, kRestartOption},
                               {"verbose", no_argument, nullptr, kVerboseOption},
                               {nullptr, 0, nullptr, 0}};

constexpr long kMaxDeadline = 600;

bool complain(const std::string& reason, int& exitStatus) {
    std::fprintf(stderr,
                 "voxtrel-platform-check: %s\n"
                 "voxtrel-platform-check: --help lists the options\n",
                 reason.c_str());
    exitStatus = 2;
    return false;
}

bool exitWith(const char* text, int& exitStatus) {
    exitStatus = std::fputs(text, stdout) < 0 || std::fflush(stdout) != 0 ? 2 : EXIT_SUCCESS;
    return false;
}

bool readDeadline(const char* text, Options& options) {
    char* end = nullptr;
    const long seconds = std::strtol(text, &end, 10);
    options.deadline = std::chrono::seconds(seconds);
    return end != text && *end == '\0' && seconds >= 1 && seconds <= kMaxDeadline;
}

bool takeRows(int argc, char** argv, Options& options, int& exitStatus) {
    const Rows all = allRows();
    for (int i = optind; i < argc; ++i) {
        const std::string name = argv[i];
        if (std::none_of(all.begin(), all.end(),
                         [&](const Row& row) { return name == row.name; })) {
            return complain("there is no row '" + name + "'; --list has them", exitStatus);
        }
        options.rows.push_back(name);
    }
    return true;
}

}  // namespace

// NOLINTBEGIN(concurrency-mt-unsafe): no other thread has been started
bool parseOptions(int argc, char** argv, Options& options, int& exitStatus) {
    for (int chosen = 0; (chosen = getopt_long(argc, argv, "hVl", kOptions, nullptr)) != -1;) {
        switch (chosen) {
            case 'h':
                return exitWith(kHelp, exitStatus);
            case 'V':
                return exitWith("voxtrel-platform-check " VOXTREL_VERSION "\n", exitStatus);
            case 'l':
                options.isList = true;
                break;
            case kDeadlineOption:
                if (!readDeadline(optarg, options)) {
                    return complain("--deadline takes 1 to 600 seconds", exitStatus);
                }
                break;
            case kRestartOption:
                // Read by the child process that checks the row.
                setenv("VOXTREL_PLATFORM_CHECK_RESTART", optarg, 1);
                break;
            case kVerboseOption:
                options.isVerbose = true;
                break;
            default:
                return complain("it does not take these arguments", exitStatus);
        }
    }
    return takeRows(argc, argv, options, exitStatus);
}
// NOLINTEND(concurrency-mt-unsafe)

}  // namespace check
