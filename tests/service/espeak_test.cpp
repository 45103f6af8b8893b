// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <numeric>
#include <set>

#include "service/EspeakEngine.h"
#include "service/Text.h"

namespace voxtreld {
namespace {

/// Keeps the sound and the words, and can refuse more after some samples.
class Ear : public SpeechReceiver {
public:
    void word(size_t offset) override {
        words.push_back(offset);
        wordsAt.push_back(samplesHeard.size());
    }
    bool samples(const int16_t* samples, size_t count) override {
        ++blocks;
        samplesHeard.insert(samplesHeard.end(), samples, samples + count);
        return samplesHeard.size() < enough;
    }
    int loudest() const {
        int peak = 0;
        for (const int16_t sample : samplesHeard) {
            peak = std::max(peak, std::abs(static_cast<int>(sample)));
        }
        return peak;
    }

    std::vector<size_t> words;
    std::vector<size_t> wordsAt;  ///< samples before each word
    std::vector<int16_t> samplesHeard;
    size_t blocks = 0;
    size_t enough = SIZE_MAX;
};

class TheEspeakEngine : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(engine.load(error)) << error;
    }
    Ear hear(const std::string& text, const Prosody& prosody) {
        Ear ear;
        EXPECT_TRUE(engine.speak(text, prosody, ear));
        return ear;
    }
    Prosody prosodyOf(EN_VOXTREL_LANGUAGE language, uint32_t voice = 1) {
        Prosody prosody;
        prosody.language = language;
        prosody.voice = voice;
        return prosody;
    }

    EspeakEngine engine;
};

constexpr EN_VOXTREL_LANGUAGE kLanguages[] = {LANG_EN_US, LANG_FR_FR, LANG_ES_ES, LANG_KO_KR,
                                              LANG_PT_PT};

TEST_F(TheEspeakEngine, OffersSeveralDifferentlyNamedVoicesInEachOfTheFiveLanguages) {
    std::map<EN_VOXTREL_LANGUAGE, std::set<std::string>> names;
    size_t count = 0;
    for (const EngineVoice& voice : engine.voices()) {
        names[voice.language].insert(voice.name);
        ++count;
        EXPECT_EQ(std::string::npos, voice.name.find_first_of(",.")) << voice.name;
        EXPECT_LT(voice.name.size(), 64U);
    }
    EXPECT_EQ(5U, names.size());
    size_t unique = 0;
    for (const EN_VOXTREL_LANGUAGE language : kLanguages) {
        EXPECT_GE(names[language].size(), 2U) << language;
        unique += names[language].size();
    }
    EXPECT_EQ(count, unique);
}

TEST_F(TheEspeakEngine, SpeaksEveryVoiceOfEveryLanguageAudibly) {
    std::map<EN_VOXTREL_LANGUAGE, uint32_t> numbers;
    for (const EngineVoice& voice : engine.voices()) {
        const Ear ear = hear("Radio 1 2 3.", prosodyOf(voice.language, ++numbers[voice.language]));
        EXPECT_GT(ear.samplesHeard.size(), engine.sampleRate() / 4) << voice.name;
        EXPECT_GT(ear.loudest(), 1000) << voice.name;
    }
}

TEST_F(TheEspeakEngine, GivesAnotherVoiceAnotherSound) {
    for (const EN_VOXTREL_LANGUAGE language : kLanguages) {
        const Ear first = hear("Radio.", prosodyOf(language, 1));
        const Ear second = hear("Radio.", prosodyOf(language, 2));
        EXPECT_NE(first.samplesHeard, second.samplesHeard) << language;
    }
}

struct Sentence {
    EN_VOXTREL_LANGUAGE language;
    const char* text;
    std::vector<size_t> words;  ///< offsets in characters
};

TEST_F(TheEspeakEngine, AnnouncesWordsByTheirOffsetInCharacters) {
    const Sentence kSentences[] = {
        {LANG_EN_US, "Hello, wide world.", {0, 7, 12}},
        {LANG_FR_FR, "\xC3\x89t\xC3\xA9 \xC3\xA0 c\xC3\xB4t\xC3\xA9.", {0, 4, 6}},
        {LANG_ES_ES,
         "Ma\xC3\xB1"
         "ana ser\xC3\xA1.",
         {0, 7}},
        {LANG_KO_KR, "\xEC\x95\x88\xEB\x85\x95 \xEC\x84\xB8\xEA\xB3\x84.", {0, 3}},
        {LANG_PT_PT, "Amanh\xC3\xA3 n\xC3\xA3o.", {0, 7}},
    };
    for (const Sentence& sentence : kSentences) {
        const Ear ear = hear(sentence.text, prosodyOf(sentence.language));
        EXPECT_EQ(sentence.words, ear.words) << sentence.text;
        EXPECT_TRUE(std::is_sorted(ear.wordsAt.begin(), ear.wordsAt.end()));
        EXPECT_LT(ear.wordsAt.back(), ear.samplesHeard.size());
    }
}

