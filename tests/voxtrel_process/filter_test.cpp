// SPDX-License-Identifier: Apache-2.0
// What the device's filter leaves to applications.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/support/Roles.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Features;
using voxtrel::Status;
using voxtrel::Voice;

namespace {

std::string outcomeOf(Client& client, const std::string& language, const std::string& voice) {
    voxtrel::SpeechOptions options;
    options.language = language;
    if (!voice.empty()) {
        options.voice = voice;
    }
    return inWords(client.say("x", options).wait(kLimit));
}

std::vector<Voice> voicesOf(const Features& features, const std::string& language) {
    std::vector<Voice> found;
    std::copy_if(features.voices.begin(), features.voices.end(), std::back_inserter(found),
                 [&](const Voice& voice) { return voice.language == language; });
    return found;
}

/// In a process of its own: the filter is read when the library is loaded.
int speakThroughAFilter(const Arguments& arguments) {
    Client client;
    const auto features = client.features(kLimit);
    if (!features) {
        tell(features.message());
        return 1;
    }
    std::string languages;
    for (const std::string& language : features->languages) {
        languages += language + " ";
    }
    tell(languages);
    tell(std::to_string(voicesOf(*features, "fr-FR").size()));
    tell(std::to_string(voicesOf(*features, "en-US").size()));
    tell(outcomeOf(client, "fr", ""));
    tell(outcomeOf(client, "en", "1"));
    tell(outcomeOf(client, "en", "2"));
    tell(outcomeOf(client, "en", arguments.at(0)));
    voxtrel::GlobalSettings settings;
    settings.language = "fr";
    tell(std::to_string(static_cast<int>(client.change(settings, kLimit).status())));
    settings.language = "en";
    settings.voice = 2;
    tell(std::to_string(static_cast<int>(client.change(settings, kLimit).status())));
    settings.voice = 1;
    tell(std::to_string(static_cast<int>(client.change(settings, kLimit).status())));
    return 0;
}

const Role kThroughAFilter("speakThroughAFilter", speakThroughAFilter);

class ADeviceWithAFilter : public ::testing::Test {
protected:
    ADeviceWithAFilter() {
        machine.startService();
        Client client;
        const auto features = client.features(kLimit);
        EXPECT_TRUE(features) << features.message();
        all = features.value();
    }

    std::string outputWith(const std::string& filter) {
        setenv("VOXTREL_LANGUAGE_WITH_VOICES", filter.c_str(), 1);
        ChildProcess process({ownPath(), "--role=speakThroughAFilter", first()}, "");
        const auto outcome = process.finish();
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }

    std::string first() const { return voicesOf(all, "en-US").at(0).name; }

    Machine machine;
    Features all;
};

TEST_F(ADeviceWithAFilter, LeavesItsLanguagesAndVoices) {
    ASSERT_GE(voicesOf(all, "en-US").size(), 2U);
    EXPECT_EQ(outputWith("fr_FR.none,en_US." + first()),
              "en-US es-ES ko-KR pt-PT \n0\n1\n"
              "refused -9 unheard\nfinished\nrefused -9 unheard\nfinished\n-9\n-9\n0\n");
}

TEST_F(ADeviceWithAFilter, LeavesAllWhenItIsEmpty) {
    const std::string french = std::to_string(voicesOf(all, "fr-FR").size());
    const std::string english = std::to_string(voicesOf(all, "en-US").size());
    EXPECT_EQ(outputWith(""), "en-US fr-FR es-ES ko-KR pt-PT \n" + french + "\n" + english +
                                  "\nfinished\nfinished\nfinished\nfinished\n0\n0\n0\n");
}

}  // namespace
