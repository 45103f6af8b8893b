// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Speaker.h"

#include <gtest/gtest.h>

#include "tests/speech_dispatcher/SpeakerTest.h"

namespace {

using namespace sd_voxtrel;

class ASpeakerWithoutMarkup : public ASpeaker {
protected:
    ASpeakerWithoutMarkup() : ASpeaker(MarkupPolicy::Never) {}
};

TEST_F(ASpeaker, TellsBeginMarksAndEnd) {
    start(kMarked);
    EXPECT_EQ("", events());
    EXPECT_EQ(std::vector<std::string>{kMarked}, service.said);
    tell(Kind::Started);
    tell(Kind::Word);
    tell(Kind::Mark, 1);
    tell(Kind::Mark, 2);
    EXPECT_FALSE(speaker.isIdle());
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n700-x\n700 INDEX MARK\n700-y\n700 INDEX MARK\n702 END\n", events());
    EXPECT_TRUE(speaker.isIdle());
    EXPECT_EQ("", speaker.trouble());
    EXPECT_FALSE(speaker.nextMoment());
}

TEST_F(ASpeaker, TellsNoMarkTwiceOrThatThereIsNot) {
    start(kMarked);
    tell(Kind::Mark, 2);
    tell(Kind::Mark, 2);
    tell(Kind::Mark, 1);
    tell(Kind::Mark, 0);
    tell(Kind::Mark, 3);
    EXPECT_EQ("701 BEGIN\n700-y\n700 INDEX MARK\n", events());
}

TEST_F(ASpeaker, TellsNothingOfOtherUtterances) {
    start("a");
    tellOf(7, Kind::Started);
    tellOf(0, Kind::Finished);
    EXPECT_EQ("", events());
}

TEST_F(ASpeaker, EndsAnEmptyMessageAtOnce) {
    start("");
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
    EXPECT_TRUE(service.said.empty());
}

TEST_F(ASpeaker, StopsAMessageThatCannotBeSpokenAtOnce) {
    speaker.start({"", {}, false, "why"}, kTimeout, now);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    EXPECT_EQ("why", speaker.trouble());
    EXPECT_TRUE(service.said.empty());
    start("");
    EXPECT_EQ("", speaker.trouble());
}

TEST_F(ASpeaker, StopsAndTellsItWhenTheServiceDoes) {
    start("a");
    tell(Kind::Started);
    speaker.stop(now);
    EXPECT_EQ(1, service.stops);
    EXPECT_EQ("701 BEGIN\n", events());
    tell(Kind::Stopped);
    EXPECT_EQ("703 STOP\n", events());
    EXPECT_EQ("", speaker.trouble());
}

TEST_F(ASpeaker, TellsAStopThatTheServiceDoesNotTell) {
    start("a");
    tell(Kind::Started);
    speaker.stop(now);
    speaker.stop(now);
    wait(std::chrono::milliseconds(499));
    EXPECT_EQ("701 BEGIN\n", events());
    wait(std::chrono::milliseconds(1));
    EXPECT_EQ("703 STOP\n", events());
    tell(Kind::Stopped);
    EXPECT_EQ("", events()) << "one end";
    EXPECT_EQ(1, service.stops);
}

TEST_F(ASpeaker, TellsTheEndOfWhatHasBeenSpokenInSpiteOfAStop) {
    start("a");
    tell(Kind::Started);
    speaker.stop(now);
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
}

TEST_F(ASpeaker, TellsAStopByOthers) {
    start("a");
    tell(Kind::Started);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    EXPECT_EQ("why", speaker.trouble());
}

TEST_F(ASpeaker, DoesNothingWhenThereIsNothingToStop) {
    speaker.stop(now);
    speaker.pause(now);
    EXPECT_EQ("", events());
    EXPECT_EQ(0, service.stops);
}

TEST_F(ASpeaker, PausesAtTheNextMark) {
    start(kMarked);
    tell(Kind::Started);
    tell(Kind::Mark, 1);
    speaker.pause(now);
    EXPECT_EQ(0, service.stops);
    tell(Kind::Mark, 2);
    EXPECT_EQ(1, service.stops);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n700-x\n700 INDEX MARK\n700-y\n700 INDEX MARK\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, TellsNoMarkThatItPausedBefore) {
    start(kMarked);
    tell(Kind::Started);
    speaker.pause(now);
    tell(Kind::Mark, 1);
    tell(Kind::Mark, 2);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n700-x\n700 INDEX MARK\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, PausesSoonWhereTheNextMarkIsFar) {
    start(kMarked);
    tell(Kind::Started);
    speaker.pause(now);
    wait(std::chrono::milliseconds(999));
    EXPECT_EQ(0, service.stops);
    wait(std::chrono::milliseconds(1));
    EXPECT_EQ(1, service.stops);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, PausesAtOnceWhereThereIsNoMarkToCome) {
    start("a");
    tell(Kind::Started);
    speaker.pause(now);
    EXPECT_EQ(1, service.stops);
    wait(std::chrono::milliseconds(500));
    EXPECT_EQ("701 BEGIN\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, StopsWhatWasToPause) {
    start(kMarked);
    tell(Kind::Started);
    speaker.pause(now);
    speaker.stop(now);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, SaysNothingAgainThatWasToPause) {
    start(kMarked);
    tell(Kind::Started);
    speaker.pause(now);
    tell(Kind::Lost);
    EXPECT_EQ(1U, service.said.size());
    EXPECT_EQ("701 BEGIN\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, SaysNothingAgainThatWasToStop) {
    start(kMarked);
    tell(Kind::Started);
    speaker.stop(now);
    tell(Kind::Lost);
    EXPECT_EQ(1U, service.said.size());
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, PausesWhatOthersStop) {
    start(kMarked);
    tell(Kind::Started);
    speaker.pause(now);
    tell(Kind::Stopped);
    EXPECT_EQ("701 BEGIN\n704 PAUSE\n", events()) << "what is left can be resumed";
}

TEST_F(ASpeaker, EndsWhatIsRefused) {
    start("a");
    tell(Kind::Refused);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, SaysInTheServicesOwnWayWhatItCannotSayOtherwise) {
    Style style;
    style.language = "de";
    style.voice = "3";
    start("a", style);
    tell(Kind::Unable);
    tell(Kind::Unable);
    tell(Kind::Started);
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
    ASSERT_EQ(3U, service.styles.size());
    EXPECT_EQ("de", service.styles[1].language);
    EXPECT_FALSE(service.styles[1].voice);
    EXPECT_FALSE(service.styles[2].language);
}

TEST_F(ASpeaker, SaysAgainWhatWasLostHoweverOftenItsWayWasChanged) {
    Style style;
    style.language = "de";
    style.voice = "3";
    style.rate = 1;
    start("a", style);
    tell(Kind::Unable);
    tell(Kind::Unable);
    tell(Kind::Unable);
    tell(Kind::Lost);
    tell(Kind::Finished);
    EXPECT_EQ(5U, service.said.size());
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
}

TEST_F(ASpeaker, EndsWhatCannotBeSaidInAnyWay) {
    start("a");
    tell(Kind::Unable);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, EndsWhatTheLibraryDoesNotTake) {
    service.isFull = true;
    start("a");
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    EXPECT_NE("", speaker.trouble());
}

TEST_F(ASpeaker, SaysAgainWhatWasLostUnheard) {
    start("a");
    service.connected = false;
    tell(Kind::Lost);
    EXPECT_EQ(1U, service.said.size());
    service.connected = true;
    tellOf(0, Kind::Connected);
    EXPECT_EQ((std::vector<std::string>{"a", "a"}), service.said);
    tell(Kind::Started);
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
}

TEST_F(ASpeaker, SaysNothingForEver) {
    start("a");
    for (int count = 0; count < 10; ++count) {
        tell(Kind::Lost);
    }
    EXPECT_EQ(3U, service.said.size());
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, SaysNothingTwiceThatWasHeard) {
    start("a");
    tell(Kind::Started);
    loseHeard();
    EXPECT_EQ(1U, service.said.size());
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

TEST_F(ASpeaker, WaitsForAServiceAndGivesItUp) {
    service.connected = false;
    start("a");
    wait(kTimeout - std::chrono::milliseconds(1));
    EXPECT_EQ("", events());
    wait(std::chrono::milliseconds(1));
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    EXPECT_TRUE(service.said.empty());
    EXPECT_EQ("there is no service", speaker.trouble());
    tellOf(0, Kind::Connected);
    EXPECT_TRUE(service.said.empty()) << "given up";
}

TEST_F(ASpeaker, GivesUpAServiceThatDoesNotAnswer) {
    start("a");
    service.answering = false;
    wait(kTimeout - std::chrono::milliseconds(1));
    EXPECT_EQ("", events());
    wait(std::chrono::milliseconds(501));
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    EXPECT_EQ(1, service.stops) << "or it would be heard when the service goes on";
    EXPECT_EQ("the service does not answer", speaker.trouble());
    service.answering = true;
    start("b");
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
}

TEST_F(ASpeaker, WaitsAsLongAsTheServiceAnswers) {
    start("a");
    wait(std::chrono::hours(1));
    EXPECT_EQ("", events()) << "others are speaking";
    tell(Kind::Started);
    tell(Kind::Finished);
    EXPECT_EQ("701 BEGIN\n702 END\n", events());
}

TEST_F(ASpeaker, StopsAMessageThatWaits) {
    service.connected = false;
    start("a");
    speaker.stop(now);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    start("b");
    speaker.pause(now);
    EXPECT_EQ("701 BEGIN\n704 PAUSE\n", events());
}

TEST_F(ASpeaker, SpellsWithMarkup) {
    speaker.start({"<speak>ab</speak>", {}, true}, kTimeout, now);
    EXPECT_EQ("<speak><say-as interpret-as=\"characters\">ab</say-as></speak>", service.said[0]);
}

TEST_F(ASpeaker, SpellsAlsoWhereTheMarkupIsLeftOut) {
    const std::string words(262144 - 20, 'a');  // with the elements of spelling it is too long
    speaker.start({"<speak>" + words + "</speak>", {}, true}, kTimeout, now);
    EXPECT_EQ("a a a", service.said[0].substr(0, 5));
}

TEST_F(ASpeaker, LeavesOutTheMarkupOfATextTheLibraryWouldRefuse) {
    const std::string words(300000, 'a');
    start("<speak><mark name='x'/>" + words + "</speak>");
    EXPECT_EQ(words, service.said[0].substr(0, words.size()));
    tell(Kind::Mark, 1);
    EXPECT_EQ("", events());
}

TEST_F(ASpeakerWithoutMarkup, LeavesItOut) {
    start(kMarked);
    EXPECT_EQ("abc", service.said[0].substr(0, 3));
    tell(Kind::Started);
    speaker.pause(now);
    EXPECT_EQ(1, service.stops) << "there are no marks";
}

TEST_F(ASpeakerWithoutMarkup, SpellsWithBlanks) {
    speaker.start({"ab", {}, true}, kTimeout, now);
    EXPECT_EQ("a b", service.said[0]);
}

}  // namespace
