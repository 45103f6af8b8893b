// SPDX-License-Identifier: Apache-2.0
#include "servicemanager/Options.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

namespace servicemanager {
namespace {

constexpr const char* kHelp =
    "Usage: voxtrel-servicemanager [OPTIONS]\n"
    "\n"
    "Lets clients find services by their names, in the place of a device's own service\n"
    "manager. It listens at $VOXTREL_BINDER_SOCKET, else $XDG_RUNTIME_DIR/voxtrel/binder, else\n"
    "/tmp/voxtrel-UID/binder, or at the socket that systemd hands over.\n"
    "\n"
    "Options:\n"
    "  -h, --help                  Print this help and leave\n"
    "  -V, --version               Print the version and leave\n"
    "  --exit-when-idle SECONDS    Leave when for that long no service has been registered and\n"
    "                              nobody connected (1 to 86400; default: stay)\n"
    "  --log-level LEVEL           error, warning, info or debug (default: $VOXTREL_LOG_LEVEL,\n"
    "                              -1 to 2, else info)\n"
    "\n"
    "SIGTERM and SIGINT end it. It logs to standard error; in the journal each line has its "
    "level.\n"
    "Exit status: 0; 1 when it cannot listen, or the command line does not fit.\n";

constexpr const char* kLevels[] = {"error", "warning", "info", "debug"};
constexpr long kLongestIdle = 86400;

enum : int { kIdleOption = 256, kLevelOption };

constexpr option kOptions[] = {{"help", no_argument, nullptr, 'h'},
                               {"version", no_argument, nullptr, 'V'},
                               {"exit-when-idle", required_argument, nullptr, kIdleOption},
                               {"log-level", required_argument, nullptr, kLevelOption},
                               {nullptr, 0, nullptr, 0}};

int complain(const std::string& reason) {
    std::fprintf(stderr,
                 "voxtrel-servicemanager: %s\n"
                 "voxtrel-servicemanager: --help lists the options\n",
                 reason.c_str());
    return EXIT_FAILURE;
}

bool readNumber(const char* text, long least, long most, long& number) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    const bool fits = end != text && *end == '\0' && value >= least && value <= most;
    number = fits ? value : number;
    return fits;
}

bool readLevel(const char* text, int& level) {
    for (size_t i = 0; i < std::size(kLevels); ++i) {
        if (std::strcmp(text, kLevels[i]) == 0) {
            level = static_cast<int>(i) - 1;
            return true;
        }
    }
    return false;
}

/// @return empty, or what is wrong.
std::string take(int choice, const char* value, Options& options) {
    if (choice == kIdleOption) {
        long seconds = 0;
        if (!readNumber(value, 1, kLongestIdle, seconds)) {
            return std::string("--exit-when-idle takes 1 to 86400 seconds, not ") + value;
        }
        options.idleLimit = std::chrono::seconds(seconds);
    } else if (!readLevel(value, options.logLevel)) {
        return std::string("--log-level takes error, warning, info or debug, not ") + value;
    }
    return "";
}

/// What getopt refused: `word` is where it stood.
std::string explainRefusal(int choice, const char* word) {
    return choice == ':' ? std::string(word) + " needs a value"
                         : std::string("there is no option ") + word;
}

void readEnvironment(Options& options) {
    const char* level = std::getenv("VOXTREL_LOG_LEVEL");  // NOLINT(concurrency-mt-unsafe)
    if (level != nullptr) {
        options.logLevel = static_cast<int>(std::strtol(level, nullptr, 10));
    }
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& exitStatus) {
    readEnvironment(options);
    exitStatus = EXIT_SUCCESS;
    std::string refusal;
    for (;;) {
        const char* word = argv[optind < argc ? optind : argc];
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has been started
        const int choice = getopt_long(argc, argv, ":hV", kOptions, nullptr);
        if (choice == -1) {
            break;
        }
        if (choice == 'h' || choice == 'V') {
            std::fputs(choice == 'h' ? kHelp : "voxtrel-servicemanager " VOXTREL_VERSION "\n",
                       stdout);
            return false;
        }
        refusal = choice == '?' || choice == ':' ? explainRefusal(choice, word)
                                                 : take(choice, optarg, options);
        if (!refusal.empty()) {
            break;
        }
    }
    if (refusal.empty() && optind < argc) {
        refusal = std::string("it takes no argument, not ") + argv[optind];
    }
    exitStatus = refusal.empty() ? EXIT_SUCCESS : complain(refusal);
    return refusal.empty();
}

}  // namespace servicemanager
