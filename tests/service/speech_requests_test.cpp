// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/service/ServiceFixture.h"

namespace voxtreld {

using namespace TTS;

namespace {

class ASpeechRequest : public ServiceFixture {
protected:
    /// Says a text with these settings and gives how the engine was asked to speak it.
    Prosody spokenWith(const SpeechSettings& asked) {
        from(kAnn);
        EXPECT_EQ(0, service->say(kAnn, 1, "word", asked.speed, asked.volume, asked.voice,
                                  asked.bgVolume, asked.ttsVolume, asked.pitch, asked.language));
        Prosody prosody;
        SpeechQueue::Work work;
        if (queue->wait(work)) {
            prosody = work.next->prosody;
            gain = work.next->gain;
            backgroundGain = work.next->backgroundGain;
            queue->finish();
        }
        return prosody;
    }
    int sayWith(const SpeechSettings& asked) {
        from(kAnn);
        return service->say(kAnn, 9, "word", asked.speed, asked.volume, asked.voice, asked.bgVolume,
                            asked.ttsVolume, asked.pitch, asked.language);
    }

    float gain = -1;
    float backgroundGain = -1;
};

TEST_F(ASpeechRequest, IsToldToTheClientThatAskedAndToNoOther) {
    const auto ann = join(kAnn);
    const auto bob = join(kBob);
    startSpeech();
    const std::vector<Told> before = toldTo(bob);
    ASSERT_EQ(0, say(kAnn, 7, "two words"));
    const std::vector<Told> told = toldAtTheEndTo(ann);
    const std::vector<Told> speech(told.end() - 4, told.end());
    EXPECT_EQ((std::vector<Told>{{kAnn, EVENT_STARTED, 7, 0},
                                 {kAnn, EVENT_WORD, 7, 0},
                                 {kAnn, EVENT_WORD, 7, 4},
                                 {kAnn, EVENT_FINISHED, 7, 0}}),
              speech);
    EXPECT_EQ(before, toldTo(bob));
}

TEST_F(ASpeechRequest, WithoutSettingsIsSpokenWithTheGlobalOnes) {
    service->announceVoices(engine.voices());
    const Prosody prosody = spokenWith({});
    EXPECT_EQ(LANG_EN_US, prosody.language);
    EXPECT_EQ(1U, prosody.voice);
    EXPECT_EQ(300U, prosody.speed);
    EXPECT_FLOAT_EQ(200.0F, prosody.pitch);
    EXPECT_FALSE(prosody.punctuation);
    EXPECT_FLOAT_EQ(1.0F, gain);
    EXPECT_FLOAT_EQ(0.5F, backgroundGain);
}

TEST_F(ASpeechRequest, KeepsItsOwnSettings) {
    service->announceVoices(engine.voices());
    const Prosody prosody = spokenWith({150, 50.0F, 2, 25, 50, 100.0F, LANG_EN_US});
    EXPECT_EQ(2U, prosody.voice);
    EXPECT_EQ(150U, prosody.speed);
    EXPECT_FLOAT_EQ(100.0F, prosody.pitch);
    EXPECT_FLOAT_EQ(0.25F, gain);
    EXPECT_FLOAT_EQ(0.25F, backgroundGain);
}

TEST_F(ASpeechRequest, HasTheGlobalValueOfASettingWhoseFlagIsOff) {
    service->announceVoices(engine.voices());
    from(kAnn);
    for (int32_t key = GCONF_SPEED_ENABLE; key <= GCONF_TTS_VOLUME_ENABLE; key += 2) {
        ASSERT_EQ(0, service->setEnable2(kAnn, static_cast<VOXTRELAPI_GCONF>(key), false));
    }
    const Prosody prosody = spokenWith({150, 10.0F, 2, 25, 10, 100.0F, LANG_EN_US});
    EXPECT_EQ(300U, prosody.speed);
    EXPECT_EQ(1U, prosody.voice);
    EXPECT_FLOAT_EQ(200.0F, prosody.pitch);
    EXPECT_FLOAT_EQ(1.0F, gain);
    EXPECT_FLOAT_EQ(0.5F, backgroundGain);
}

TEST_F(ASpeechRequest, InAnotherLanguageDoesNotTakeTheGlobalVoice) {
    service->announceVoices(
        {{LANG_EN_US, "one"}, {LANG_EN_US, "two"}, {LANG_FR_FR, "un"}, {LANG_FR_FR, "deux"}});
    from(kAnn);
    uint32_t two = 2;
    ASSERT_EQ(0, service->setGlobalConfig(kAnn, GCONF_VOICE, &two));
    EXPECT_EQ(2U, spokenWith({}).voice);
    SpeechSettings french;
    french.language = LANG_FR_FR;
    EXPECT_EQ(1U, spokenWith(french).voice);
    EXPECT_EQ(LANG_FR_FR, spokenWith(french).language);
}

TEST_F(ASpeechRequest, WithVoiceZeroHasTheFirstOfTheLanguage) {
    service->announceVoices(engine.voices());
    SpeechSettings asked;
    asked.voice = 0;
    EXPECT_EQ(1U, spokenWith(asked).voice);
}

TEST_F(ASpeechRequest, NamesPunctuationWhenTheServiceIsVerbose) {
    service->announceVoices(engine.voices());
    from(kAnn);
    ASSERT_EQ(0, service->setVerbosity(kAnn, 1));
    EXPECT_TRUE(spokenWith({}).punctuation);
}

TEST_F(ASpeechRequest, WithAValueOutOfRangeIsRefusedAndItsSenderTold) {
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    std::vector<SpeechSettings> bad(11);
    bad[0].speed = kSpeedMin - 1;
    bad[1].speed = kSpeedMax + 1;
    bad[2].pitch = -1.0F;
    bad[3].pitch = kPitchMax + 1;
    bad[4].pitch = std::nanf("");
    bad[5].volume = -0.5F;
    bad[6].volume = kVolumeMax + 1;
    bad[7].volume = std::nanf("");
    bad[8].bgVolume = 101;
    bad[9].ttsVolume = 101;
    bad[10].voice = 3;  // English has two
    for (size_t i = 0; i < bad.size(); ++i) {
        EXPECT_EQ(STATUS_BAD_PARAMETER, sayWith(bad[i])) << i;
        EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 9, statusWord(STATUS_BAD_PARAMETER)}),
                  toldTo(ann).back());
    }
    EXPECT_EQ(0U, queue->waiting());
}

