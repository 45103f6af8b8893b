// SPDX-License-Identifier: Apache-2.0
#include "service/Mixer.h"

#include <gtest/gtest.h>

#include <vector>

#include "service/WavSink.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

constexpr unsigned kRate = 8000;

std::vector<int16_t> mixed(Mixer& mixer, const std::vector<int16_t>& speech, float gain,
                           float backgroundGain) {
    const int16_t* result = mixer.mix(speech.data(), speech.size(), gain, backgroundGain);
    return {result, result + speech.size()};
}

std::unique_ptr<Background> backgroundOf(const std::string& path,
                                         const std::vector<int16_t>& samples) {
    std::string error;
    WavFile file;
    EXPECT_TRUE(file.create(path, kRate, error)) << error;
    EXPECT_TRUE(file.write(samples.data(), samples.size()));
    file.close();
    auto background = std::make_unique<Background>();
    EXPECT_TRUE(background->open(path, kRate, error)) << error;
    return background;
}

TEST(AMixer, LeavesSpeechAtFullVolumeUntouched) {
    Mixer mixer(nullptr);
    const std::vector<int16_t> speech = {1, -32768, 32767};
    EXPECT_EQ(speech.data(), mixer.mix(speech.data(), speech.size(), 1.0F, 0.5F));
}

TEST(AMixer, ScalesSpeechByItsGain) {
    Mixer mixer(nullptr);
    EXPECT_EQ((std::vector<int16_t>{500, -500, 0}), mixed(mixer, {1000, -1000, 0}, 0.5F, 0));
    EXPECT_EQ((std::vector<int16_t>{0, 0}), mixed(mixer, {32767, -32768}, 0.0F, 1.0F));
}

TEST(AMixer, AddsTheBackgroundAtItsOwnGain) {
    const voxtrel_test::TempFolder folder;
    Mixer mixer(backgroundOf(folder.path("b.wav"), std::vector<int16_t>(100, 400)));
    EXPECT_EQ((std::vector<int16_t>{1200, 200}), mixed(mixer, {1000, 0}, 1.0F, 0.5F));
    EXPECT_EQ((std::vector<int16_t>{1000, 0}), mixed(mixer, {1000, 0}, 1.0F, 0.0F));
}

TEST(AMixer, CutsWhatIsLouderThanASampleCanBe) {
    const voxtrel_test::TempFolder folder;
    Mixer mixer(backgroundOf(folder.path("b.wav"), std::vector<int16_t>(100, 30000)));
    EXPECT_EQ((std::vector<int16_t>{32767}), mixed(mixer, {30000}, 1.0F, 1.0F));
}

TEST(ABackground, BeginsAgainAtItsEnd) {
    const voxtrel_test::TempFolder folder;
    const auto background = backgroundOf(folder.path("b.wav"), {1, 2, 3});
    std::vector<int16_t> samples(8);
    background->read(samples.data(), samples.size());
    EXPECT_EQ((std::vector<int16_t>{1, 2, 3, 1, 2, 3, 1, 2}), samples);
}

TEST(ABackground, ThatIsLongerThanItsBufferIsPlayedWhole) {
    const voxtrel_test::TempFolder folder;
    std::vector<int16_t> ramp(kRate * 5 / 2);
    for (size_t i = 0; i < ramp.size(); ++i) {
        ramp[i] = static_cast<int16_t>(i);
    }
    const auto background = backgroundOf(folder.path("b.wav"), ramp);
    std::vector<int16_t> samples(ramp.size());
    background->read(samples.data(), samples.size());
    EXPECT_EQ(ramp, samples);
}

TEST(ABackground, MustBeASoundFileOfTheRightRateWithSomethingInIt) {
    const voxtrel_test::TempFolder folder;
    std::string error;
    EXPECT_FALSE(Background().open(folder.path("absent.wav"), kRate, error));
    EXPECT_NE(std::string::npos, error.find("absent.wav")) << error;
    backgroundOf(folder.path("b.wav"), {1});
    EXPECT_FALSE(Background().open(folder.path("b.wav"), 22050, error));
    EXPECT_NE(std::string::npos, error.find("convert it to 22050")) << error;
    WavFile empty;
    ASSERT_TRUE(empty.create(folder.path("empty.wav"), kRate, error));
    empty.close();
    EXPECT_FALSE(Background().open(folder.path("empty.wav"), kRate, error));
    EXPECT_NE(std::string::npos, error.find("is empty")) << error;
}

}  // namespace
}  // namespace voxtreld
