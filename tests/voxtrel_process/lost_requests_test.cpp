// SPDX-License-Identifier: Apache-2.0
// What the service never got, or never tells of.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "tests/support/Roles.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Utterance;

namespace {

std::string tooLong() {
    return "It rains." + std::string(1010, ' ');
}

/// In a process of its own, which has the manners from its beginning: says the texts, and tells the
/// outcome of each. "long" stands for one that does not fit.
int sayAll(const Arguments& texts) {
    Client client;
    tell(client.waitUntilConnected(kLimit) ? "connected" : "not connected");
    voxtrel::SpeechOptions again;
    again.onLoss = voxtrel::OnLoss::SayAgain;
    std::vector<Utterance> said;
    for (const std::string& text : texts) {
        const bool isLong = text.rfind("long", 0) == 0;
        said.push_back(client.say(isLong ? tooLong() : text,
                                  text == "long again" ? again : voxtrel::SpeechOptions()));
    }
    for (const Utterance& each : said) {
        tell(inWords(each.wait(kLimit)));
    }
    return 0;
}

const Role kSayAll("sayAll", sayAll);

/// A service in the manners of a driver, a kilobyte of whose budget is left: a long request does
/// not reach it, a short one does.
class ALostRequest : public ::testing::Test {
protected:
    ALostRequest() {
        machine.startOther({VOXTREL_BLOCKED_SERVICE});
        flooder = std::make_unique<ChildProcess>(
            ChildProcess::Words{VOXTREL_FLOODER, "test.blocked"}, "");
        EXPECT_TRUE(flooder->awaitOutput("flooded\n")) << flooder->output();
    }

    static std::string outcomesOf(const std::vector<std::string>& texts) {
        std::vector<std::string> words = {ownPath(), "--role=sayAll"};
        words.insert(words.end(), texts.begin(), texts.end());
        return ChildProcess(words, "").finish().out;
    }

    const int manners = setenv("VOXTREL_BINDER_MANNERS", "driver", 1);
    Machine machine;
    std::unique_ptr<ChildProcess> flooder;
};

TEST_F(ALostRequest, IsLostWhenALaterOneIsSpoken) {
    EXPECT_EQ(outcomesOf({"Hello.", "long", "Hello again."}),
              "connected\nfinished\nlost -102 unheard\nfinished\n");
}

TEST_F(ALostRequest, IsLostThoughNothingFollowsIt) {
    EXPECT_EQ(outcomesOf({"long"}), "connected\nlost -102 unheard\n");
}

TEST_F(ALostRequest, IsSaidAgainOnceWhereThatIsWanted) {
    EXPECT_EQ(outcomesOf({"long again", "Hello."}), "connected\nlost -102 unheard\nfinished\n");
}

TEST(AMuteService, IsNotWaitedForWithoutEnd) {
    Machine machine;
    machine.startOther({VOXTREL_MUTE_SERVICE, "ready", "enabled"});
    Client client;
    const Utterance first = client.say("Hello.");
    const Utterance second = client.say("Hello.");
    EXPECT_EQ(inWords(first.wait(kLimit)), "lost -102 unheard");
    EXPECT_EQ(inWords(second.wait(kLimit)), "lost -102 unheard");
}

}  // namespace
