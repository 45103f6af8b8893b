// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "service/EspeakEngine.h"
#include "service/MarkupReader.h"
#include "service/Speaker.h"
#include "service/Text.h"
#include "tests/service/Fakes.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

constexpr size_t kRate = 22050;  ///< of the engine

/// An event, and how much had been handed to the sink before it.
struct Heard {
    uint32_t event;
    uint32_t third;
    size_t samples;
};

class TimedListener : public Listener {
public:
    /// @param onMark called when a mark was told.
    TimedListener(const RecordingSink& sink, std::function<void()> onMark)
        : mSink(sink), mOnMark(std::move(onMark)) {}

    void tell(uint32_t /*pid*/, Event event, uint32_t /*second*/, uint32_t third) override {
        const size_t samples = mSink.samples().size();
        mMonitor.change([&] { mHeard.push_back({event, third, samples}); });
        if (event == EVENT_MARK) {
            mOnMark();
        }
    }
    bool waitForEnd() const {
        return mMonitor.waitFor([&] {
            return !mHeard.empty() &&
                   (mHeard.back().event == EVENT_FINISHED || mHeard.back().event == EVENT_STOPPED);
        });
    }
    std::vector<Heard> heard() const {
        return mMonitor.read([&] { return mHeard; });
    }

private:
    const RecordingSink& mSink;
    const std::function<void()> mOnMark;
    Monitor mMonitor;
    std::vector<Heard> mHeard;
};

/// One text, spoken by the real engine.
class Speech {
public:
    explicit Speech(const std::string& text, bool stopsAtMark = false) {
        std::string error;
        EXPECT_TRUE(mEngine.load(error)) << error;
        SpeechQueue queue{QueueLimits{}};
        TimedListener listener(mSink, [&] {
            if (stopsAtMark) {
                queue.drop(std::nullopt, STATUS_OK);
            }
        });
        Mixer mixer(nullptr);
        std::thread thread([&] { Speaker(mEngine, mSink, mixer, queue, listener).run(); });
        Utterance utterance;
        utterance.text = text;
        EXPECT_EQ(STATUS_OK, queue.push(utterance));
        EXPECT_TRUE(listener.waitForEnd());
        queue.close();
        thread.join();
        mHeard = listener.heard();
    }

    size_t samples() const { return mSink.samples().size(); }
    std::vector<int16_t> sound() const { return mSink.samples(); }
    double seconds() const { return static_cast<double>(samples()) / mEngine.sampleRate(); }
    const std::vector<Heard>& heard() const { return mHeard; }
    std::vector<Heard> heard(Event event) const {
        std::vector<Heard> found;
        std::copy_if(mHeard.begin(), mHeard.end(), std::back_inserter(found),
                     [event](const Heard& each) { return each.event == event; });
        return found;
    }

private:
    EspeakEngine mEngine;
    RecordingSink mSink;
    std::vector<Heard> mHeard;
};

std::vector<uint32_t> thirdsOf(const std::vector<Heard>& events) {
    std::vector<uint32_t> thirds;
    for (const Heard& each : events) {
        thirds.push_back(each.third);
    }
    return thirds;
}

std::string marked(const std::string& text) {
    return "<speak>" + text + "</speak>";
}

/// Where words that occur once stand in a text, in characters.
std::vector<uint32_t> placesOf(const std::vector<std::string>& words, const std::string& text) {
    std::vector<uint32_t> places;
    for (const std::string& word : words) {
        const size_t at = text.find(word);
        EXPECT_NE(std::string::npos, at) << word;
        places.push_back(static_cast<uint32_t>(characterCount(text.substr(0, at))));
    }
    return places;
}

struct Words {
    std::string text;
    std::vector<std::string> words;
};

TEST(AWordOfMarkup, IsToldByItsPlaceInTheSentText) {
    const Words kTexts[] = {
        {marked("Hello, wide world."), {"Hello", "wide", "world"}},
        {marked("Hello <prosody rate='slow' pitch='high'>wide</prosody> world."),
         {"Hello", "wide", "world"}},
        {marked("\xC3\x89t\xC3\xA9 <emphasis level='strong'>\xC3\xA0</emphasis> la mer"),
         {"\xC3\x89t\xC3\xA9", "\xC3\xA0", "la", "mer"}},
        {marked("salt &amp; pepper &#233;t&#xE9; now"),
         {"salt", "&amp;", "pepper", "&#233;", "now"}},
        {marked("One <break time='10ms'/> two <!-- three --> four"), {"One", "two", "four"}},
        {marked("Good <lang xml:lang='fr'>bonjour monde</lang> day <voice name='en-us+f1'>to "
                "you</voice>"),
         {"Good", "bonjour", "monde", "day", "to", "you"}},
        {marked("<p>First one.</p> <p><s>Second</s><s>third</s></p>"),
         {"First", "one", "Second", "third"}},
        {marked("The <sub alias=\"World Wide Web Consortium\">W3C</sub> says"),
         {"The", "W3C", "says"}},
        {marked("<![CDATA[Hello]]> <![CDATA[brave world]]>"), {"Hello", "brave", "world"}},
    };
    for (const Words& each : kTexts) {
        const Speech speech(each.text);
        EXPECT_EQ(placesOf(each.words, each.text), thirdsOf(speech.heard(EVENT_WORD))) << each.text;
    }
}