TEST_F(ASpeechRequest, AtTheEndsOfEveryRangeIsAccepted) {
    service->announceVoices(engine.voices());
    EXPECT_EQ(0, sayWith({kSpeedMin, kVolumeMin, 0, 0, 0, kPitchMin, LANG_EN_US}));
    EXPECT_EQ(0, sayWith({kSpeedMax, kVolumeMax, 2, 100, 100, kPitchMax, LANG_EN_US}));
}

TEST_F(ASpeechRequest, BeforeTheVoicesAreKnownIsRefused) {
    const auto ann = join(kAnn);
    EXPECT_EQ(STATUS_NOT_SUPPORTED, say(kAnn, 3));
    EXPECT_EQ((std::vector<Told>{{kAnn, EVENT_STOPPED, 3, statusWord(STATUS_NOT_SUPPORTED)}}),
              toldTo(ann));
}

TEST_F(ASpeechRequest, WithBrokenTextIsSpokenWithReplacements) {
    startSpeech();
    const auto ann = join(kAnn);
    ASSERT_EQ(0, say(kAnn, 1, "a\xFF z"));
    toldAtTheEndTo(ann);
    EXPECT_EQ("a\xEF\xBF\xBD z", engine.spoken().front().first);
}

TEST_F(ASpeechRequest, ThatFindsItsShareFullIsRefusedAndItsSenderTold) {
    QueueLimits limits;
    limits.utterancesPerClient = 2;
    makeService({}, limits);
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    EXPECT_EQ(0, say(kAnn, 1));
    EXPECT_EQ(0, say(kAnn, 2));
    EXPECT_EQ(STATUS_QUEUE_FULL, say(kAnn, 3));
    EXPECT_EQ(0, say(kBob, 1)) << "another client's share is its own";
    EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 3, statusWord(STATUS_QUEUE_FULL)}), toldTo(ann).back());
}

