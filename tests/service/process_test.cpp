// SPDX-License-Identifier: Apache-2.0
// Clients of a running service, each a process of its own.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

#include "tests/service/RunningService.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

/// Samples in a file that the service wrote.
size_t lengthOf(const std::string& path) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) {
        return 0;
    }
    sf_close(file);
    return static_cast<size_t>(info.frames);
}

TEST_F(ARunningService, SpeaksIntoAFileThatIsWholeWhenTheUtteranceHasFinished) {
    const std::string path = folder.path("speech.wav");
    const Process service = startService({"--sink", "wav:" + path});
    const Process client = startClient();
    client->say("say 5 Hello, wide world.");
    client->readUntil(eventLine(EVENT_STARTED, 5, 0));
    client->readUntil(eventLine(EVENT_WORD, 5, 7));
    client->readUntil(eventLine(EVENT_FINISHED, 5, 0));
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(22050, info.samplerate);
    ASSERT_GT(info.frames, 22050 / 3);
    std::vector<int16_t> samples(static_cast<size_t>(info.frames));
    sf_read_short(file, samples.data(), info.frames);
    sf_close(file);
    EXPECT_GT(*std::max_element(samples.begin(), samples.end()), 1000);
}

TEST_F(ARunningService, HearsTwentyClientsWithFiftyUtterancesEach) {
    const Process service = startService({"--sink", "none"});
    std::vector<Process> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(startClient());
    }
    for (const Process& client : clients) {
        client->say("flood 1 50 Hello there.");
    }
    for (const Process& client : clients) {
        const std::vector<EventLine> events = eventsUntilEnded(*client, 50);
        expectOneLifeEach(events, 50, EVENT_FINISHED);
        unsigned last = 0;
        size_t words = 0;
        for (const EventLine& each : events) {
            EXPECT_LE(last, each.second) << "out of order";
            last = each.event == EVENT_STATE ? last : each.second;
            words += each.event == EVENT_WORD ? 1 : 0;
        }
        EXPECT_EQ(100U, words);
    }
}

TEST_F(ARunningService, StopsAThousandUtterancesAndTellsOfEach) {
    const Process service = startService({"--sink", "none", "--real-time"});
    const Process client = startClient();
    client->say("long 1 10000");  // outlasts the flood on the slowest machine
    client->say("flood 2 999 This is one of very many sentences.");
    client->say("stop 0");
    expectOneLifeEach(eventsUntilEnded(*client, 1000), 1000, EVENT_STOPPED);
}

TEST_F(ARunningService, HearsAnotherClientAfterTheUtteranceThatSounds) {
    const Process service = startService({"--sink", "none", "--real-time"});
    const Process ann = startClient();
    const Process bob = startClient();
    ann->say("flood 1 100 There is time.");
    ann->say("fence 2000");
    const Lines before = ann->readUntil(eventLine(EVENT_STOPPED, 2000, STATUS_BAD_PARAMETER));
    bob->say("say 1 Urgent.");
    bob->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    ann->say("stop 1");
    const std::vector<EventLine> events = eventsUntilEnded(*ann, 101, before);
    EXPECT_GT(50, std::count_if(events.begin(), events.end(), [](const EventLine& each) {
                  return each.event == EVENT_FINISHED;
              }));
}

TEST_F(ARunningService, TellsAndServesOthersWhileOneSoundsAndAnotherDropsAgainAndAgain) {
    const Process service = startService({"--sink", "none", "--real-time", "--queue", "16"});
    const Process ann = startClient();
    const Process bob = startClient();
    const Process carol = startClient();
    ann->say("long 1 100000");  // outlasts the test on the slowest machine
    ann->readUntil(eventLine(EVENT_STARTED, 1, 0));
    for (int round = 0; round < 8; ++round) {  // so much may wait of all clients together
        bob->say("flood " + std::to_string(100 + 16 * round) + " 16 Never mind.");
        bob->say("stop 1");
    }
    for (const EventLine& each : eventsUntilEnded(*bob, 128)) {
        EXPECT_NE(EVENT_FINISHED, each.event);
    }
    carol->say("say 1 I have said nothing yet.");
    carol->say("fence 2");
    const Lines told = carol->readUntil(eventLine(EVENT_STOPPED, 2, STATUS_BAD_PARAMETER));
    EXPECT_EQ(0,
              std::count(told.begin(), told.end(), eventLine(EVENT_STOPPED, 1, STATUS_QUEUE_FULL)));
}

TEST_F(ARunningService, CutsAnUtteranceWhereItIsStopped) {
    const Process service = startService({"--sink", "wavdir:" + folder.path("s"), "--real-time"});
    const Process client = startClient();
    client->say("say 1 One two three four five six seven eight.");
    client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    client->say("say 2 One two three four five six seven eight.");
    client->readUntil(eventLine(EVENT_WORD, 2, 8));
    client->say("stop 1");
    client->readUntil(eventLine(EVENT_STOPPED, 2, 0));
    const std::string number = "-" + std::to_string(client->pid()) + "-";
    const size_t whole = lengthOf(folder.path("s/000001" + number + "1.wav"));
    const size_t cut = lengthOf(folder.path("s/000002" + number + "2.wav"));
    EXPECT_GT(cut, 0U);
    EXPECT_LT(cut, whole * 3 / 4);
}

TEST_F(ARunningService, IsNotHeldUpByAClientThatTakesNoEvents) {
    const Process service = startService({"--sink", "none"});
    const Process stuck = startClient();
    const Process bob = startClient();
    stuck->say("flood 1 1000 Words that nobody wants to be told about.");
    const Lines before = stuck->readUntil("flood 0");
    stuck->kill(SIGSTOP);
    bob->say("flood 1 50 Hello.");
    expectOneLifeEach(eventsUntilEnded(*bob, 50), 50, EVENT_FINISHED);
    stuck->kill(SIGCONT);
    expectOneLifeEach(eventsUntilEnded(*stuck, 1000, before), 1000, EVENT_FINISHED);
}

TEST_F(ARunningService, EndsWhatWasSaidBeforeSpeechWasSwitchedOffLikeWhatWaits) {
    const Process service = startService({"--sink", "none", "--real-time"});
    const Process client = startClient();
    for (unsigned id = 1; id <= 20; ++id) {
        client->say("say " + std::to_string(id) + " A sentence that takes its time.");
        client->say("enable 0");
        const Lines lines = client->readUntil(eventLine(EVENT_STOPPED, id, STATUS_DISABLED));
        EXPECT_EQ(1, std::count(lines.begin(), lines.end(), eventLine(EVENT_STARTED, id, 0)));
        client->say("enable 1");
        client->readUntil(eventLine(EVENT_STATE, STATE_ENABLED, 1));
    }
}

}  // namespace
}  // namespace voxtreld
