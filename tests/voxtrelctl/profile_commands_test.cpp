// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/PrivateCustomerFolder.h"
#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;
using nlohmann::json;

namespace {

constexpr const char* kProfile =
    "\nversion=2\nspeed_enable=1\nspeed=200\nvolume_enable=1\nvolume=80\nmedia_"
    "volume_enable=1\n"
    "media_volume=30\ntts_volume_enable=1\ntts_volume=70\nvoice_enable="
    "1\nvoice=2\n"
    "pitch_enable=0\npitch=150\nlang=fr_FR\nverbosity=1\nenable=1\n\n";

TEST(AProfile, TakesTheServicesSettingsAndGivesThemBack) {
    Device device;
    device.startService({"--sink", "none"});
    const std::string file = device.path("evening.ini");
    writeFile(file, kProfile);
    const Outcome loaded = device.ctl({"profile", "load", file});
    EXPECT_EQ(loaded.status, 0) << loaded.err;
    EXPECT_EQ(loaded.out + loaded.err, "");
    EXPECT_EQ(settingOf(device, "speed"), "200");
    EXPECT_EQ(settingOf(device, "language"), "fr_FR");
    EXPECT_EQ(settingOf(device, "voice"), "2");
    EXPECT_EQ(settingOf(device, "pitch"), "150.0");
    EXPECT_NE(device.ctl({"get", "pitch"}).out.find("disabled"), std::string::npos);

    const std::string copy = device.path("saved.ini");
    const Outcome saved = device.ctl({"profile", "save", copy});
    EXPECT_EQ(saved.status, 0) << saved.err;
    EXPECT_EQ(readFile(copy), kProfile);
}

TEST(LoadingAProfile, LeavesUnsetValuesAlone) {
    Device device;
    device.startService({"--sink", "none"});
    writeFile(device.path("p.ini"), "speed=65535\nlang=na_NL\ntts_volume=40\n");
    EXPECT_EQ(device.ctl({"profile", "load", device.path("p.ini")}).status, 0);
    EXPECT_EQ(settingOf(device, "speed"), "300");
    EXPECT_EQ(settingOf(device, "language"), "en_US");
    EXPECT_EQ(settingOf(device, "tts-volume"), "40");
}

TEST(LoadingAProfile, NamesTheValueThatIsRefused) {
    Device device;
    device.startService({"--sink", "none"});
    writeFile(device.path("p.ini"), "speed=7\n");
    const Outcome refused = device.ctl({"profile", "load", device.path("p.ini")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err.rfind("voxtrelctl: -3 bad parameter: speed 7 (it takes 80 to 900)", 0),
              0U)
        << refused.err;
}

TEST(ShowingAProfile, NeedsNoServiceAndChangesNothing) {
    const TempFolder folder;
    const std::string file = folder.path("voxtrel.ini");  // a name that reading would upgrade
    const std::string old = "speed=65535\n";
    writeFile(file, old);
    const Outcome shown = ChildProcess({Device::control(), "profile", "show", file}, "").finish();
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.out.rfind("speed_enable=1\nspeed=65535\n", 0), 0U) << shown.out;
    EXPECT_EQ(readFile(file), old);
    const json made = json::parse(
        ChildProcess({Device::control(), "profile", "show", "--json", file}, "").finish().out);
    EXPECT_EQ(made["speed"], 65535);
    EXPECT_EQ(made["lang"], "na_NL");
}

TEST(SayingWithAProfile, TakesItsSettings) {
    Device device;
    device.startService({"--sink", "none"});
    writeFile(device.path("p.ini"), "lang=fr_FR\nspeed=7\n");
    const Outcome refused =
        device.ctl({"say", "--wait", "--profile", device.path("p.ini"), "un mot"});
    EXPECT_EQ(refused.status, 1) << "the service refuses a speed of 7";
    const Outcome said = device.ctl(
        {"say", "--wait", "--profile", device.path("p.ini"), "--speed", "300", "un mot"});
    EXPECT_EQ(said.status, 0) << said.err;
}

TEST(ABareName, IsAProfileInTheCustomerFolder) {
    const PrivateCustomerFolder customer;
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"profile", "save", "radio"}).status, 0);
    EXPECT_EQ(readFile("/Customer/radio.ini").rfind("\nversion=2\n", 0), 0U);
    EXPECT_EQ(device.ctl({"profile", "copy", "radio", "car"}).status, 0);
    EXPECT_EQ(readFile("/Customer/car.ini"), readFile("/Customer/radio.ini"));
    EXPECT_EQ(device.ctl({"profile", "remove", "radio"}).status, 0);
    EXPECT_THROW(readFile("/Customer/radio.ini"), std::runtime_error);
    EXPECT_EQ(device.ctl({"profile", "show", "car"}).status, 0);
}

struct Refusal {
    ChildProcess::Words words;
    std::string detail;
};

std::string cannot(const std::string& path, const std::string& what) {
    return "the profile '" + path + "' cannot be " + what;
}

TEST(AProfileThatCannotBeUsed, IsRefusedWithMinusSix) {
    const TempFolder folder;
    const std::string file = folder.path("a.ini");
    writeFile(file, kProfile);
    const std::string absent = folder.path("b.ini");
    const std::string nowhere = folder.path("no/such/folder.ini");
    const std::vector<Refusal> refusals = {
        {{"show", absent}, cannot(absent, "read: No such file or directory")},
        {{"show", folder.path("")}, cannot(folder.path(""), "read: Is a directory")},
        {{"copy", absent, file}, cannot(absent, "read: No such file or directory")},
        {{"copy", file, nowhere},
         cannot(file, "copied to " + nowhere + ": No such file or directory")},
        {{"remove", absent}, cannot(absent, "deleted: No such file or directory")},
    };
    for (const Refusal& refusal : refusals) {
        ChildProcess::Words words = {Device::control(), "profile"};
        words.insert(words.end(), refusal.words.begin(), refusal.words.end());
        const Outcome outcome = ChildProcess(words, "").finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err,
                  "voxtrelctl: -6 profile could not be read or written: " + refusal.detail +
                      ": check that the file exists and that its folder is yours to "
                      "write\n");
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(readFile(file), kProfile) << "a source that is not there leaves the destination be";
}

TEST(CopyingAProfileToItself, IsRefusedBeforeItIsEmptied) {
    const TempFolder folder;
    const std::string file = folder.path("a.ini");
    writeFile(file, kProfile);
    const Outcome refused =
        ChildProcess({Device::control(), "profile", "copy", file, folder.path("./a.ini")}, "")
            .finish();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err.rfind("voxtrelctl: -3 bad parameter: ", 0), 0U) << refused.err;
    EXPECT_EQ(readFile(file), kProfile);
}

}  // namespace