TEST_F(ASpeechRequest, WhileSpeechIsOffIsDroppedLikeOneThatCameBefore) {
    const auto ann = join(kAnn);
    startSpeech();
    const size_t before = toldTo(ann).size();
    ASSERT_EQ(0, service->setEnable(kAnn, false));
    EXPECT_EQ(0, say(kAnn, 4));
    EXPECT_EQ(0, service->silence(kAnn, 5, 100, kUnset));
    ASSERT_TRUE(ann->waitFor({kAnn, EVENT_STOPPED, 5, statusWord(STATUS_DISABLED)}));
    const std::vector<Told> told = toldTo(ann);
    EXPECT_EQ((std::vector<Told>{{kAnn, EVENT_STATE, STATE_ENABLED, 0},
                                 {kAnn, EVENT_STARTED, 4, 0},
                                 {kAnn, EVENT_STOPPED, 4, statusWord(STATUS_DISABLED)},
                                 {kAnn, EVENT_STARTED, 5, 0},
                                 {kAnn, EVENT_STOPPED, 5, statusWord(STATUS_DISABLED)}}),
              std::vector<Told>(told.begin() + static_cast<ptrdiff_t>(before), told.end()));
    EXPECT_TRUE(sink.calls().empty()) << "nothing of it is heard";
}

TEST_F(ASpeechRequest, ThatIsWrongIsRefusedWhileSpeechIsOffToo) {
    const auto ann = join(kAnn);
    startSpeech();
    ASSERT_EQ(0, service->setEnable(kAnn, false));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->silence(kAnn, 4, 60'001, kUnset));
    EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 4, statusWord(STATUS_BAD_PARAMETER)}), toldTo(ann).back());
}

TEST_F(ASpeechRequest, AfterItsClientLeftIsStillSpoken) {
    startSpeech();
    const auto ann = join(kAnn);
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    ASSERT_EQ(0, say(kAnn, 1, "goodbye"));
    toldAtTheEndTo(ann);
    EXPECT_EQ("goodbye", engine.spoken().front().first);
}

TEST_F(ASpeechRequest, ForAPauseIsHeardAsThatMuchSilence) {
    startSpeech();
    const auto ann = join(kAnn);
    ASSERT_EQ(0, service->silence(kAnn, 12, 1000, kUnset));
    const std::vector<Told> told = toldAtTheEndTo(ann);
    EXPECT_EQ((Told{kAnn, EVENT_STARTED, 12, 0}), told[told.size() - 2]);
    EXPECT_EQ((Told{kAnn, EVENT_FINISHED, 12, 0}), told.back());
    EXPECT_EQ(std::vector<int16_t>(ScriptedEngine::kRate, 0), sink.samples());
}

TEST_F(ASpeechRequest, ForAPauseOfMoreThanAMinuteIsRefused) {
    service->announceVoices(engine.voices());
    from(kAnn);
    EXPECT_EQ(0, service->silence(kAnn, 1, 60'000, kUnset));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->silence(kAnn, 2, 60'001, kUnset));
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->silence(kAnn, 3, 100, 101));
}

TEST_F(ASpeechRequest, WhileTheServiceShutsDownIsRefusedAndItsSenderTold) {
    const auto ann = join(kAnn);
    service->announceVoices(engine.voices());
    queue->close();
    EXPECT_EQ(STATUS_SHUTDOWN, say(kAnn, 3));
    EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 3, statusWord(STATUS_SHUTDOWN)}), toldTo(ann).back());
}

class Flushing : public ServiceFixture {
protected:
    void SetUp() override {
        ann = join(kAnn);
        bob = join(kBob);
        engine.hold();
        startSpeech();
        ASSERT_EQ(0, say(kAnn, 1, "sounds"));
        ASSERT_TRUE(engine.waitUntilHeld());
        ASSERT_EQ(0, say(kBob, 2, "waits"));
        ASSERT_EQ(0, say(kAnn, 3, "waits"));
    }
    size_t countOf(const std::vector<Told>& told, uint32_t event) {
        return static_cast<size_t>(std::count_if(
            told.begin(), told.end(), [=](const Told& each) { return each.event == event; }));
    }

