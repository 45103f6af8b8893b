// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <ostream>

#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

using namespace voxtrel_test;

namespace {

struct Paragraph {
    const char* language;
    const char* voice;  ///< as the engine spells it
    const char* text;
};

void PrintTo(const Paragraph& paragraph, std::ostream* out) {
    *out << paragraph.language;
}

constexpr Paragraph kParagraphs[] = {
    {"en_US", "en-us",
     "The last train had left the station an hour ago. A man in a grey coat "
     "stood on the platform "
     "and read the timetable once more, although he knew every line of it. "
     "Then it began to rain."},
    {"fr_FR", "fr",
     "Le dernier train avait quitté la gare depuis une heure. Un homme en "
     "manteau gris attendait "
     "encore sur le quai et relisait l'horaire, bien qu'il en connût chaque "
     "ligne. Puis il se mit "
     "à pleuvoir."},
    {"es_ES", "es",
     "El último tren había salido de la estación hacía una hora. Un hombre de "
     "abrigo gris seguía "
     "en el andén y leía otra vez el horario, aunque conocía cada línea. "
     "Entonces empezó a "
     "llover."},
    {"ko_KR", "ko",
     "마지막 기차는 한 시간 전에 역을 떠났다. 회색 외투를 입은 남자가 승강장에 "
     "서서 시간표를 "
     "다시 읽었다. 그리고 비가 내리기 시작했다."},
    {"pt_PT", "pt",
     "O último comboio tinha deixado a estação há uma hora. Um homem de casaco "
     "cinzento continuava "
     "no cais e lia outra vez o horário, embora conhecesse cada linha. Depois "
     "começou a chover."},
};

constexpr int kRate = 200;

Sound spoken(Device& device, const Device::Words& arguments) {
    device.startService();
    Device::Words words = {"say", "--wait"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Outcome said = device.ctl(words);
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_EQ(said.err, "");
    device.stopService();
    return readSound(device.wavPath());
}

Sound spoken(const Device::Words& arguments) {
    Device device;
    return spoken(device, arguments);
}

class AParagraph : public ::testing::TestWithParam<Paragraph> {};

TEST_P(AParagraph, IsHeardAsLongAsTheEngineAloneWouldSpeakIt) {
    const Paragraph& paragraph = GetParam();
    const Sound sound =
        spoken({"--lang", paragraph.language, "--speed", std::to_string(kRate), paragraph.text});
    const Sound alone = engineAlone(paragraph.text, paragraph.voice, kRate);
    EXPECT_EQ(sound.rate, alone.rate);
    EXPECT_FALSE(sound.isSilent());
    EXPECT_GT(sound.loudness(), alone.loudness() / 2);
    EXPECT_GT(sound.seconds(), alone.seconds() * 0.75);
    EXPECT_LT(sound.seconds(), alone.seconds() * 1.25);
}

INSTANTIATE_TEST_SUITE_P(OfEachLanguage, AParagraph, ::testing::ValuesIn(kParagraphs),
                         [](const auto& each) { return std::string(each.param.language); });

TEST(TwiceTheSpeed, IsHeardInAboutHalfTheTime) {
    const char* text = kParagraphs[0].text;
    const double slow = spoken({"--speed", "150", text}).seconds();
    const double fast = spoken({"--speed", "300", text}).seconds();
    EXPECT_LT(fast, slow * 0.65);
    EXPECT_GT(fast, slow * 0.35);
}

TEST(ALowerVolume, IsLessLoud) {
    const char* text = kParagraphs[0].text;
    const double loud = spoken({"--volume", "100", text}).loudness();
    const double soft = spoken({"--volume", "25", text}).loudness();
    EXPECT_GT(loud, soft * 2);
    EXPECT_GT(soft, 0);
}

TEST(VolumeZero, IsSilentButTakesItsTime) {
    const char* text = kParagraphs[0].text;
    const Sound quiet = spoken({"--volume", "0", text});
    EXPECT_TRUE(quiet.isSilent());
    EXPECT_GT(quiet.seconds(), 2);
}

TEST(TtsVolumeZero, IsSilent) {
    EXPECT_TRUE(spoken({"--tts-volume", "0", kParagraphs[0].text}).isSilent());
}

TEST(AHigherPitch, SoundsDifferent) {
    const char* text = "One sentence in two voices.";
    const Sound low = spoken({"--pitch", "100", text});
    const Sound high = spoken({"--pitch", "300", text});
    EXPECT_NE(low.samples, high.samples);
    EXPECT_FALSE(low.isSilent());
}

TEST(AVoice, IsChosenByNumberOrByName) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome voices = device.ctl({"voices", "en_US"});
    ASSERT_EQ(voices.status, 0) << voices.err;
    EXPECT_NE(voices.out.find("en_US  2"), std::string::npos) << voices.out;
    const std::string line = voices.out.substr(voices.out.find("en_US  2"));
    const size_t name = line.find_first_not_of(' ', 8);
    const std::string second = line.substr(name, line.find_first_of(" \n", name) - name);
    EXPECT_EQ(device.ctl({"say", "--wait", "--voice", "2", "hi"}).status, 0);
    const Outcome named = device.ctl({"say", "--wait", "--voice", second, "hi"});
    EXPECT_EQ(named.status, 0) << named.err;
    const Outcome unknown = device.ctl({"say", "--voice", "nobody", "hi"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err,
              "voxtrelctl: -3 bad parameter: en_US has no voice \"nobody\": "
              "see voxtrelctl voices en_US\n");
}

TEST(AText, ComesFromArgumentsAFileOrStandardInput) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string expected =
        "started 1\nword 1 at 0: Hello,\nword 1 at 7: world.\nfinished 1\n";
    EXPECT_EQ(device.ctl({"say", "-w", "Hello,", "world."}).out, expected);
    EXPECT_EQ(device.ctl({"say", "-w"}, "Hello, world.").out, expected);
    EXPECT_EQ(device.ctl({"say", "-w", "--file", "-"}, "Hello, world.").out, expected);
    writeFile(device.path("text"), "Hello, world.");
    EXPECT_EQ(device.ctl({"say", "-w", "--file", device.path("text")}).out, expected);
}

TEST(AText, IsSpokenInJsonOnRequest) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"say", "--json", "Hello, world."}).out,
              "{\"event\":\"started\",\"utterance\":1}\n"
              "{\"event\":\"word\",\"utterance\":1,\"offset\":0,\"word\":\"Hello,\"}\n"
              "{\"event\":\"word\",\"utterance\":1,\"offset\":7,\"word\":\"world.\"}\n"
              "{\"event\":\"finished\",\"utterance\":1}\n");
}

