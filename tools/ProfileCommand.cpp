// SPDX-License-Identifier: Apache-2.0
#include <filesystem>

#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/Json.h"
#include "tools/Platform.h"
#include "tools/ProfileFields.h"
#include "tools/ProfileFile.h"
#include "tools/Render.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

void giveFlag(Session& session, const Setting& setting, bool wanted) {
    if (readFlag(session, setting) != wanted) {
        writeFlag(session, setting, wanted);
    }
}

/// A value is only taken while its switch is on, so that comes first and the profile's own last.
void giveField(Session& session, const Profile& profile, const ProfileField& field) {
    const Setting& setting = settingNamed(field.setting);
    const Value value = fieldValue(profile, field);
    if (isSet(value)) {
        if (field.flag != nullptr) {
            giveFlag(session, setting, true);
        }
        writeSetting(session, setting, value);
    }
    if (field.flag != nullptr) {
        giveFlag(session, setting, profile.*field.flag != 0);
    }
}

}  // namespace

int runProfileShow(const Options& options, Terminal& terminal) {
    TTS::TTSClientPrivate client(kAppName, nullptr);
    readProfile(client, profilePath(options.name));
    const std::vector<ProfileEntry> entries = profileEntries(client.mSetting);
    options.json ? terminal.line(profileJson(entries)) : terminal.print(profileText(entries));
    return 0;
}

int runProfileSave(const Options& options, Terminal& terminal) {
    const std::string path = profilePath(options.name);
    Session session(terminal);
    Profile profile = session.client()->mSetting;
    for (const ProfileField& field : profileFields()) {
        const Setting& setting = settingNamed(field.setting);
        const Value value = readSetting(session, setting);
        if (valueText(value).empty()) {
            throw Failure(TTS::STATUS_NOT_SUPPORTED,
                          std::string("the service does not tell its ") + setting.name,
                          "nothing was saved; see the service's own log");
        }
        setField(profile, field, value);
        if (field.flag != nullptr) {
            profile.*field.flag = readFlag(session, setting) ? 1 : 0;
        }
    }
    profile.mVerbosity = session.client()->verbosity();
    profile.mEnable = session.client()->enabled() ? 1 : 0;
    session.confirm();
    session.client()->mSetting = profile;
    check(session.client()->saveProfile(path.c_str()), path);
    // A full disk is no failure to the library, which leaves an empty file then.
    if (contentOf(path).empty()) {
        throw Failure(TTS::STATUS_PROFILE_ERROR, "nothing could be written to " + path);
    }
    return 0;
}

int runProfileLoad(const Options& options, Terminal& terminal) {
    Session session(terminal);
    readProfile(*session.client(), profilePath(options.name));
    const Profile profile = session.client()->mSetting;
    for (const ProfileField& field : profileFields()) {
        giveField(session, profile, field);
    }
    writeVerbosity(session, profile.mVerbosity);
    writeSpeech(session, profile.mEnable != 0);
    session.confirm();
    return 0;
}

int runProfileCopy(const Options& options, Terminal&) {
    const std::string source = profilePath(options.name);
    const std::string destination = profilePath(options.value);
    const std::string content = contentOf(source);
    std::error_code ignored;
    if (std::filesystem::equivalent(source, destination, ignored)) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      source + " and " + destination + " are the same file",
                      "name another destination");
    }
    const TTS::TTSClientPrivate client(kAppName, nullptr);
    client.mSetting.copyProfile(destination.c_str(), source.c_str());
    if (contentOf(destination) != content) {
        throw Failure(TTS::STATUS_PROFILE_ERROR, "cannot write " + destination);
    }
    return 0;
}

int runProfileRemove(const Options& options, Terminal&) {
    const std::string path = profilePath(options.name);
    const TTS::TTSClientPrivate client(kAppName, nullptr);
    if (!client.mSetting.isExistProfile(path.c_str())) {
        throw Failure(TTS::STATUS_PROFILE_ERROR, "there is no " + path);
    }
    client.mSetting.removeProfile(path.c_str());
    if (client.mSetting.isExistProfile(path.c_str())) {
        throw Failure(TTS::STATUS_PROFILE_ERROR, "cannot delete " + path);
    }
    return 0;
}

}  // namespace voxtrelctl