TEST_F(TheEspeakEngine, NamesNoWordTwiceAndGoesForwardOnly) {
    const Ear ear =
        hear("In 1999 the 3 dogs cost $125.50, see http://x.y/z now. End!", prosodyOf(LANG_EN_US));
    for (size_t i = 1; i < ear.words.size(); ++i) {
        EXPECT_LT(ear.words[i - 1], ear.words[i]);
    }
    EXPECT_EQ(55U, ear.words.back());
}

TEST_F(TheEspeakEngine, SpeaksFasterAtAHigherSpeed) {
    Prosody prosody = prosodyOf(LANG_EN_US);
    const std::string text = "The quick brown fox jumps over the lazy dog.";
    size_t previous = SIZE_MAX;
    for (const uint32_t speed : {kSpeedMin, 150U, 300U, 600U, kSpeedMax}) {
        prosody.speed = speed;
        const size_t length = hear(text, prosody).samplesHeard.size();
        EXPECT_LT(length, previous) << speed;
        previous = length;
    }
}

/// The sound without what lies above some 300 Hz, so that formants do not hide the voice's own
/// tone.
std::vector<double> hum(const std::vector<int16_t>& sound, unsigned rate) {
    std::vector<double> heard(sound.begin(), sound.end());
    const size_t width = rate / 300;
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<double> mean;
        for (size_t i = 0; i + width <= heard.size(); ++i) {
            const auto from = heard.begin() + static_cast<std::ptrdiff_t>(i);
            mean.push_back(std::accumulate(from, from + static_cast<std::ptrdiff_t>(width), 0.0));
        }
        heard = std::move(mean);
    }
    return heard;
}

/// How much the middle of the sound is like itself `delay` samples later; 1 for a perfect copy.
double likeness(const std::vector<double>& sound, size_t delay) {
    double product = 0;
    double here = 0;
    double later = 0;
    for (size_t i = sound.size() / 4; i < sound.size() / 2; ++i) {
        const double a = sound[i];
        const double b = sound[i + delay];
        product += a * b;
        here += a * a;
        later += b * b;
    }
    return product / std::sqrt(here * later);
}

/// The pitch in Hz: one over the shortest delay at which the sound is nearly as much like itself as
/// at any. Short delays before the first dip do not count: every smooth sound is like itself there.
double pitchOf(const Ear& ear, unsigned rate) {
    const std::vector<double> sound = hum(ear.samplesHeard, rate);
    std::vector<double> curve;
    for (size_t delay = 0; delay < rate / 40; ++delay) {
        curve.push_back(likeness(sound, delay));
    }
    const auto dip = std::find_if(curve.begin(), curve.end(), [](double r) { return r < 0.3; });
    if (dip == curve.end()) {
        return 0;
    }
    const double most = *std::max_element(dip, curve.end());
    const auto peak = std::find_if(dip, curve.end(), [most](double r) { return r > 0.9 * most; });
    return static_cast<double>(rate) / static_cast<double>(peak - curve.begin());
}

TEST_F(TheEspeakEngine, SpeaksHigherAtAHigherPitch) {
    Prosody prosody = prosodyOf(LANG_EN_US);
    prosody.speed = 100;
    double previous = 1;
    for (const float pitch : {kPitchMin, 200.0F, kPitchMax}) {
        prosody.pitch = pitch;
        const double hertz = pitchOf(hear("Ah.", prosody), engine.sampleRate());
        EXPECT_GT(hertz, previous * 1.1) << pitch;
        previous = hertz;
    }
}

TEST_F(TheEspeakEngine, PausesBehindATextOnlyWhenAsked) {
    Prosody prosody = prosodyOf(LANG_EN_US);
    const size_t paused = hear("Yes", prosody).samplesHeard.size();
    prosody.endPause = false;
    EXPECT_LT(hear("Yes", prosody).samplesHeard.size() + engine.sampleRate() / 50, paused);
}