TEST(AWordOfMarkup, IsToldByItsPlaceInALongText) {
    std::string text = "<speak>";
    const std::string gap(150, ' ');  // long for the reader, and soon spoken
    for (int n = 0; n < 60; ++n) {
        text += "<s>\xC3\x89t\xC3\xA9 <emphasis>salt</emphasis> &amp; p\xC3\xA9pper.</s>" + gap;
    }
    text += "</speak>";
    const Speech speech(text);
    std::vector<uint32_t> expected;
    for (size_t at = 0; (at = text.find("<emphasis>", at)) != std::string::npos; ++at) {
        expected.push_back(static_cast<uint32_t>(characterCount(text.substr(0, at + 10))));
    }
    const std::vector<uint32_t> told = thirdsOf(speech.heard(EVENT_WORD));
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_TRUE(std::includes(told.begin(), told.end(), expected.begin(), expected.end()));
    EXPECT_EQ(4 * expected.size(), told.size());
}

TEST(AMarkOfMarkup, IsToldInOrderRightBeforeTheWordBehindIt) {
    const std::string text = marked(
        "<mark name='a'/>One. <mark name='b'/>Two <mark name='c'/><prosody rate='slow'>"
        "three</prosody> four<mark name='d'/>");
    const Speech speech(text);
    const std::vector<uint32_t> words = placesOf({"One", "Two", "three", "four"}, text);
    std::vector<std::pair<uint32_t, uint32_t>> told;
    for (const Heard& each : speech.heard()) {
        told.emplace_back(each.event, each.third);
    }
    EXPECT_EQ((std::vector<std::pair<uint32_t, uint32_t>>{{EVENT_STARTED, 0},
                                                          {EVENT_MARK, 1},
                                                          {EVENT_WORD, words[0]},
                                                          {EVENT_MARK, 2},
                                                          {EVENT_WORD, words[1]},
                                                          {EVENT_MARK, 3},
                                                          {EVENT_WORD, words[2]},
                                                          {EVENT_WORD, words[3]},
                                                          {EVENT_MARK, 4},
                                                          {EVENT_FINISHED, 0}}),
              told);
    const std::vector<Heard> marks = speech.heard(EVENT_MARK);
    EXPECT_LT(marks[0].samples, marks[1].samples);
    EXPECT_LT(marks[1].samples, marks[2].samples);
    EXPECT_LT(marks[2].samples, marks[3].samples);
    EXPECT_EQ(speech.samples(), marks[3].samples);
    EXPECT_EQ(marks[1].samples, speech.heard(EVENT_WORD)[1].samples);
}

TEST(AMarkOfMarkup, IsToldBeforeOrAfterTheBreakAsItStands) {
    const Speech speech(marked("One<mark name='a'/><break time='2s'/><mark name='b'/>two"));
    const std::vector<Heard> marks = speech.heard(EVENT_MARK);
    ASSERT_EQ(2U, marks.size());
    EXPECT_EQ(2 * kRate, marks[1].samples - marks[0].samples);
}

TEST(AMarkOfMarkup, IsToldInATextWithoutASound) {
    const Speech speech(marked("<mark name='a'/> <mark name='b'/>"));
    EXPECT_EQ((std::vector<uint32_t>{1, 2}), thirdsOf(speech.heard(EVENT_MARK)));
    EXPECT_EQ(EVENT_STARTED, speech.heard().front().event);
    EXPECT_EQ(EVENT_FINISHED, speech.heard().back().event);
    EXPECT_EQ(0U, speech.samples());
}

TEST(AMarkOfMarkup, IsToldOnceHoweverManyStandInOnePlace) {
    std::string text = "<speak>One ";
    for (int n = 0; n < 1000; ++n) {
        text += "<mark name='m'/>";
    }
    const Speech speech(text + "two</speak>");
    std::vector<uint32_t> expected(1000);
    for (uint32_t n = 0; n < 1000; ++n) {
        expected[n] = n + 1;
    }
    EXPECT_EQ(expected, thirdsOf(speech.heard(EVENT_MARK)));
}

