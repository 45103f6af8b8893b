// SPDX-License-Identifier: Apache-2.0
#include "service/Speaker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

#include "tests/service/Fakes.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

constexpr uint32_t kAudioFailed = static_cast<uint32_t>(STATUS_AUDIO_FAILED);

/// A speaker on its own thread, between a scripted engine and a recording sink.
class ASpeaker : public testing::Test {
protected:
    ~ASpeaker() override { stop(); }

    void start() {
        mThread = std::thread([this] { Speaker(engine, sink, mixer, queue, listener).run(); });
    }
    void stop() {
        if (mThread.joinable()) {
            queue.close();
            mThread.join();
        }
    }
    void say(uint32_t pid, uint32_t id, const std::string& text) {
        Utterance utterance;
        utterance.pid = pid;
        utterance.id = id;
        utterance.text = text;
        ASSERT_EQ(TTS::STATUS_OK, queue.push(utterance));
    }
    void expectTold(const std::vector<Told>& expected) {
        EXPECT_TRUE(listener.waitForCount(expected.size()));
        stop();
        EXPECT_EQ(expected, listener.told());
    }

    ScriptedEngine engine;
    RecordingSink sink;
    Mixer mixer{nullptr};
    SpeechQueue queue{QueueLimits{}};
    RecordingListener listener;

private:
    std::thread mThread;
};

TEST_F(ASpeaker, TellsTheStartEachWordAndTheEndToTheClientThatAsked) {
    say(7, 42, "one two");
    start();
    expectTold({{7, EVENT_STARTED, 42, 0},
                {7, EVENT_WORD, 42, 0},
                {7, EVENT_WORD, 42, 4},
                {7, EVENT_FINISHED, 42, 0}});
    EXPECT_EQ(2 * ScriptedEngine::kWordSamples, sink.samples().size());
    EXPECT_EQ((std::vector<std::string>{"begin 7 42", "end"}), sink.calls());
}

TEST_F(ASpeaker, KeepsTheOrderAcrossClients) {
    say(1, 1, "a");
    say(2, 2, "b");
    say(1, 3, "c");
    start();
    ASSERT_TRUE(listener.waitForCount(9));
    EXPECT_EQ(
        (std::vector<std::string>{"begin 1 1", "end", "begin 2 2", "end", "begin 1 3", "end"}),
        sink.calls());
}

TEST_F(ASpeaker, StartsAndFinishesATextWithoutAnySound) {
    say(1, 5, "");
    start();
    expectTold({{1, EVENT_STARTED, 5, 0}, {1, EVENT_FINISHED, 5, 0}});
    EXPECT_TRUE(sink.samples().empty());
}

TEST_F(ASpeaker, WritesAPauseAsThatManySamplesOfSilence) {
    Utterance pause;
    pause.pid = 1;
    pause.id = 2;
    pause.pauseMs = 250;
    ASSERT_EQ(TTS::STATUS_OK, queue.push(pause));
    start();
    expectTold({{1, EVENT_STARTED, 2, 0}, {1, EVENT_FINISHED, 2, 0}});
    EXPECT_EQ(std::vector<int16_t>(ScriptedEngine::kRate / 4, 0), sink.samples());
}

TEST_F(ASpeaker, CutsWhatSoundsWhenItIsDropped) {
    engine.hold();
    say(1, 1, "one two three four");
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.drop(1, STATUS_OK);
    engine.release();
    expectTold({{1, EVENT_STARTED, 1, 0}, {1, EVENT_STOPPED, 1, 0}});
    EXPECT_TRUE(sink.samples().empty());
    EXPECT_EQ("end cancelled", sink.calls().back());
}

TEST_F(ASpeaker, TellsWhatAnotherClientDroppedWhileOneSounds) {
    engine.hold();
    say(1, 1, "sounds on");
    say(2, 2, "waits");
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.drop(2, STATUS_DISABLED);
    engine.release();
    expectTold({{1, EVENT_STARTED, 1, 0},
                {1, EVENT_WORD, 1, 0},
                {2, EVENT_STARTED, 2, 0},
                {2, EVENT_STOPPED, 2, static_cast<uint32_t>(STATUS_DISABLED)},
                {1, EVENT_WORD, 1, 7},
                {1, EVENT_FINISHED, 1, 0}});
    EXPECT_EQ((std::vector<std::string>{"begin 1 1", "end"}), sink.calls());
}

