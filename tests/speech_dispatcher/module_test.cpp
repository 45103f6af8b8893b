// SPDX-License-Identifier: Apache-2.0
// The module as a process, with a service that speaks.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/speech_dispatcher/ModuleProcess.h"
#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

namespace {

using namespace voxtrel_test;
using Lines = ModuleProcess::Lines;

constexpr const char* kSpoken = "200 OK SPEAKING";

/// A device with a module.
class AModule : public ::testing::Test {
protected:
    explicit AModule(const Device::Words& options = {}) { device.startService(options); }

    /// The sound of what was said, once the service has ended.
    Sound sound() {
        device.stopService();
        return readSound(device.wavPath());
    }

    /// Seconds of sound of this text with these settings, by a service of its own.
    double secondsOf(const std::string& settings, const std::string& text) {
        Device::Words options = {"--sink", "wav:" + device.path("x.wav")};
        device.stopService();
        device.startService(options);
        ModuleProcess module;
        module.begin();
        EXPECT_EQ("203 OK SETTINGS RECEIVED", module.send("SET", settings));
        EXPECT_EQ(kSpoken, module.send("SPEAK", text + "\n"));
        EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd());
        device.stopService();
        last = readSound(device.path("x.wav"));
        device.startService();
        return last.seconds();
    }

    Device device;
    Sound last;
};

/// The service takes as long as a loudspeaker would.
class AModuleInRealTime : public AModule {
protected:
    AModuleInRealTime() : AModule({"--real-time"}) {}
};

const char* const kLong =
    "<speak>One two three four five six seven. <mark name=\"__spd_0\"/>Eight nine ten eleven "
    "twelve. <mark name=\"__spd_1\"/>Thirteen fourteen fifteen sixteen seventeen.</speak>\n";

TEST_F(AModule, SpeaksWithItsMarks) {
    ModuleProcess module;
    EXPECT_EQ("299-Voxtrel: the speech service is there\n299 OK LOADED SUCCESSFULLY\n",
              module.ask("INIT"));
    EXPECT_EQ(kSpoken, module.send("SPEAK", kLong));
    EXPECT_EQ((Lines{"701", "700-__spd_0", "700", "700-__spd_1", "700", "702"}),
              module.eventsToEnd());
    EXPECT_EQ("210 OK QUIT\n", module.ask("QUIT"));
    EXPECT_EQ(0, module.process().wait());
    const double seconds = sound().seconds();
    const double alone = engineAlone(
                             "One two three four five six seven. Eight nine ten eleven twelve. "
                             "Thirteen fourteen fifteen sixteen seventeen.",
                             "en-us", 300)
                             .seconds();
    EXPECT_NEAR(alone, seconds, 0.8) << "neither tags nor a question are heard";
}

TEST_F(AModule, ListsTheServicesVoices) {
    ModuleProcess module;
    module.begin();
    const std::string all = module.ask("LIST VOICES");
    EXPECT_EQ(0U, all.find("200-en-us\ten-US\tnone\n200-en-us+f1\ten-US\tf1\n")) << all;
    EXPECT_NE(std::string::npos, all.find("200-ko\tko-KR\tnone\n")) << all;
    EXPECT_NE(std::string::npos, all.find("\n200 OK VOICE LIST SENT\n"));
    EXPECT_EQ("200-fr-fr+f1\tfr-FR\tf1\n200 OK VOICE LIST SENT\n",
              module.ask("LIST VOICES fr-CA f1"));
    EXPECT_EQ("304 CANT LIST VOICES\n", module.ask("LIST VOICES de"));
}

TEST_F(AModule, SpeaksFasterSlowerAndLouder) {
    const std::string text = "<speak>One two three four five six seven eight.</speak>";
    const double own = secondsOf("rate=0\nvolume=0\npitch=0\n", text);
    const double loudness = last.loudness();
    EXPECT_LT(secondsOf("rate=60\n", text), 0.8 * own);
    EXPECT_GT(secondsOf("rate=-60\n", text), 1.5 * own);
    secondsOf("volume=-50\n", text);
    EXPECT_LT(last.loudness(), 0.7 * loudness);
    EXPECT_GT(last.loudness(), 0.1 * loudness);
    secondsOf("volume=100\n", text);
    EXPECT_NEAR(loudness, last.loudness(), 0.1 * loudness) << "the most is the service's own";
}

