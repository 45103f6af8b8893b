// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Protocol.h"

#include <gtest/gtest.h>

#include <sstream>

#include "bridges/speech-dispatcher/Lines.h"

namespace {

using namespace sd_voxtrel;

/// Notes what is wanted of it.
class RecordingCommands : public Commands {
public:
    std::string begin() override { return "hello"; }
    std::string setAudio(const Values& values) override {
        note("audio", values);
        return audioTrouble;
    }
    void setLogLevel(const Values& values) override { note("loglevel", values); }
    void set(const Values& values) override { note("set", values); }
    std::vector<ListedVoice> voices(const std::string& language,
                                    const std::string& variant) override {
        notes.push_back("voices '" + language + "' '" + variant + "'");
        return listed;
    }
    bool speak(MessageKind kind, const std::string& text) override {
        notes.push_back("speak " + std::to_string(static_cast<int>(kind)) + " '" + text + "'");
        return canSpeak;
    }
    void stop() override { notes.emplace_back("stop"); }
    void pause() override { notes.emplace_back("pause"); }
    bool debug(const std::string& path) override {
        notes.push_back("debug '" + path + "'");
        return canDebug;
    }

    std::vector<std::string> notes;
    std::vector<ListedVoice> listed;
    std::string audioTrouble;
    bool canSpeak = true;
    bool canDebug = true;

private:
    void note(std::string what, const Values& values) {
        for (const auto& [name, value] : values) {
            what += " " + name + "=" + value;
        }
        notes.push_back(what);
    }
};

class TheProtocol : public ::testing::Test {
protected:
    /// The answers to these lines.
    std::string answers(const std::string& input) {
        written.clear();
        std::istringstream lines(input);
        for (std::string line; std::getline(lines, line);) {
            protocol.take(line);
        }
        return written;
    }

    using Notes = std::vector<std::string>;