TEST_F(ASpeaker, GivesEachOfAThousandDroppedUtterancesOneTerminalEvent) {
    engine.hold();
    for (uint32_t id = 0; id < 1000; ++id) {
        say(1, id, "word word");
    }
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.drop(std::nullopt, STATUS_OK);
    engine.release();
    ASSERT_TRUE(listener.waitForCount(2000));
    stop();
    std::vector<int> started(1000);
    std::vector<int> stopped(1000);
    for (const Told& told : listener.told()) {
        started[told.second] += told.event == EVENT_STARTED ? 1 : 0;
        stopped[told.second] += told.event == EVENT_STOPPED ? 1 : 0;
        EXPECT_EQ(started[told.second], 1) << "told something before the start";
        EXPECT_NE(EVENT_FINISHED, told.event);
    }
    EXPECT_EQ(std::vector<int>(1000, 1), started);
    EXPECT_EQ(std::vector<int>(1000, 1), stopped);
}

TEST_F(ASpeaker, ReportsWhatItsQueueStillHeldWhenItIsClosed) {
    engine.hold();
    say(1, 1, "sounds");
    say(1, 2, "waits");
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.close();
    engine.release();
    constexpr auto shutdown = static_cast<uint32_t>(STATUS_SHUTDOWN);
    expectTold({{1, EVENT_STARTED, 1, 0},
                {1, EVENT_STOPPED, 1, shutdown},
                {1, EVENT_STARTED, 2, 0},
                {1, EVENT_STOPPED, 2, shutdown}});
}

TEST_F(ASpeaker, AppliesTheGainToTheSamples) {
    Utterance utterance;
    utterance.text = "loud";
    utterance.gain = 0.25F;
    ASSERT_EQ(TTS::STATUS_OK, queue.push(utterance));
    start();
    ASSERT_TRUE(listener.waitForCount(3));
    EXPECT_EQ(std::vector<int16_t>(ScriptedEngine::kWordSamples, ScriptedEngine::kLevel / 4),
              sink.samples());
}

TEST_F(ASpeaker, SpeaksALongTextInPiecesAndCountsWordsFromItsStart) {
    std::string text;
    while (text.size() < 10'000) {
        text += "\xC3\xA9t\xC3\xA9 ";  // 4 characters, 6 bytes
    }
    say(1, 1, text);
    start();
    const size_t words = text.size() / 6;
    ASSERT_TRUE(listener.waitForCount(words + 2));
    stop();
    std::string together;
    for (const auto& [piece, prosody] : engine.spoken()) {
        EXPECT_LE(piece.size(), 2048U);
        together += piece;
    }
    EXPECT_EQ(text, together);
    uint32_t next = 0;
    for (const Told& told : listener.told()) {
        if (told.event == EVENT_WORD) {
            EXPECT_EQ(next, told.third);
            next += 4;
        }
    }
    EXPECT_EQ(words * 4, next);
}

TEST_F(ASpeaker, StopsAnUtteranceThatTheEngineCannotSpeakAndGoesOn) {
    engine.failOn("broken");
    say(1, 1, "broken");
    say(1, 2, "fine");
    start();
    expectTold({{1, EVENT_STARTED, 1, 0},
                {1, EVENT_STOPPED, 1, kAudioFailed},
                {1, EVENT_STARTED, 2, 0},
                {1, EVENT_WORD, 2, 0},
                {1, EVENT_FINISHED, 2, 0}});
}

TEST_F(ASpeaker, StopsAnUtteranceThatTheSinkRefuses) {
    sink.refuseBegin(true);
    say(1, 1, "unheard");
    start();
    expectTold({{1, EVENT_STARTED, 1, 0}, {1, EVENT_STOPPED, 1, kAudioFailed}});
    EXPECT_TRUE(engine.spoken().empty());
}

TEST_F(ASpeaker, StopsAnUtteranceWhoseSamplesAreNotTaken) {
    sink.refuseWrite(true);
    say(1, 1, "one two");
    start();
    expectTold(
        {{1, EVENT_STARTED, 1, 0}, {1, EVENT_WORD, 1, 0}, {1, EVENT_STOPPED, 1, kAudioFailed}});
}

TEST_F(ASpeaker, DropsAnUtteranceWhoseSinkTakesNothingAndDoesNotFail) {
    sink.block(true);
    say(1, 1, "unheard");
    say(2, 2, "heard");
    start();
    ASSERT_TRUE(sink.waitUntilBlocked());
    EXPECT_TRUE(listener.told().empty()) << "it waits for as long as the sink does";
    sink.block(false);
    queue.drop(1, STATUS_OK);
    expectTold({{1, EVENT_STARTED, 1, 0},
                {1, EVENT_WORD, 1, 0},
                {1, EVENT_STOPPED, 1, 0},
                {2, EVENT_STARTED, 2, 0},
                {2, EVENT_WORD, 2, 0},
                {2, EVENT_FINISHED, 2, 0}});
}

