// SPDX-License-Identifier: Apache-2.0
// The real server with the module, and its command line.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/speech_dispatcher/Desktop.h"
#include "tests/speech_dispatcher/ServerConnection.h"
#include "tests/voxtrelctl/Sound.h"

namespace {

using namespace voxtrel_test;

constexpr const char* kLong =
    "One two three four five six seven eight nine ten eleven twelve thirteen fourteen fifteen "
    "sixteen seventeen eighteen nineteen twenty.";

/// Milliseconds, where a service is not there.
constexpr unsigned kShortTimeout = 5000;

/// Runs spd-say, which must succeed.
void speak(Desktop& desktop, const ChildProcess::Words& arguments) {
    const Outcome said = desktop.say(arguments);
    EXPECT_EQ(0, said.status) << said.out << said.err;
}

/// The sound of all that was said, once the service has ended.
Sound soundOf(Desktop& desktop) {
    desktop.device.stopService();
    return readSound(desktop.device.wavPath());
}

/// The sound of one message by a service of its own.
Sound soundOf(Desktop& desktop, ChildProcess::Words arguments, const std::string& text) {
    desktop.device.stopService();
    desktop.device.startService({"--sink", "wav:" + desktop.device.path("one.wav")});
    arguments.insert(arguments.end(), {"-w", text});
    speak(desktop, arguments);
    desktop.device.stopService();
    Sound sound = readSound(desktop.device.path("one.wav"));
    desktop.device.startService();
    return sound;
}

std::size_t filesIn(const std::string& folder) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        count += readSound(entry.path().string()).isSilent() ? 0U : 1U;
    }
    return count;
}

TEST(TheDesktop, SpeaksThroughTheService) {
    Desktop desktop;
    EXPECT_EQ("OUTPUT MODULES\nvoxtrel\n", desktop.say({"-O"}).out);
    speak(desktop, {"-w", kLong});
    const double alone = engineAlone(kLong, "en-us", 300).seconds();
    EXPECT_NEAR(alone, soundOf(desktop).seconds(), 0.3 * alone);
}

TEST(TheDesktop, IsEnabledByOneLineBehindTheConfigurationThatTheServerComesWith) {
    Desktop desktop({}, kShortTimeout, true);
    EXPECT_EQ("OUTPUT MODULES\nvoxtrel\n", desktop.say({"-O"}).out);
    const std::string text = "Well, yes; no.";
    const double none = soundOf(desktop, {"-l", "en-US", "-m", "none"}, text).seconds();
    EXPECT_GT(none, 0.3);
    EXPECT_GT(soundOf(desktop, {"-l", "en-US", "-m", "all"}, text).seconds(), 1.4 * none)
        << "the server names punctuation";
}

TEST(TheDesktop, IsToldOfMarks) {
    Desktop desktop;
    const Outcome said = desktop.say(
        {"-w", "-x", "<speak>One <mark name=\"first\"/>two. <mark name=\"2nd\"/>Three.</speak>"});
    EXPECT_EQ(0, said.status);
    EXPECT_EQ("reached mark 'first'\nreached mark '2nd'\n", said.out + said.err);
}

TEST(TheDesktop, CutsWhatIsStoppedOrCancelled) {
    Desktop desktop({"--real-time"});
    double before = 0;
    for (const char* option : {"-S", "-C"}) {
        const std::unique_ptr<ChildProcess> said = desktop.start({"-w", kLong});
        ASSERT_TRUE(desktop.awaitSound(before + 0.3));
        desktop.say({option});
        EXPECT_EQ(0, said->finish().status) << option;
        before += 0.3;
    }
    speak(desktop, {"-w", "Hello"});
    EXPECT_LT(soundOf(desktop).seconds(), engineAlone(kLong, "en-us", 300).seconds())
        << "both together are less than one of them whole";
}

TEST(TheDesktop, LetsAnImportantMessageGoFirst) {
    Desktop desktop({"--real-time"});
    const std::unique_ptr<ChildProcess> text = desktop.start({"-w", "-P", "text", kLong});
    ASSERT_TRUE(desktop.awaitSound(0.3));
    speak(desktop, {"-w", "-P", "important", "Fire"});
    EXPECT_EQ(0, text->finish().status);
    EXPECT_LT(soundOf(desktop).seconds(), engineAlone(kLong, "en-us", 300).seconds());
}

TEST(TheDesktop, PausesAtTheEndOfASentenceAndGoesOnWithTheNext) {
    Desktop desktop({"--real-time"});
    ServerConnection reader(desktop.socketPath());
    reader.ask("SET self CLIENT_NAME test:reader:main", "208 ");
    reader.ask("SET self NOTIFICATION ALL ON", "220 ");
    reader.ask("SET self PRIORITY MESSAGE", "202 ");
    reader.ask("SPEAK", "230 ");
    reader.ask("One two three. Four five six. Seven eight nine. Ten eleven twelve.\r\n.", "225 ");
    reader.await("701 BEGIN");
    reader.ask("PAUSE self", "211 ");
    reader.await("704 PAUSED");
    reader.ask("RESUME self", "212 ");
    reader.await("705 RESUMED");
    reader.await("702 END");
    const double whole =
        engineAlone("One two three. Four five six. Seven eight nine. Ten eleven twelve.", "en-us",
                    300)
            .seconds();
    const double heard = soundOf(desktop).seconds();
    EXPECT_GT(heard, 0.7 * whole) << "nothing is left out";
    EXPECT_LT(heard, 1.7 * whole) << "not all is heard twice";
}