TEST_F(AModule, MovesWithTheServicesOwnSpeed) {
    ModuleProcess module;
    module.begin();
    module.send("SET", "rate=-1\n");
    const auto lengthOfNext = [&] {
        const auto before = std::filesystem::file_size(device.wavPath());
        module.send("SPEAK", "<speak>One two three four five six seven eight.</speak>\n");
        EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd());
        return static_cast<double>(std::filesystem::file_size(device.wavPath()) - before);
    };
    const double own = lengthOfNext();
    EXPECT_NEAR(own, lengthOfNext(), 0.1 * own);
    EXPECT_EQ(0, device.ctl({"set", "speed", "600"}).status);
    EXPECT_TRUE(eventually([&] { return lengthOfNext() < 0.8 * own; }));
}

TEST_F(AModule, SpeaksALanguageThatItIsGiven) {
    const std::string text = "<speak>un deux trois quatre cinq six sept</speak>";
    const double english = secondsOf("language=en-US\n", text);
    const Sound spokenEnglish = last;
    secondsOf("language=fr-FR\n", text);
    EXPECT_NE(spokenEnglish.samples, last.samples);
    const Sound french = last;
    secondsOf("language=en-US\nsynthesis_voice=fr-fr\n", text);
    EXPECT_EQ(french.samples, last.samples) << "the voice is French";
    secondsOf("language=fr-FR\nsynthesis_voice=nobody\n", text);
    EXPECT_EQ(french.samples, last.samples) << "a voice that there is not changes nothing";
    secondsOf("language=fr-FR\nvoice=female1\n", text);
    EXPECT_NE(french.samples, last.samples);
    const Sound female = last;
    secondsOf("language=fr-FR\nsynthesis_voice=fr-fr+f1\n", text);
    EXPECT_EQ(female.samples, last.samples);
    EXPECT_NEAR(english, secondsOf("language=tlh\nvoice=male3\n", text), 0.01)
        << "a language that there is not is the service's own";
}

TEST_F(AModule, SpeaksCharactersKeysAndNamesOfIcons) {
    ModuleProcess module;
    module.begin();
    for (const char* line : {"CHAR|a", "CHAR|space", "CHAR|<", "CHAR|\xC3\xA9", "KEY|shift_a",
                             "SOUND_ICON|new-mail"}) {
        const std::string words = line;
        const std::size_t bar = words.find('|');
        EXPECT_EQ(kSpoken, module.send(words.substr(0, bar), words.substr(bar + 1) + "\n"));
        EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd()) << line;
    }
    EXPECT_FALSE(sound().isSilent());
}

TEST_F(AModule, NamesCharactersThatHaveNoSoundOfTheirOwn) {
    for (const char* character : {"..", "space", "<", ","}) {
        ModuleProcess module;
        module.begin();
        module.send("CHAR", std::string(character) + "\n");
        EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd());
        EXPECT_GT(sound().seconds(), 0.2) << character;
        device.startService();
    }
}

TEST_F(AModule, RefusesSoundThroughTheServer) {
    ModuleProcess module;
    module.ask("INIT");
    EXPECT_EQ("207 OK RECEIVING AUDIO SETTINGS\n", module.ask("AUDIO"));
    EXPECT_EQ("300-the speech service plays its sound itself\n300 MODULE ERROR\n",
              module.ask("audio_output_method=server\n."));
    EXPECT_EQ("203 OK AUDIO INITIALIZED",
              module.send("AUDIO", "audio_output_method=alsa\naudio_alsa_device=default\n"));
}

TEST_F(AModule, WritesWhatHappensIntoAFileForDebugging) {
    ModuleProcess module;
    module.begin();
    const std::string path = device.path("debug.log");
    EXPECT_EQ("200 OK DEBUGGING ON\n", module.ask("DEBUG ON " + path));
    module.send("SPEAK", "hello\n");
    module.eventsToEnd();
    EXPECT_EQ("200 OK DEBUGGING OFF\n", module.ask("DEBUG OFF"));
    module.send("SPEAK", "secret\n");
    module.eventsToEnd();
    const std::string log = readFile(path);
    EXPECT_NE(std::string::npos, log.find("< hello\n")) << log;
    EXPECT_NE(std::string::npos, log.find("> 702 END\n")) << log;
    EXPECT_EQ(std::string::npos, log.find("secret")) << log;
    EXPECT_EQ("300 ERR UNKNOWN COMMAND\n", module.ask("DEBUG ON /nowhere/at/all"));
}

