// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

using namespace voxtrel_test;

namespace {

const std::string kMarked =
    "<speak>Hello, <mark name=\"a\"/>wide <prosody rate=\"slow\">world</prosody>"
    "<mark name=\"b\"/></speak>";

TEST(SaySsml, ShowsWordsAndMarks) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string expected =
        "started 1\nword 1 at 7: Hello,\nmark 1 1\nword 1 at 30: wide\n"
        "word 1 at 56: world\nmark 1 2\nfinished 1\n";
    EXPECT_EQ(device.ctl({"say", "--ssml", "--wait", kMarked}).out, expected);
    writeFile(device.path("text"), kMarked);
    EXPECT_EQ(device.ctl({"say", "--ssml", "-w", "--file", device.path("text")}).out, expected);
    EXPECT_EQ(device.ctl({"say", "--json", "--ssml", kMarked}).out,
              "{\"event\":\"started\",\"utterance\":1}\n"
              "{\"event\":\"word\",\"utterance\":1,\"offset\":7,\"word\":\"Hello,\"}\n"
              "{\"event\":\"mark\",\"utterance\":1,\"mark\":1}\n"
              "{\"event\":\"word\",\"utterance\":1,\"offset\":30,\"word\":\"wide\"}\n"
              "{\"event\":\"word\",\"utterance\":1,\"offset\":56,\"word\":\"world\"}\n"
              "{\"event\":\"mark\",\"utterance\":1,\"mark\":2}\n"
              "{\"event\":\"finished\",\"utterance\":1}\n");
}

TEST(SaySsml, NamesLineAndColumnOfAMistakeAndSpeaksNothing) {
    Device device;
    device.startService();
    const Outcome refused = device.ctl({"say", "--ssml"}, "<speak>One.\n<p>Two.</s></speak>\n");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "voxtrelctl: -3 bad parameter: line 2, column 8: </s> where </p> is due: correct the "
              "markup, or leave out --ssml\n");
    EXPECT_EQ(device.ctl({"say", "--ssml", "Hello"}).status, 1);
    EXPECT_EQ(device.ctl({"say", "--ssml"}, "").status, 1);
    device.stopService();
    EXPECT_EQ(readSound(device.wavPath()).samples.size(), 0U);
}

TEST(LongSsml, IsSentWhole) {
    Device device;
    device.startService({"--sink", "none"});
    std::string text = "<speak>";
    while (text.size() < 60'000) {
        text += "<!-- " + std::string(500, '-') + " --> ";
    }
    text += "Hello.<mark name=\"end\"/></speak>";
    for (const Device::Words& words :
         {Device::Words{"say", "--wait", "--ssml"}, Device::Words{"say", "--wait"}}) {
        const Outcome said = device.ctl(words, text);
        EXPECT_EQ(said.status, 0) << said.err;
        EXPECT_NE(said.out.find("mark 1 1\nfinished 1\n"), std::string::npos) << said.out;
        EXPECT_EQ(said.out.find("started 2"), std::string::npos) << said.out;
    }
}

TEST(LongSsml, BeyondWhatCanBeSentAtOnceIsRefused) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string text = "<speak>" + std::string(65'536, ' ') + "a</speak>";
    for (const Device::Words& words :
         {Device::Words{"say", "--ssml"}, Device::Words{"say", "--wait"}}) {
        const Outcome refused = device.ctl(words, text);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err,
                  "voxtrelctl: -3 bad parameter: the marked-up text has 65552 bytes, and no more "
                  "than 65536 can be sent at once: say it in several texts, each in a <speak> of "
                  "its own\n");
    }
}

double secondsOf(const std::string& text) {
    Device device;
    device.startService();
    const Outcome said = device.ctl({"say", "--ssml", "--wait", text});
    EXPECT_EQ(said.status, 0) << said.err;
    device.stopService();
    return readSound(device.wavPath()).seconds();
}

TEST(ABreakOfSsml, IsHeardAsSilence) {
    const double with = secondsOf("<speak>One. <break time='1s'/> Two.</speak>");
    const double without = secondsOf("<speak>One. Two.</speak>");
    EXPECT_GT(with - without, 0.7);  // it takes the place of the pause behind a sentence
    EXPECT_LT(with - without, 1.3);
}

TEST(AStop, EndsSsmlInTheMiddleOfABreak) {
    Device device;
    device.startService({"--real-time"});
    const auto said =
        device.start({"say", "--ssml", "--wait",
                      "<speak>One<mark name='a'/><break time='60s'/><mark name='b'/>two</speak>"});
    ASSERT_TRUE(said->awaitOutput("mark 1 1"));
    EXPECT_EQ(device.ctl({"stop"}).status, 0);
    const Outcome stopped = said->finish();
    EXPECT_EQ(stopped.status, 0) << stopped.err;
    EXPECT_NE(stopped.out.find("stopped 1 (flushed)"), std::string::npos) << stopped.out;
    EXPECT_EQ(stopped.out.find("mark 1 2"), std::string::npos) << stopped.out;
    device.stopService();
    EXPECT_LT(readSound(device.wavPath()).seconds(), 30);
}

TEST(SsmlThatNamesFiles, MakesTheServiceOpenNone) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string pipe = device.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);  // who opens it to read hangs
    const std::string made = device.path("made");
    const Outcome said = device.ctl({"say", "--ssml", "--wait",
                                     "<speak xml:base=\"" + pipe + "\"><audio src=\"" + pipe +
                                         "\">fallback</audio>"
                                         "<audio src='x\";touch " +
                                         made + ";\"'/><voice name=\"" + pipe +
                                         "\">voice</voice>"
                                         "<lexicon uri=\"" +
                                         pipe + "\"/>end</speak>"});
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_NE(said.out.find("finished 1"), std::string::npos) << said.out;
    EXPECT_FALSE(std::filesystem::exists(made));
}

struct Broken {
    const char* what;
    std::string text;
};

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t n = 0; n < times; ++n) {
        all += text;
    }
    return all;
}

TEST(BrokenSsml, IsSpokenAndTheServiceLives) {
    Device device;
    device.startService({"--sink", "none"});
    const Broken kTexts[] = {
        {"open", "<speak>Hello <prosody rate='fast'"},
        {"nested", "<speak>" + repeated("<prosody rate='fast'>", 3'000) + "Hello"},
        {"marks", "<speak>" + repeated("<mark/>", 9'000) + "Hello"},
        {"huge attribute", "<speak><prosody rate='" + std::string(60'000, '9') + "'>Hello"},
        {"angles", "<speak>Hello " + std::string(200, '<')},
        {"numbers", "<speak><prosody rate='-9999%' pitch='9999Hz' range='0%'>Hello"},
        {"languages", "<speak>" + repeated("<lang xml:lang='fr'>a</lang>b", 100) + "Hello"},
    };
    for (const Broken& each : kTexts) {
        const Outcome said = device.ctl({"say", "--wait", "--speed", "900"}, each.text);
        EXPECT_EQ(said.status, 0) << each.what << ": " << said.err;
        EXPECT_NE(said.out.find("finished 1"), std::string::npos) << each.what;
    }
}

}  // namespace
