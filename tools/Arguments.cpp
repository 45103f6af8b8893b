// SPDX-License-Identifier: Apache-2.0
#include "tools/Arguments.h"

#include <CLI/CLI.hpp>

#include "tools/CommandTable.h"
#include "tools/Errors.h"
#include "tools/Settings.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr double kLongestTimeout = 86'400;

constexpr const char* kFooter =
    "Examples:\n"
    "  voxtrelctl say --wait \"Hello, world.\"\n"
    "  fortune | voxtrelctl say --lang fr_FR --speed 200\n"
    "  voxtrelctl lock -- ./record-a-call.sh\n"
    "  voxtrelctl get --json\n"
    "No sound? voxtrelctl doctor says why.\n"
    "Exit status: 0, or 1 with one line on standard error.";

/// A value that an option does not take.
class BadValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

template <typename Number>
Number numberWithin(const std::string& name, const std::string& text, Number least, Number most,
                    const char* wanted) {
    const std::optional<Number> number = numberIn<Number>(text);
    if (!number || !(*number >= least && *number <= most)) {
        throw BadValue(name + " takes " + wanted + ", not \"" + text + "\"");
    }
    return *number;
}

/// Builds the subcommands; each sets `Options::command` when the line names it.
class Grammar {
public:
    explicit Grammar(Options& options)
        : mOptions(options), mApp("Makes the device speak.", "voxtrelctl") {
        mApp.require_subcommand(1);
        mApp.footer(kFooter);
        mApp.set_version_flag("--version", std::string("voxtrelctl ") + VOXTREL_VERSION);
        addVerbose(mApp);
#ifdef VOXTREL_CAN_SPAWN
        mApp.add_flag("--spawn", mOptions.spawn,
                      "Before COMMAND: start service manager and service first where they are not "
                      "running");
        mApp.add_option("--trust-owner", mOptions.trustedOwner,
                        "Before COMMAND: talk to a service of this user's as well; without it to "
                        "your own and root's only")
            ->type_name("USER");
#endif
        for (const CommandEntry& entry : commandTable()) {
            mSubcommands[entry.command] = add(entry);
        }
        addToSpeaking();
        addToLooking();
        addToSettings();
        addToProfiles();
    }

    CLI::App& app() {
        return mApp;
    }

private:
    void addVerbose(CLI::App& app) {
        app.add_flag("-v,--verbose", mOptions.verbose,
                     "Show whom it talks to, and what the runtime logs, on standard error");
    }

    void addTimeout(CLI::App& app) {
        app.add_option_function<std::string>(
               "--timeout",
               [this](const std::string& text) {
                   const double seconds = numberWithin("--timeout", text, 0.0, kLongestTimeout,
                                                       "a number of seconds, up to 86400");
                   mOptions.timeout =
                       std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
               },
               "Wait no longer for the service than this; 10 when left out")
            ->type_name("SECONDS");
    }

    CLI::App* add(const CommandEntry& entry) {
        CLI::App& parent = entry.parent == nullptr ? mApp : addedParent(*entry.parent);
        CLI::App* sub = parent.add_subcommand(entry.name, entry.help)->group(entry.group);
        sub->callback([this, &entry] { mOptions.command = entry.command; });
        sub->footer("");
        addVerbose(*sub);
        if (entry.needs == CommandEntry::Needs::Service) {
            addTimeout(*sub);
        }
        if (entry.output == CommandEntry::Output::TextOrJson) {
            sub->add_flag("--json", mOptions.json, "Print JSON");
        }
        return sub;
    }

    /// In the help it stands where its first subcommand does.
    CLI::App& addedParent(const ParentCommand& parent) {
        CLI::App*& added = mParents[&parent];
        if (added == nullptr) {
            added = mApp.add_subcommand(parent.name, parent.help)->group(parent.group);
            added->require_subcommand(1);
            added->footer("");
        }
        return *added;
    }

    CLI::App& sub(Command command) {
        return *mSubcommands.at(command);
    }

    static CLI::Option* addNumber(CLI::App& app, const std::string& name, const char* help,
                                  std::uint32_t& number, std::uint32_t least, const char* wanted) {
        const auto read = [&number, name, least, wanted](const std::string& text) {
            constexpr auto kMax = std::numeric_limits<std::uint32_t>::max();
            number = numberWithin(name, text, least, kMax, wanted);
        };
        return app.add_option_function<std::string>(name, read, help);
    }

    void addProsody(CLI::App& sub) {
        Prosody& prosody = mOptions.prosody;
        sub.add_option("--lang", prosody.language, "Language to speak, as in fr or fr_FR");
        sub.add_option("--voice", prosody.voice,
                       "Voice: its number or name, see voxtrelctl voices");
        for (const char* name : {"speed", "pitch", "volume", "bg-volume", "tts-volume"}) {
            sub.add_option_function<std::string>(
                   std::string("--") + name,
                   [&prosody, name](const std::string& text) { prosody.values[name] = text; },
                   findSetting(name)->help)
                ->type_name("NUMBER");
        }
        sub.add_option("--profile", prosody.profile,
                       "Read the other values from this profile first");
    }

