// SPDX-License-Identifier: Apache-2.0
// A speaker that asks the service whether it knows markup.
#include "tests/speech_dispatcher/SpeakerTest.h"

namespace {

using namespace sd_voxtrel;

class ASpeakerThatAsks : public ASpeaker {
protected:
    ASpeakerThatAsks() : ASpeaker(MarkupPolicy::Auto) {}
};

TEST_F(ASpeakerThatAsks, AsksUnheardBeforeTheFirstMarkedUpMessage) {
    start(kMarked);
    ASSERT_EQ(1U, service.said.size());
    EXPECT_EQ("<speak><mark name=\"a\"/></speak>", service.said[0]);
    EXPECT_TRUE(service.styles[0].isMute);
    tell(Kind::Started);
    tell(Kind::Mark, 1);
    tell(Kind::Finished);
    EXPECT_EQ("", events());
    ASSERT_EQ(2U, service.said.size());
    EXPECT_EQ(kMarked, service.said[1]);
    tell(Kind::Finished);
    start(kMarked);
    EXPECT_EQ(3U, service.said.size()) << "asked once";
    EXPECT_EQ(kMarked, service.said[2]);
}

TEST_F(ASpeakerThatAsks, LeavesOutTheMarkupWhereAWordComesInPlaceOfTheMark) {
    start(kMarked);
    tell(Kind::Word);
    EXPECT_EQ(1, service.stops);
    tell(Kind::Word);
    EXPECT_EQ(1, service.stops);
    EXPECT_EQ(1U, service.said.size()) << "what is said before the end would be stopped too";
    tell(Kind::Stopped);
    ASSERT_EQ(2U, service.said.size());
    EXPECT_EQ("abc", service.said[1].substr(0, 3));
}

TEST_F(ASpeakerThatAsks, LeavesOutTheMarkupWhereNoMarkComes) {
    start(kMarked);
    tell(Kind::Finished);
    ASSERT_EQ(2U, service.said.size());
    EXPECT_EQ("abc", service.said[1].substr(0, 3));
}

TEST_F(ASpeakerThatAsks, AsksAgainWhereTheQuestionWasCut) {
    start(kMarked);
    tell(Kind::Stopped);
    ASSERT_EQ(2U, service.said.size());
    EXPECT_EQ("abc", service.said[1].substr(0, 3)) << "this one is not held up any more";
    tell(Kind::Finished);
    start(kMarked);
    ASSERT_EQ(3U, service.said.size());
    EXPECT_TRUE(service.styles[2].isMute);
}

TEST_F(ASpeakerThatAsks, AsksEachServiceAnew) {
    start(kMarked);
    tell(Kind::Mark, 1);
    tell(Kind::Finished);
    tell(Kind::Finished);
    tellOf(0, Kind::Connected);
    start(kMarked);
    ASSERT_EQ(3U, service.said.size());
    EXPECT_TRUE(service.styles[2].isMute);
}

TEST_F(ASpeakerThatAsks, AsksNothingForPlainText) {
    start("a");
    EXPECT_EQ(std::vector<std::string>{"a"}, service.said);
}

TEST_F(ASpeakerThatAsks, StopsAMessageThatWaitsForTheAnswer) {
    start(kMarked);
    speaker.stop(now);
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
    start("<speak>new</speak>");
    EXPECT_EQ(1U, service.said.size()) << "still asking";
    tellOf(1, Kind::Mark, 1);
    tellOf(1, Kind::Finished);
    ASSERT_EQ(2U, service.said.size());
    EXPECT_EQ("<speak>new</speak>", service.said[1]);
}

TEST_F(ASpeakerThatAsks, GivesUpAServiceThatDoesNotAnswerTheQuestion) {
    start(kMarked);
    service.answering = false;
    wait(kTimeout + std::chrono::milliseconds(500));
    EXPECT_EQ("701 BEGIN\n703 STOP\n", events());
}

}  // namespace
