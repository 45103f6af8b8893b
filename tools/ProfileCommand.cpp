// SPDX-License-Identifier: Apache-2.0
#include "tools/Commands.h"
#include "tools/Json.h"
#include "tools/ProfileFile.h"
#include "tools/Render.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

using voxtrel::Profile;
using voxtrel::Switch;

Profile readProfile(const std::string& path) {
    auto read = Profile::read(path);
    check(read.error());
    return *std::move(read);
}

/// In the order in which they are given to the service: a voice belongs to the language before it.
constexpr const char* kInProfiles[] = {"language", "voice",     "speed",     "pitch",
                                       "volume",   "bg-volume", "tts-volume"};

void turn(Connection& connection, const Setting& setting, bool on) {
    const auto is = connection.client().isOn(*setting.which, connection.left());
    connection.require(is.error());
    if (*is != on) {
        writeSwitch(connection, *setting.which, setting.name, on);
    }
}

/// A value is only taken while its switch is on, so that comes first and the profile's own last.
void give(Connection& connection, const Profile& profile, const Setting& setting) {
    const Value value = valueOf(profile.settings, setting);
    const bool isSet = !valueText(value).empty();
    if (isSet && setting.which) {
        turn(connection, setting, true);
    }
    if (isSet) {
        writeSetting(connection, setting, value);
    }
    if (setting.which) {
        turn(connection, setting, profile.switchedOff.count(*setting.which) == 0);
    }
}

}  // namespace

int runProfileShow(const Options& options, Terminal& terminal) {
    const auto entries = profileEntries(readProfile(profilePath(options.name)));
    options.json ? terminal.line(profileJson(entries)) : terminal.print(profileText(entries));
    return 0;
}

int runProfileSave(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    voxtrel::Client& client = connection.client();
    Profile profile;
    profile.settings = connection.require(client.settings(connection.left()));
    for (const char* name : kInProfiles) {
        if (valueText(valueOf(profile.settings, settingNamed(name))).empty()) {
            throw Failure(TTS::STATUS_NOT_SUPPORTED,
                          std::string("the service does not tell its ") + name,
                          "nothing was saved; see the service's own log");
        }
    }
    for (const Switch which : {Switch::Speech, Switch::Speed, Switch::Pitch, Switch::Voice,
                               Switch::Volume, Switch::MediaVolume, Switch::SpeechVolume}) {
        if (!connection.require(client.isOn(which, connection.left()))) {
            profile.switchedOff.insert(which);
        }
    }
    check(profile.write(profilePath(options.name)));
    return 0;
}

int runProfileLoad(const Options& options, Terminal& terminal) {
    const Profile profile = readProfile(profilePath(options.name));
    Connection connection(options, terminal);
    connection.connect();
    for (const char* name : kInProfiles) {
        give(connection, profile, settingNamed(name));
    }
    give(connection, profile, settingNamed("verbosity"));
    writeSwitch(connection, Switch::Speech, "speech",
                profile.switchedOff.count(Switch::Speech) == 0);
    return 0;
}

int runProfileCopy(const Options& options, Terminal&) {
    copyProfile(profilePath(options.name), profilePath(options.value));
    return 0;
}

int runProfileRemove(const Options& options, Terminal&) {
    removeProfile(profilePath(options.name));
    return 0;
}

}  // namespace voxtrelctl