TEST_F(AModule, LeavesTheVerbosityOfOthersAlone) {
    ModuleProcess module;
    module.begin();
    module.send("SET", "punctuation_mode=all\n");
    module.send("SPEAK", "a\n");
    module.eventsToEnd();
    EXPECT_EQ("0", settingOf(device, "verbosity"));
}

TEST_F(AModule, SetsTheVerbosityForEveryoneWhereItsConfigurationSaysSo) {
    ModuleProcess module(std::string(ModuleProcess::kWaitsLong) + "PunctuationForEveryone yes\n");
    module.begin();
    module.send("SET", "punctuation_mode=all\n");
    module.send("SPEAK", "a\n");
    module.eventsToEnd();
    EXPECT_EQ("1", settingOf(device, "verbosity"));
    module.send("SET", "punctuation_mode=some\n");
    module.send("SPEAK", "a\n");
    module.eventsToEnd();
    EXPECT_EQ("0", settingOf(device, "verbosity"));
}

TEST_F(AModule, SpeaksAnyMalformedAndLongMessage) {
    ModuleProcess module;
    module.begin();
    const std::string bodies[] = {
        "<speak>a<mark name='\n", "\xFF\xFE\n",
        "<speak>&bogus;</b>\n",   "<speak\n",
        std::string("a\0b\n", 4), "<speak>" + std::string(300000, ' ') + "a</speak>\n"};
    for (const std::string& body : bodies) {
        EXPECT_EQ(kSpoken, module.send("SPEAK", body));
        EXPECT_EQ("702", module.eventsToEnd().back()) << body.substr(0, 20);
    }
    EXPECT_EQ(kSpoken, module.send("SPEAK", std::string(2000000, 'x') + "\n"));
    EXPECT_EQ((Lines{"701", "703"}), module.eventsToEnd()) << "the server tells nobody of an error";
    EXPECT_EQ(kSpoken, module.send("SPEAK", "a\n"));
    EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd());
}

TEST_F(AModule, TellsNothingBetweenACommandAndItsAnswer) {
    ModuleProcess module;
    module.begin();
    EXPECT_EQ("202 OK RECEIVING MESSAGE\n", module.ask("SPEAK\na\n.\nSET"));
    EXPECT_EQ(0, device.ctl({"say", "--wait", "behind it"}).status);
    module.say("rate=0\n.");
    for (const char* line : {"200 OK SPEAKING", "203 OK RECEIVING SETTINGS",
                             "203 OK SETTINGS RECEIVED", "701 BEGIN", "702 END"}) {
        EXPECT_EQ(line, module.process().readLine());
    }
}

TEST_F(AModule, EndsWithItsInput) {
    ModuleProcess module;
    module.begin();
    module.say("SPEAK");
    module.process().closeInput();
    EXPECT_EQ(0, module.process().wait());
}

TEST_F(AModuleInRealTime, IsSilentSoonAfterAStop) {
    ModuleProcess module;
    module.begin();
    module.send("SPEAK", kLong);
    module.awaitEvent("701 BEGIN");
    module.say("STOP");
    EXPECT_EQ("703", module.eventsToEnd().back());
    module.send("SPEAK", "a\n");
    EXPECT_EQ((Lines{"701", "702"}), module.eventsToEnd());
}

TEST_F(AModuleInRealTime, PausesAtTheNextMark) {
    ModuleProcess module;
    module.begin();
    module.send("SPEAK",
                "<speak>One two.<mark name=\"a\"/> Three.<mark name=\"b\"/> Four five six "
                "seven eight nine ten eleven twelve.</speak>\n");
    module.awaitEvent("700-a");
    module.say("PAUSE");
    EXPECT_EQ((Lines{"700", "700-b", "700", "704"}), module.eventsToEnd());
}

TEST_F(AModuleInRealTime, RefusesASecondMessageMeanwhile) {
    ModuleProcess module;
    module.begin();
    module.send("SPEAK", kLong);
    module.awaitEvent("701 BEGIN");
    module.say("SPEAK");
    module.say("b\n.");
    module.awaitEvent("301 ERROR CANT SPEAK");
    module.say("STOP");
    EXPECT_EQ("703", module.eventsToEnd().back());
}

TEST_F(AModuleInRealTime, TellsAStopByOthers) {
    ModuleProcess module;
    module.begin();
    module.send("SPEAK", kLong);
    module.awaitEvent("701 BEGIN");
    EXPECT_EQ(0, device.ctl({"stop"}).status);
    EXPECT_EQ("703", module.eventsToEnd().back());
}

}  // namespace
