// SPDX-License-Identifier: Apache-2.0
#include "tools/CommandTable.h"

#include "tools/Commands.h"

namespace voxtrelctl {
namespace {

constexpr const char* kSpeak = "Speaking";
constexpr const char* kLook = "Looking";
constexpr const char* kChange = "Settings";
constexpr const char* kParts = "Subcommands";

constexpr ParentCommand kProfile = {"profile", "Work with settings profiles", kChange};

constexpr auto kText = CommandEntry::Output::Text;
constexpr auto kJson = CommandEntry::Output::TextOrJson;
constexpr auto kService = CommandEntry::Needs::Service;
constexpr auto kFiles = CommandEntry::Needs::Files;

}  // namespace

const std::vector<CommandEntry>& commandTable() {
    static const std::vector<CommandEntry> table = {
        {Command::Say, nullptr, "say", "Speak a text", kSpeak, kJson, kService, &runSay},
        {Command::Silence, nullptr, "silence", "Queue a pause", kSpeak, kText, kService,
         &runSilence},
        {Command::Stop, nullptr, "stop", "Stop speech and drop what is queued", kSpeak, kText,
         kService, &runStop},
        {Command::Lock, nullptr, "lock",
         "Keep every other client from speaking while a command runs", kSpeak, kText, kService,
         &runLock},
        {Command::BreakLock, nullptr, "break-lock",
         "Free the service from a lock that another client holds", kSpeak, kText, kService,
         &runBreakLock},
        {Command::Status, nullptr, "status", "Show what the service is doing", kLook, kJson,
         kService, &runStatus},
        {Command::Languages, nullptr, "languages", "List the languages", kLook, kJson, kService,
         &runLanguages},
        {Command::Voices, nullptr, "voices", "List the voices", kLook, kJson, kService, &runVoices},
        {Command::Monitor, nullptr, "monitor", "Show events as they come", kLook, kJson, kService,
         &runMonitor},
        {Command::Doctor, nullptr, "doctor", "Explain why there is no sound", kLook, kJson,
         kService, &runDoctor},
        {Command::Get, nullptr, "get", "Show settings of the service", kChange, kJson, kService,
         &runGet},
        {Command::Set, nullptr, "set", "Change a setting of the service", kChange, kText, kService,
         &runSet},
        {Command::Enable, nullptr, "enable", "Switch speech or a feature on", kChange, kText,
         kService, &runSwitch},
        {Command::Disable, nullptr, "disable", "Switch speech or a feature off", kChange, kText,
         kService, &runSwitch},
        {Command::ProfileShow, &kProfile, "show", "Print a profile", kParts, kJson, kFiles,
         &runProfileShow},
        {Command::ProfileSave, &kProfile, "save", "Write the service's settings to a profile",
         kParts, kText, kService, &runProfileSave},
        {Command::ProfileLoad, &kProfile, "load", "Give the service the settings of a profile",
         kParts, kText, kService, &runProfileLoad},
        {Command::ProfileCopy, &kProfile, "copy", "Copy a profile", kParts, kText, kFiles,
         &runProfileCopy},
        {Command::ProfileRemove, &kProfile, "remove", "Delete a profile", kParts, kText, kFiles,
         &runProfileRemove},
    };
    return table;
}

}  // namespace voxtrelctl