    RecordingCommands commands;
    std::string written;
    Protocol protocol{commands, [this](const std::string& text) { written += text; }};
};

TEST_F(TheProtocol, SaysHelloToInit) {
    EXPECT_EQ("299-hello\n299 OK LOADED SUCCESSFULLY\n", answers("INIT\n"));
}

TEST_F(TheProtocol, TakesAudioSettingsAndRefusesThemWithAReason) {
    EXPECT_EQ("207 OK RECEIVING AUDIO SETTINGS\n203 OK AUDIO INITIALIZED\n",
              answers("AUDIO\naudio_output_method=pulse\nx=1=2\n.\n"));
    commands.audioTrouble = "no";
    EXPECT_EQ("207 OK RECEIVING AUDIO SETTINGS\n300-no\n300 MODULE ERROR\n", answers("AUDIO\n.\n"));
    EXPECT_EQ((Notes{"audio audio_output_method=pulse x=1=2", "audio"}), commands.notes);
}

TEST_F(TheProtocol, TakesLogLevelsAndSettings) {
    EXPECT_EQ("207 OK RECEIVING LOGLEVEL SETTINGS\n203 OK LOGLEVEL SET\n",
              answers("LOGLEVEL\nlog_level=4\n.\n"));
    EXPECT_EQ("203 OK RECEIVING SETTINGS\n203 OK SETTINGS RECEIVED\n",
              answers("SET\nrate=-5\nvoice=NULL\nno value\n.\n"));
    EXPECT_EQ((Notes{"loglevel log_level=4", "set rate=-5 voice=NULL"}), commands.notes);
}

TEST_F(TheProtocol, ListsVoices) {
    EXPECT_EQ("304 CANT LIST VOICES\n", answers("LIST VOICES\n"));
    commands.listed = {{"en-us", "en-US", "none"}, {"en-us+f1", "en-US", "f1"}};
    EXPECT_EQ("200-en-us\ten-US\tnone\n200-en-us+f1\ten-US\tf1\n200 OK VOICE LIST SENT\n",
              answers("LIST VOICES\n"));
    answers("LIST VOICES fr-FR\nLIST VOICES fr f1\nLIST VOICES NULL none\n");
    EXPECT_EQ((Notes{"voices '' ''", "voices '' ''", "voices 'fr-FR' ''", "voices 'fr' 'f1'",
                     "voices '' ''"}),
              commands.notes);
    EXPECT_EQ("300 ERR UNKNOWN COMMAND\n", answers("LIST VOICESX\n"));
}

TEST_F(TheProtocol, ListsAVoiceOnOneLineWhateverItsName) {
    commands.listed = {{"a\n701 BEGIN\tx", "en-US\r", "none"}};
    EXPECT_EQ("200-a 701 BEGIN x\ten-US \tnone\n200 OK VOICE LIST SENT\n",
              answers("LIST VOICES\n"));
}

TEST_F(TheProtocol, TakesMessagesOfEachKind) {
    EXPECT_EQ("202 OK RECEIVING MESSAGE\n200 OK SPEAKING\n", answers("SPEAK\na\n\nb\n.\n"));
    answers("CHAR\nx\n.\nKEY\nshift_a\n.\nSOUND_ICON\nbell\n.\nSPEAK\n.\n");
    EXPECT_EQ((Notes{"speak 0 'a\n\nb'", "speak 1 'x'", "speak 2 'shift_a'", "speak 3 'bell'",
                     "speak 0 ''"}),
              commands.notes);
}

TEST_F(TheProtocol, UndoublesALineOfADot) {
    answers("SPEAK\n..\n...\n.a\n.\n");
    EXPECT_EQ((Notes{"speak 0 '.\n...\n.a'"}), commands.notes);
}

TEST_F(TheProtocol, SaysWhatCannotBeSpoken) {
    commands.canSpeak = false;
    EXPECT_EQ("202 OK RECEIVING MESSAGE\n301 ERROR CANT SPEAK\n", answers("SPEAK\na\n.\n"));
}

TEST_F(TheProtocol, TakesCommandsInAMessageForText) {
    answers("SPEAK\nSTOP\nQUIT\n.\n");
    EXPECT_EQ((Notes{"speak 0 'STOP\nQUIT'"}), commands.notes);
    EXPECT_FALSE(protocol.hasEnded());
}

TEST_F(TheProtocol, TakesAMessageThatIsTooLongWithoutItsTextAndGoesOn) {
    const std::string line(1000, 'x');
    protocol.take("SPEAK");
    for (std::size_t length = 0; length <= Protocol::kLongestBody; length += line.size()) {
        protocol.take(line);
    }
    EXPECT_TRUE(protocol.isInside());
    EXPECT_EQ("200 OK SPEAKING\n", answers(".\n"));
    EXPECT_EQ((Notes{"speak 4 ''"}), commands.notes);
    EXPECT_EQ("202 OK RECEIVING MESSAGE\n200 OK SPEAKING\n", answers("SPEAK\na\n.\n"));
}

TEST_F(TheProtocol, AnswersNothingToStopAndPause) {
    EXPECT_EQ("", answers("STOP\nPAUSE\n"));
    EXPECT_EQ((Notes{"stop", "pause"}), commands.notes);
}

TEST_F(TheProtocol, SwitchesDebugging) {
    EXPECT_EQ("200 OK DEBUGGING ON\n200 OK DEBUGGING OFF\n", answers("DEBUG ON /a b\nDEBUG OFF\n"));
    EXPECT_EQ((Notes{"debug '/a b'", "debug ''"}), commands.notes);
    commands.canDebug = false;
    EXPECT_EQ("300 ERR UNKNOWN COMMAND\n300 ERR UNKNOWN COMMAND\n300 ERR UNKNOWN COMMAND\n",
              answers("DEBUG ON /x\nDEBUG ON \nDEBUG\n"));
}

TEST_F(TheProtocol, RefusesWhatItDoesNotKnow) {
    for (const char* line : {"", "init", "INIT now", "SPEAK x", "STOP ", "\xFF\x01", "."}) {
        written.clear();
        protocol.take(line);
        EXPECT_EQ("300 ERR UNKNOWN COMMAND\n", written) << line;
    }
}

TEST_F(TheProtocol, EndsWithQuit) {
    EXPECT_EQ("210 OK QUIT\n", answers("QUIT\n"));
    EXPECT_TRUE(protocol.hasEnded());
}

TEST_F(TheProtocol, IsInsideACommandUntilItsAnswer) {
    for (const char* command : {"AUDIO", "LOGLEVEL", "SET", "SPEAK", "CHAR", "KEY", "SOUND_ICON"}) {
        EXPECT_FALSE(protocol.isInside());
        protocol.take(command);
        EXPECT_TRUE(protocol.isInside()) << command;
        protocol.take(".");
        EXPECT_FALSE(protocol.isInside()) << command;
    }
}

std::vector<std::string> linesOf(Lines& lines) {
    std::vector<std::string> all;
    for (std::string line; lines.next(line);) {
        all.push_back(line);
    }
    return all;
}

TEST(Lines, ComeWholeHoweverTheirPartsArrive) {
    Lines lines;
    lines.add("SP");
    EXPECT_TRUE(linesOf(lines).empty());
    lines.add("EAK\n\na\r\nb");
    EXPECT_EQ((std::vector<std::string>{"SPEAK", "", "a"}), linesOf(lines));
    lines.add("\n");
    EXPECT_EQ((std::vector<std::string>{"b"}), linesOf(lines));
}

TEST(Lines, HoldNoMoreOfALongOneThanTheLimit) {
    Lines lines;
    const std::string part(Lines::kLongest / 2 + 1, 'x');
    for (int count = 0; count < 5; ++count) {
        lines.add(part);
    }
    lines.add("\nnext\n");
    const std::vector<std::string> all = linesOf(lines);
    ASSERT_EQ(2U, all.size());
    EXPECT_EQ(Lines::kLongest + 1, all[0].size());
    EXPECT_EQ("next", all[1]);
}

}  // namespace
