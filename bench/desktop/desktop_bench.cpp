// SPDX-License-Identifier: Apache-2.0
// What a program saves that speaks through the interface for applications and not through the
// desktop. Both speak with the same service, whose sound goes nowhere.
#include <cstdio>
#include <exception>
#include <vector>

#include "bench/desktop/SpokenText.h"
#include "bench/support/Timing.h"
#include "tests/speech_dispatcher/Desktop.h"

namespace {

using namespace bench;

constexpr int kRounds = 15;
constexpr int kTexts = 20;  ///< a round

SayTimes meanOf(Speech& speech) {
    SayTimes sum;
    for (int count = 0; count < kTexts; ++count) {
        const SayTimes times = speech.say();
        sum.toReturn += times.toReturn / kTexts;
        sum.toEnd += times.toEnd / kTexts;
    }
    return sum;
}

void measure(Speech& own, Speech& desktop) {
    std::vector<double> toReturn;
    std::vector<double> toEnd;
    meanOf(own);
    meanOf(desktop);
    std::printf("%-28s %12s %12s\n", "microseconds, mean of a round", "to return", "to end");
    for (int round = 0; round < kRounds; ++round) {
        const SayTimes theirs = meanOf(desktop);
        const SayTimes ours = meanOf(own);
        std::printf("  %-26s %12.1f %12.1f\n", "voxtrel", ours.toReturn, ours.toEnd);
        std::printf("  %-26s %12.1f %12.1f\n", "speech-dispatcher", theirs.toReturn, theirs.toEnd);
        toReturn.push_back(ours.toReturn / theirs.toReturn);
        toEnd.push_back(ours.toEnd / theirs.toEnd);
    }
    figure("say_over_spd_say", median(toReturn));
    figure("say_and_wait_over_spd", median(toEnd));
}

}  // namespace

int main() {
    try {
        const voxtrel_test::Desktop desktop({"--sink", "none"});
        measure(*throughVoxtrel(), *throughDesktop());
        printFigures();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "desktop_bench: %s\n", error.what());
        return 1;
    }
}