TEST(ALongText, IsOneUtteranceWithItsWordsWhereTheyStand) {
    Device device;
    device.startService({"--sink", "none"});
    // Mostly blanks, so that it is long for the requests and short for the voice.
    std::string text;
    for (int n = 0; n < 40; ++n) {
        text += "It rains." + std::string(991, ' ');
    }
    const Outcome said = device.ctl({"say", "--wait", "--speed", "900"}, text);
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_EQ(said.out.rfind("started 1\nword 1 at 0: It\n", 0), 0U) << said.out;
    EXPECT_NE(said.out.find("word 1 at 39003: rains.\nfinished 1\n"), std::string::npos)
        << said.out;
    EXPECT_EQ(said.out.find("started 2"), std::string::npos);
}

TEST(ALongText, IsHandedOverAsItIsSpoken) {
    Device device;
    device.startService({"--sink", "none"});
    std::string text;
    for (int n = 0; n < 200; ++n) {
        text += "It rains." + std::string(991, ' ');
    }
    const Outcome said = device.ctl({"say", "--speed", "900"}, text);
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_EQ(said.err.find("queue is full"), std::string::npos) << said.err;
    EXPECT_EQ(device.ctl({"silence", "--wait", "1"}).status, 0);
}

TEST(SayWithoutWait, LeavesAtOnceAndIsSpokenAllTheSame) {
    Device device;
    device.startService({"--real-time"});
    const char* text = kParagraphs[0].text;
    EXPECT_EQ(device.ctl({"say", "--speed", "400", text}).status, 0);
    // Of two clients that were not heard yet, the first to come is heard first.
    const Outcome last = device.ctl({"silence", "--wait", "1"});
    EXPECT_EQ(last.status, 0) << last.err;
    device.stopService();
    const double alone = engineAlone(text, "en-us", 400).seconds();
    EXPECT_GT(readSound(device.wavPath()).seconds(), alone * 0.75);
}

TEST(Silence, IsAsLongAsAskedFor) {
    Device device;
    device.startService();
    EXPECT_EQ(device.ctl({"silence", "--wait", "1500"}).status, 0);
    device.stopService();
    const Sound pause = readSound(device.wavPath());
    EXPECT_TRUE(pause.isSilent());
    EXPECT_NEAR(pause.seconds(), 1.5, 0.05);
}

TEST(Silence, ThatIsTooLongIsRefused) {
    Device device;
    device.startService({"--sink", "none"});
    for (const Device::Words& words :
         {Device::Words{"silence", "60001"}, Device::Words{"silence", "--wait", "60001"}}) {
        const Outcome refused = device.ctl(words);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err.rfind("voxtrelctl: -3 bad parameter: ", 0), 0U) << refused.err;
    }
}

TEST(ALongQuiet, EndsNoCommandThatWaits) {
    Device device;
    device.startService({"--sink", "none", "--real-time"});
    const Outcome outcome = device.ctl({"silence", "--wait", "35000"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

}  // namespace
