// SPDX-License-Identifier: Apache-2.0
#include "service/Options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace voxtreld {
namespace {

constexpr const char* kFooter =
    "Clients find the service through the service manager, which must run first. Settings are "
    "kept\n"
    "in the profile and survive a restart. SIGTERM and SIGINT end the service in order.\n"
    "On a PC it logs to standard error; in the journal each line has its level.";

const std::map<std::string, int> kLevels = {
    {"error", -1}, {"warning", 0}, {"info", 1}, {"debug", 2}};
constexpr long kLongestIdle = 86400;

void addLifetime(CLI::App& app, Options& options) {
    app.add_option_function<long>(
           "--exit-when-idle",
           [&options](long seconds) { options.idleLimit = std::chrono::seconds(seconds); },
           "Leave when for so long there has been no client and nothing to say, or when the "
           "service manager dies; without it the service stays")
        ->type_name("SECONDS")
        ->check(CLI::Range(1L, kLongestIdle));
    app.add_option_function<std::string>(
           "--log-level",
           [&options](const std::string& name) { options.logLevel = kLevels.at(name); },
           "error, warning, info or debug; without it $VOXTREL_LOG_LEVEL (-1 to 2), else info")
        ->type_name("LEVEL")
        ->check(CLI::IsMember(kLevels, CLI::ignore_case));
}

}  // namespace

bool parseOptions(int argc, char** argv, Options& options, int& exitStatus) {
    CLI::App app("Voxtrel's text-to-speech service.", "voxtreld");
    app.set_version_flag("-V,--version", std::string("voxtreld ") + VOXTREL_VERSION);
    CLI::Option* profile =
        app.add_option("--profile", options.profile, "File that keeps the settings")
            ->type_name("FILE")
            ->capture_default_str();
    app.add_flag("--user-profile", options.userProfile,
                 "Keep them in voxtrel/voxtrel.ini in $XDG_STATE_HOME, else in ~/.local/state")
        ->excludes(profile);
    app.add_option("--sink", options.sink,
                   "Where sound goes: alsa, alsa:DEVICE, wav:FILE (all in one file), "
                   "wavdir:FOLDER (a file an utterance) or none")
        ->type_name("SINK")
        ->capture_default_str();
    app.add_flag("--real-time", options.realTime,
                 "Let wav, wavdir and none take as long as a loudspeaker would");
    app.add_option("--background", options.background,
                   "Sound file to play beneath speech, at the background volume")
        ->type_name("FILE");
    app.add_option("--queue", options.limits.utterancesPerClient,
                   "How many utterances of one client may wait")
        ->type_name("N")
        ->check(CLI::Range(1, 1'000'000))
        ->capture_default_str();
    app.add_option("--clients", options.maxClients,
                   "How many processes may be registered; one user other than the service's own "
                   "may have half of them")
        ->type_name("N")
        ->check(CLI::Range(2, 10'000))
        ->capture_default_str();
    app.add_option("--policy", options.policy,
                   "File that says which users may do what; without it /etc/voxtrel/policy, and "
                   "without that the service's own user everything, others nothing")
        ->type_name("FILE");
    addLifetime(app, options);
    app.footer(kFooter);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& outcome) {
        exitStatus = app.exit(outcome);
        return false;
    }
    return true;
}

}  // namespace voxtreld