TEST(AMarkOfMarkup, IsNotToldOfWhatIsCut) {
    const Speech speech(marked("One <mark name='a'/>two <mark name='b'/>three.<mark name='c'/>"
                               "<break time='60s'/><mark name='d'/> Four."),
                        true);
    EXPECT_EQ(std::vector<uint32_t>{1}, thirdsOf(speech.heard(EVENT_MARK)));
    EXPECT_EQ(EVENT_STOPPED, speech.heard().back().event);
    EXPECT_LT(speech.seconds(), 1);
}

TEST(ABreakOfMarkup, AddsItsSilenceAtAnySpeed) {
    for (const char* rate : {"50%", "100%", "200%"}) {
        const std::string begin = std::string("<speak><prosody rate='") + rate + "'>One ";
        const Speech without(begin + "two.</prosody></speak>");
        const Speech one(begin + "<break time='1s'/> two.</prosody></speak>");
        const Speech three(begin + "<break time='3s'/> two.</prosody></speak>");
        EXPECT_NEAR(2.0, three.seconds() - one.seconds(), 0.02) << rate;
        // The last word before a break is a little longer than one within a phrase.
        EXPECT_GE(one.seconds() - without.seconds(), 1.0) << rate;
        EXPECT_LT(one.seconds() - without.seconds(), 1.4) << rate;
    }
}

TEST(ProsodyOfMarkup, ChangesTheSpeedWithinTheElement) {
    const double plain = Speech(marked("Nobody has seen the rain.")).seconds();
    const double slow =
        Speech(marked("<prosody rate='50%'>Nobody has seen the rain.</prosody>")).seconds();
    EXPECT_GT(slow, plain * 1.5);
    const double after =
        Speech(marked("<prosody rate='50%'>Nobody</prosody> has seen the rain.")).seconds();
    EXPECT_LT(after, slow * 0.85);
    EXPECT_GT(after, plain);
}

TEST(ProsodyOfMarkup, EndsWithTheText) {
    const double before = Speech("Nobody has seen the rain.").seconds();
    (void)Speech("<speak><prosody rate='50%' pitch='x-high' volume='silent'><lang xml:lang='fr'>a");
    const Speech after("Nobody has seen the rain.");
    EXPECT_NEAR(before, after.seconds(), before * 0.02);
    const std::vector<int16_t> sound = after.sound();
    EXPECT_GT(*std::max_element(sound.begin(), sound.end()), 1000);
}

TEST(SayAs, SpellsCharacters) {
    const double word = Speech(marked("house")).seconds();
    const double spelled =
        Speech(marked("<say-as interpret-as='characters'>house</say-as>")).seconds();
    EXPECT_GT(spelled, word * 1.5);
}

TEST(ALanguageOfMarkup, IsSpokenByItsOwnVoice) {
    const Speech english(marked("Bonjour monsieur"));
    const Speech french(marked("<lang xml:lang='fr'>Bonjour monsieur</lang>"));
    EXPECT_NE(english.sound(), french.sound());
    Prosody prosody;
    prosody.language = LANG_FR_FR;
    EspeakEngine engine;
    std::string error;
    ASSERT_TRUE(engine.load(error));
    class : public SpeechReceiver {
    public:
        void word(size_t /*offset*/) override {}
        bool samples(const int16_t* /*samples*/, size_t more) override {
            count += more;
            return true;
        }
        size_t count = 0;
    } alone;
    ASSERT_TRUE(engine.speak("Bonjour monsieur", prosody, alone));
    EXPECT_NEAR(static_cast<double>(alone.count), static_cast<double>(french.samples()),
                static_cast<double>(alone.count) * 0.05);
}

TEST(BrokenMarkup, IsSpokenAsFarAsItCanBeRead) {
    for (const char* text :
         {"<speak>Hello", "<speak>Hello <b", "<speak>Hello</prosody></speak></speak>",
          "<speak><prosody rate=fast>Hello", "<speak>&hello; Hello &#xFFFFFFFF;",
          "<speak ><<<<<<<Hello", "<speak>Hello<!--", "<speak\n/>Hello <![CDATA["}) {
        const Speech speech(text);
        const std::vector<uint32_t> words = thirdsOf(speech.heard(EVENT_WORD));
        const auto place = static_cast<uint32_t>(std::string(text).find("Hello"));
        EXPECT_EQ(1, std::count(words.begin(), words.end(), place)) << text;
        EXPECT_EQ(EVENT_FINISHED, speech.heard().back().event) << text;
    }
}

}  // namespace
}  // namespace voxtreld