    void addToSpeaking() {
        CLI::App& say = sub(Command::Say);
        say.add_option("TEXT", mOptions.words,
                       "What to say; without it, and without --file, standard input is read");
        say.add_option("-f,--file", mOptions.file, "Speak this file; - is standard input");
        say.add_flag("-w,--wait", mOptions.wait,
                     "Stay until all is spoken, and show the words as they are spoken");
        say.add_flag("--ssml", mOptions.ssml,
                     "Check that the text is good SSML, and send it whole");
        addProsody(say);

        CLI::App& silence = sub(Command::Silence);
        addNumber(silence, "MILLISECONDS", "How long", mOptions.milliseconds, 0, "a whole number")
            ->required();
        silence.add_flag("-w,--wait", mOptions.wait, "Stay until the pause is over");

        addNumber(sub(Command::Stop), "--process",
                  "Only what this process of yours said, also when it has ended", mOptions.process,
                  1, "a process id")
            ->type_name("PID");
        sub(Command::Lock)
            .add_option("COMMAND", mOptions.words, "After --: the command and its arguments")
            ->required();
    }

    void addToLooking() {
        sub(Command::Voices)
            .add_option("LANGUAGE", mOptions.language, "Only this language, as in fr or fr_FR");
        addNumber(sub(Command::Monitor), "--count", "Leave after so many events", mOptions.count, 1,
                  "a whole number from 1")
            ->type_name("NUMBER");
    }

    void addToSettings() {
        sub(Command::Get).add_option("NAME", mOptions.words, "Only these");
        CLI::App& set = sub(Command::Set);
        set.add_option("NAME", mOptions.name,
                       "One of: " + settingNames([](const Setting&) { return true; }))
            ->required();
        set.add_option("VALUE", mOptions.value, "The new value")->required();
        for (const Command command : {Command::Enable, Command::Disable}) {
            sub(command).add_option("FEATURE", mOptions.name,
                                    "speech (when left out), " + settingNames(&hasSwitch));
        }
    }

    void addToProfiles() {
        for (const Command command :
             {Command::ProfileShow, Command::ProfileSave, Command::ProfileLoad,
              Command::ProfileCopy, Command::ProfileRemove}) {
            sub(command)
                .add_option("PROFILE", mOptions.name,
                            "A path, or the bare name of a profile in /Customer")
                ->required();
        }
        sub(Command::ProfileCopy)
            .add_option("DESTINATION", mOptions.value, "The new profile")
            ->required();
    }

    Options& mOptions;
    std::map<Command, CLI::App*> mSubcommands;
    std::map<const ParentCommand*, CLI::App*> mParents;
    CLI::App mApp;
};

/// The subcommand that the line got to.
const CLI::App& deepest(const CLI::App& app) {
    const auto subs = app.get_subcommands();
    return subs.empty() ? app : deepest(*subs.front());
}

/// "voxtrelctl profile copy" for a subcommand.
std::string titleOf(const CLI::App& app) {
    const CLI::App* const parent = app.get_parent();
    return (parent != nullptr ? titleOf(*parent) + " " : "") + app.get_name();
}

std::string unknown(const std::string& word) {
    return "\"" + word + "\" does not belong there";
}

/// A command is not there, or none that there is.
std::string explainCommand(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining();
    if (words.empty()) {
        return "a command is missing";
    }
    const std::string& word = words.front();
    return word[0] == '-' ? unknown(word) : "there is no command \"" + word + "\"";
}

/// What does not fit, in words of our own.
std::string explain(const CLI::App& app, const CLI::ParseError& error) {
    const std::string text = error.what();
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        const std::string first = text.substr(0, text.find(' '));
        return first == "A" ? explainCommand(app) : first + " is missing";
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        return unknown(text.substr(text.rfind(": ") + 2));
    }
    const bool isFlag = dynamic_cast<const CLI::ConversionError*>(&error) != nullptr;
    const std::string option = text.substr(std::min(text.find("--"), text.size()));
    return option.substr(0, option.find_first_of(":, ")) + " takes " +
           (isFlag ? "no value" : "one value");
}

}  // namespace

Options parseArguments(int argc, const char* const* argv) {
    Options options;
    Grammar grammar(options);
    CLI::App& app = grammar.app();
    const auto seeHelp = [&app] { return "see " + titleOf(deepest(app)) + " --help"; };
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        std::ostringstream out;
        app.exit(wish, out, out);
        options.command = Command::Help;
        options.helpText = out.str();
    } catch (const CLI::ParseError& error) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, explain(deepest(app), error), seeHelp());
    } catch (const BadValue& bad) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, bad.what(), seeHelp());
    }
    return options;
}

}  // namespace voxtrelctl