    android::sp<RecordingCallback> ann;
    android::sp<RecordingCallback> bob;
};

TEST_F(Flushing, StopsEverybodyAndTellsEachItsOwn) {
    from(kBob);
    EXPECT_EQ(0, service->stopAndFlush(kBob, 0));
    engine.release();
    const std::vector<Told> toAnn = toldAtTheEndTo(ann);
    EXPECT_EQ(2U, countOf(toAnn, EVENT_STARTED));
    EXPECT_EQ(2U, countOf(toAnn, EVENT_STOPPED));
    EXPECT_EQ(0U, countOf(toAnn, EVENT_FINISHED));
    const std::vector<Told> toBob = toldTo(bob);
    EXPECT_EQ((Told{kBob, EVENT_STOPPED, 2, 0}), toBob.back());
    EXPECT_EQ(1U, countOf(toBob, EVENT_STOPPED));
}

TEST_F(Flushing, OnesOwnLeavesTheOthersAlone) {
    from(kAnn);
    EXPECT_EQ(0, service->stopAndFlush(kAnn, 1));
    engine.release();
    EXPECT_EQ(2U, countOf(toldAtTheEndTo(ann), EVENT_STOPPED));
    EXPECT_EQ((Told{kBob, EVENT_FINISHED, 2, 0}), toldTo(bob).back());
}

TEST_F(Flushing, WhatAnotherProcessSaidIsForItsUserToDo) {
    from(kBob);
    EXPECT_EQ(0, service->stopAndFlush(kAnn, 1));
    engine.release();
    EXPECT_EQ(2U, countOf(toldAtTheEndTo(ann), EVENT_STOPPED));
    EXPECT_EQ((Told{kBob, EVENT_FINISHED, 2, 0}), toldTo(bob).back());
}

TEST_F(Flushing, WhatAProcessSaidThatHasLeftIsForItsUserToDo) {
    from(kAnn);
    ASSERT_EQ(0, service->deregisterCallback(kAnn));
    caller = {0, kUser};  // as from a runtime that does not name the process
    EXPECT_EQ(0, service->stopAndFlush(kAnn, 1));
    engine.release();
    EXPECT_EQ((Told{kBob, EVENT_FINISHED, 2, 0}), toldAtTheEndTo(bob).back());
    EXPECT_EQ(2U, engine.spoken().size()) << "what sounded, and that of the other";
}

TEST_F(Flushing, WhatAnotherUsersProcessSaidIsRefused) {
    caller = {kBob, kUser + 1};
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->stopAndFlush(kAnn, 1));
    engine.release();
    EXPECT_EQ(2U, countOf(toldAtTheEndTo(ann), EVENT_FINISHED));
}

TEST_F(Flushing, WhatNobodySaidIsRefusedAndTold) {
    from(kBob);
    EXPECT_EQ(STATUS_PERMISSION_DENIED, service->stopAndFlush(kBob + 100, 1));
    EXPECT_EQ((Told{kBob, EVENT_STATE, STATE_REFUSED, REQUEST_STOP}), toldTo(bob).back());
    engine.release();
}

TEST_F(Flushing, WithAnUnknownArgumentDoesNothing) {
    from(kAnn);
    EXPECT_EQ(STATUS_BAD_PARAMETER, service->stopAndFlush(kAnn, 2));
    engine.release();
    EXPECT_EQ(2U, countOf(toldAtTheEndTo(ann), EVENT_FINISHED));
}

TEST_F(Flushing, BySwitchingSpeechOffGivesThatAsTheReason) {
    from(kBob);
    EXPECT_EQ(0, service->setEnable(kBob, false));
    engine.release();
    const std::vector<Told> told = toldTo(bob);
    stopSpeech();
    EXPECT_EQ((Told{kAnn, EVENT_STOPPED, 3, statusWord(STATUS_DISABLED)}), toldTo(ann).back());
}

}  // namespace
}  // namespace voxtreld