TEST(TheDesktop, ListsTheServicesVoices) {
    Desktop desktop;
    const std::string voices = desktop.say({"-L"}).out;
    EXPECT_NE(std::string::npos, voices.find("fr-fr+f1                    fr-FR")) << voices;
    EXPECT_NE(std::string::npos, voices.find(" en-us+m8 ")) << voices;
}

TEST(TheDesktop, ChoosesLanguageAndVoice) {
    Desktop desktop;
    const std::string text = "un deux trois quatre cinq";
    const Sound english = soundOf(desktop, {"-l", "en-US"}, text);
    const Sound french = soundOf(desktop, {"-l", "fr"}, text);
    EXPECT_NE(english.samples, french.samples);
    EXPECT_EQ(french.samples, soundOf(desktop, {"-y", "fr-fr"}, text).samples);
    const Sound female = soundOf(desktop, {"-l", "fr", "-t", "female1"}, text);
    EXPECT_NE(french.samples, female.samples);
    EXPECT_EQ(female.samples, soundOf(desktop, {"-l", "fr", "-y", "fr-fr+f1"}, text).samples);
}

TEST(TheDesktop, ChoosesRatePitchAndVolume) {
    Desktop desktop;
    const std::string text = "One two three four.";
    const auto soundWithout = [&](ChildProcess::Words words) {
        desktop.device.stopService();
        desktop.device.startService({"--sink", "wav:" + desktop.device.path("one.wav")});
        words.insert(words.begin(), {"say", "--wait", "--lang", "en-US"});
        words.push_back("<speak>" + text + "</speak>");
        EXPECT_EQ(0, desktop.device.ctl(words).status);
        desktop.device.stopService();
        const Sound sound = readSound(desktop.device.path("one.wav"));
        desktop.device.startService();
        return sound.samples;
    };
    const auto soundWith = [&](const char* option, const char* value) {
        return soundOf(desktop, {"-l", "en-US", option, value}, text).samples;
    };
    EXPECT_EQ(soundWithout({}), soundWith("-r", "0"));
    EXPECT_EQ(soundWithout({"--speed", "600"}), soundWith("-r", "50"));
    EXPECT_EQ(soundWithout({"--speed", "80"}), soundWith("-r", "-100"));
    EXPECT_EQ(soundWithout({"--pitch", "300"}), soundWith("-p", "50"));
    EXPECT_EQ(soundWithout({"--pitch", "0"}), soundWith("-p", "-100"));
    EXPECT_EQ(soundWithout({"--volume", "50"}), soundWith("-i", "-50"));
    EXPECT_EQ(soundWithout({"--volume", "100"}), soundWith("-i", "100"));
}

TEST(TheDesktop, SpellsAndNamesCharactersKeysAndIcons) {
    Desktop desktop;
    for (const ChildProcess::Words& words : {ChildProcess::Words{"-w", "-c", "a"},
                                             {"-w", "-k", "shift_a"},
                                             {"-w", "-I", "new-mail"}}) {
        speak(desktop, words);
    }
    EXPECT_FALSE(soundOf(desktop).isSilent());
    desktop.device.startService();
    EXPECT_GT(soundOf(desktop, {"-s"}, "was").seconds(), soundOf(desktop, {}, "was").seconds());
}

TEST(TheDesktop, EndsAMessageThatIsTooLong) {
    Desktop desktop;
    ServerConnection reader(desktop.socketPath());
    reader.ask("SET self CLIENT_NAME test:reader:main", "208 ");
    reader.ask("SET self NOTIFICATION ALL ON", "220 ");
    reader.ask("SPEAK", "230 ");
    reader.say(std::string(1'100'000, 'x'));
    reader.ask(".", "225 ");
    reader.await("703 CANCELED");
    speak(desktop, {"-w", "Hello"});
    EXPECT_FALSE(soundOf(desktop).isSilent());
}

TEST(TheDesktop, SpeaksTwoHundredMessages) {
    const TempFolder sounds;
    Desktop desktop({"--sink", "wavdir:" + sounds.path("all")});
    constexpr std::size_t kMessages = 200;
    for (std::size_t count = 0; count < kMessages; ++count) {
        speak(desktop, {"-w", "Message " + std::to_string(count)});
    }
    desktop.device.stopService();
    EXPECT_EQ(kMessages, filesIn(sounds.path("all")));
}

TEST(TheDesktop, GoesOnWhenTheServiceIsKilled) {
    Desktop desktop({"--real-time"}, kShortTimeout);
    const std::unique_ptr<ChildProcess> cut = desktop.start({"-w", kLong});
    ASSERT_TRUE(desktop.awaitSound(0.3));
    desktop.device.killService();
    EXPECT_EQ(0, cut->finish().status);
    speak(desktop, {"-w", "Nobody hears this."});
    desktop.device.startService({"--sink", "wav:" + desktop.device.path("next.wav")});
    speak(desktop, {"-w", kLong});
    desktop.device.stopService();
    const double alone = engineAlone(kLong, "en-us", 300).seconds();
    EXPECT_NEAR(alone, readSound(desktop.device.path("next.wav")).seconds(), 0.3 * alone);
}

TEST(TheDesktop, IsNotSilencedByAServiceThatIsStopped) {
    Desktop desktop({}, kShortTimeout);
    desktop.device.service().kill(SIGSTOP);
    speak(desktop, {"-w", "Nobody hears this."});
    desktop.device.service().kill(SIGCONT);
    speak(desktop, {"-w", kLong});
    EXPECT_FALSE(soundOf(desktop).isSilent());
}

}  // namespace