TEST_F(TheEspeakEngine, NamesPunctuationWhenAsked) {
    Prosody prosody = prosodyOf(LANG_EN_US);
    const size_t plain = hear("Yes (no)?", prosody).samplesHeard.size();
    prosody.punctuation = true;
    const size_t named = hear("Yes (no)?", prosody).samplesHeard.size();
    prosody.punctuation = false;
    EXPECT_GT(named, plain * 5 / 4);
    EXPECT_LT(hear("Yes (no)?", prosody).samplesHeard.size(), plain * 9 / 8);
}

TEST_F(TheEspeakEngine, KeepsTheSpeedWhenOnlyTheVoiceChanges) {
    for (const EN_VOXTREL_LANGUAGE language : kLanguages) {
        Prosody slow = prosodyOf(LANG_EN_US);
        slow.speed = 100;
        slow.pitch = kPitchMax;
        hear("One.", slow);
        slow.language = language;
        slow.voice = 2;
        const Ear changed = hear("Radio radio radio.", slow);
        Prosody other = slow;
        other.speed = 300;
        other.pitch = kPitchMin;
        hear("One.", other);
        const Ear setAnew = hear("Radio radio radio.", slow);
        EXPECT_NEAR(static_cast<double>(setAnew.samplesHeard.size()),
                    static_cast<double>(changed.samplesHeard.size()),
                    static_cast<double>(changed.samplesHeard.size()) * 0.05)
            << language;
    }
}

TEST_F(TheEspeakEngine, StopsMakingSoundAtOnceWhenTheReceiverHasEnough) {
    Ear ear;
    ear.enough = 1;
    EXPECT_TRUE(engine.speak("A long sentence that nobody wants to hear to its very end.",
                             prosodyOf(LANG_EN_US), ear));
    EXPECT_EQ(1U, ear.blocks);
    // and the next text is not disturbed by the one that was cut
    EXPECT_GT(hear("Again.", prosodyOf(LANG_EN_US)).loudest(), 1000);
}

TEST_F(TheEspeakEngine, LosesNoMemoryWhenItIsCut) {
    Prosody markup = prosodyOf(LANG_EN_US);
    markup.markup = true;
    const std::string text = "Hello <prosody rate=\"slow\">there</prosody> you. And more.";
    for (const size_t enough : {1U, 4000U, 9000U, 15'000U, 20'000U}) {
        size_t before = 0;
        constexpr size_t kTimes = 100;
        for (size_t n = 0; n < 2 * kTimes; ++n) {
            before = n == kTimes ? mallinfo2().uordblks : before;
            Ear ear;
            ear.enough = enough;
            EXPECT_TRUE(engine.speak("<speak>" + text + "</speak>", markup, ear));
        }
        EXPECT_LT(mallinfo2().uordblks, before + kTimes * 100) << enough;
    }
}

TEST_F(TheEspeakEngine, RefusesAVoiceThatDoesNotExist) {
    Ear ear;
    EXPECT_FALSE(engine.speak("x", prosodyOf(LANG_EN_US, 0), ear));
    EXPECT_FALSE(engine.speak("x", prosodyOf(LANG_EN_US, 1000), ear));
    EXPECT_FALSE(engine.speak("x", prosodyOf(LANG_NA), ear));
    EXPECT_EQ(0U, ear.blocks);
}

TEST_F(TheEspeakEngine, DoesNotTakeTextForMarkup) {
    const Ear plain = hear("a b", prosodyOf(LANG_EN_US));
    const Ear marked = hear("<break time=\"60s\"/> [[a]] b", prosodyOf(LANG_EN_US));
    EXPECT_LT(marked.samplesHeard.size(), engine.sampleRate() * 20U);
    EXPECT_GT(marked.samplesHeard.size(), plain.samplesHeard.size());
}

TEST_F(TheEspeakEngine, SpeaksTextsWithoutWordsWithoutComplaint) {
    for (const char* text : {"", " ", "...", "\xEF\xBF\xBD\xEF\xBF\xBD", "\n\n", "\x01\x02"}) {
        Ear ear;
        EXPECT_TRUE(engine.speak(text, prosodyOf(LANG_EN_US), ear));
    }
}

}  // namespace
}  // namespace voxtreld
