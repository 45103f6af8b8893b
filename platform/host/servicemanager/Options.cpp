// SPDX-License-Identifier: Apache-2.0
#include "servicemanager/Options.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

#include "servicemanager/Accounts.h"

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
    "  --reserve NAME=USER         Let only processes of USER, a name or a number, register NAME;\n"
    "                              may be repeated\n"
    "  --socket-group GROUP        Let the members of GROUP, a name or a number, connect: the\n"
    "                              socket is the group's, and its mode 660 unless one is given\n"
    "  --socket-mode MODE          Mode of the socket, octal; who may write may connect\n"
    "                              (default: 600)\n"
    "\n"
    "SIGTERM and SIGINT end it. It logs to standard error; in the journal each line has its "
    "level.\n"
    "Exit status: 0; 1 when it cannot listen, or the command line does not fit.\n";

constexpr const char* kLevels[] = {"error", "warning", "info", "debug"};
constexpr long kLongestIdle = 86400;

constexpr mode_t kGroupToo = 0660;
constexpr mode_t kAllBits = 0777;
constexpr size_t kLongestName = 127;

enum : int { kIdleOption = 256, kLevelOption, kReserveOption, kGroupOption, kModeOption };

constexpr option kOptions[] = {{"help", no_argument, nullptr, 'h'},
                               {"version", no_argument, nullptr, 'V'},
                               {"exit-when-idle", required_argument, nullptr, kIdleOption},
                               {"log-level", required_argument, nullptr, kLevelOption},
                               {"reserve", required_argument, nullptr, kReserveOption},
                               {"socket-group", required_argument, nullptr, kGroupOption},
                               {"socket-mode", required_argument, nullptr, kModeOption},
                               {nullptr, 0, nullptr, 0}};

/// The options' values, and which of them were given.
struct Reading {
    Options& options;
    bool modeGiven = false;
};

int complain(const std::string& reason) {
    std::fprintf(stderr,
                 "voxtrel-servicemanager: %s\n"
                 "voxtrel-servicemanager: --help lists the options\n",
                 reason.c_str());
    return EXIT_FAILURE;
}

bool readNumber(const char* text, long min, long max, long& number) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    const bool fits = end != text && *end == '\0' && value >= min && value <= max;
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

// Each takes an option's value, and returns nothing or what is wrong.

std::string takeIdleLimit(const char* value, Options& options) {
    long seconds = 0;
    if (!readNumber(value, 1, kLongestIdle, seconds)) {
        return std::string("--exit-when-idle takes 1 to 86400 seconds, not ") + value;
    }
    options.idleLimit = std::chrono::seconds(seconds);
    return "";
}

std::string takeMode(const std::string& value, Reading& reading) {
    const bool isOctal = !value.empty() && value.find_first_not_of("01234567") == std::string::npos;
    const unsigned long mode = isOctal ? std::strtoul(value.c_str(), nullptr, 8) : kAllBits + 1;
    if (mode > kAllBits) {
        return "--socket-mode takes an octal number from 0 to 777, not " + value;
    }
    reading.options.access.mode = static_cast<mode_t>(mode);
    reading.modeGiven = true;
    return "";
}

std::string takeGroup(const std::string& value, Options& options) {
    gid_t group = 0;
    if (!findGroup(value, group)) {
        return "--socket-group takes a group's name or number, and there is none that is " + value;
    }
    options.access.group = group;
    return "";
}

std::string takeReservation(const std::string& value, Options& options) {
    const size_t end = value.rfind('=');
    const android::String16 name(value.c_str(), end == std::string::npos ? 0 : end);
    if (name.size() == 0 || name.size() > kLongestName) {
        return "--reserve takes NAME=USER, with a name of 1 to 127 characters, not " + value;
    }
    uid_t user = 0;
    if (!findUser(value.substr(end + 1), user)) {
        return "--reserve takes a user's name or number, and there is none that is " +
               value.substr(end + 1);
    }
    const auto [entry, isNew] = options.reserved.emplace(name, user);
    return isNew || entry->second == user
               ? ""
               : "--reserve gives " + value.substr(0, end) + " to two users";
}

std::string take(int choice, const char* value, Reading& reading) {
    Options& options = reading.options;
    switch (choice) {
        case kIdleOption:
            return takeIdleLimit(value, options);
        case kReserveOption:
            return takeReservation(value, options);
        case kGroupOption:
            return takeGroup(value, options);
        case kModeOption:
            return takeMode(value, reading);
        default:
            return readLevel(value, options.logLevel)
                       ? ""
                       : std::string("--log-level takes error, warning, info or debug, not ") +
                             value;
    }
}

void completeAccess(const Reading& reading) {
    Options& options = reading.options;
    options.asksForAccess = reading.modeGiven || options.access.group.has_value();
    if (options.access.group.has_value() && !reading.modeGiven) {
        options.access.mode = kGroupToo;
    }
}

/// What getopt refused; `word` is the argument that it stands in.
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
    Reading reading{options};
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
                                                 : take(choice, optarg, reading);
        if (!refusal.empty()) {
            break;
        }
    }
    if (refusal.empty() && optind < argc) {
        refusal = std::string("it takes no argument, not ") + argv[optind];
    }
    completeAccess(reading);
    exitStatus = refusal.empty() ? EXIT_SUCCESS : complain(refusal);
    return refusal.empty();
}

}  // namespace servicemanager