TEST_F(ASpeaker, IsEndedWhileItsSinkTakesNothing) {
    sink.block(true);
    say(1, 1, "unheard");
    start();
    ASSERT_TRUE(sink.waitUntilBlocked());
    stop();
    EXPECT_EQ(listener.told().back(),
              (Told{1, EVENT_STOPPED, 1, static_cast<uint32_t>(STATUS_SHUTDOWN)}));
}

TEST_F(ASpeaker, TellsTheMarksOfAMarkedUpTextBetweenItsWords) {
    say(7, 42, "<speak>one <mark name='a'/>two<mark name='b'/></speak>");
    start();
    expectTold({{7, EVENT_STARTED, 42, 0},
                {7, EVENT_WORD, 42, 7},
                {7, EVENT_MARK, 42, 1},
                {7, EVENT_WORD, 42, 27},
                {7, EVENT_MARK, 42, 2},
                {7, EVENT_FINISHED, 42, 0}});
}

TEST_F(ASpeaker, TellsNoMoreMarksOfATextThatIsCut) {
    engine.hold();
    say(1, 1, "<speak><mark name='a'/>one two <mark name='b'/><break time='60s'/>three</speak>");
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.drop(1, STATUS_OK);
    engine.release();
    expectTold({{1, EVENT_STARTED, 1, 0}, {1, EVENT_STOPPED, 1, 0}});
    EXPECT_EQ(1U, engine.spoken().size());
    EXPECT_TRUE(sink.samples().empty());
}

/// A marked-up text whose mark is passed before the engine has anything to speak.
std::string textBehindAMark(const std::string& text) {
    std::string marked = "<speak><mark name='a'/>";
    for (int n = 0; n < 200; ++n) {
        marked += "<emphasis></emphasis>";  // more than goes to the engine at once
    }
    return marked + text + "</speak>";
}

TEST_F(ASpeaker, TellsAMarkBeforeTheFirstSoundRightBehindTheStart) {
    say(1, 1, textBehindAMark("one"));
    start();
    ASSERT_TRUE(listener.waitForCount(4));
    stop();
    EXPECT_EQ((Told{1, EVENT_STARTED, 1, 0}), listener.told()[0]);
    EXPECT_EQ((Told{1, EVENT_MARK, 1, 1}), listener.told()[1]);
}

TEST_F(ASpeaker, TellsNoMarkOfATextThatIsCutBeforeItsFirstSound) {
    engine.hold();
    say(1, 1, textBehindAMark("one"));
    start();
    ASSERT_TRUE(engine.waitUntilHeld());
    queue.drop(1, STATUS_OK);
    engine.release();
    expectTold({{1, EVENT_STARTED, 1, 0}, {1, EVENT_STOPPED, 1, 0}});
}

TEST_F(ASpeaker, TellsNoMarkOfATextThatTheEngineCannotSpeak) {
    engine.failOn("broken");
    say(1, 1, textBehindAMark("broken"));
    start();
    expectTold({{1, EVENT_STARTED, 1, 0}, {1, EVENT_STOPPED, 1, kAudioFailed}});
}

TEST_F(ASpeaker, GivesTheEngineNothingOfATextOfMarksAndBreaks) {
    say(1, 1, "<speak><mark name='a'/><break time='10ms'/><mark name='b'/></speak>");
    start();
    expectTold({{1, EVENT_STARTED, 1, 0},
                {1, EVENT_MARK, 1, 1},
                {1, EVENT_MARK, 1, 2},
                {1, EVENT_FINISHED, 1, 0}});
    EXPECT_TRUE(engine.spoken().empty());
    EXPECT_EQ(std::vector<int16_t>(ScriptedEngine::kRate / 100, 0), sink.samples());
}

TEST_F(ASpeaker, SpeaksAMarkedUpTextInTheVoicesThatItNames) {
    say(1, 1, "<speak>one <voice name='two'>two</voice> <lang xml:lang='fr'>un</lang></speak>");
    start();
    ASSERT_TRUE(listener.waitForCount(5));
    stop();
    const auto spoken = engine.spoken();
    ASSERT_EQ(3U, spoken.size());
    EXPECT_EQ(LANG_EN_US, spoken[0].second.language);
    EXPECT_EQ(2U, spoken[1].second.voice);
    EXPECT_EQ(LANG_FR_FR, spoken[2].second.language);
}

TEST_F(ASpeaker, SpeaksATextThatDoesNotBeginWithSpeakAsItStands) {
    say(1, 1, " <speak>a</speak>");
    start();
    ASSERT_TRUE(listener.waitForCount(3));
    stop();
    ASSERT_EQ(1U, engine.spoken().size());
    EXPECT_EQ(" <speak>a</speak>", engine.spoken()[0].first);
    EXPECT_FALSE(engine.spoken()[0].second.markup);
}

}  // namespace
}  // namespace voxtreld
