// SPDX-License-Identifier: Apache-2.0
#include "bench/support/Timing.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <utility>

namespace bench {

namespace {

std::vector<std::pair<std::string, double>>& figures() {
    static std::vector<std::pair<std::string, double>> all;
    return all;
}

/// The lines before the figures.
std::vector<std::string>& plotted() {
    static std::vector<std::string> all;
    return all;
}

std::string text(double value) {
    char digits[32];
    (void)std::snprintf(digits, sizeof digits, " %.3f", value);
    return digits;
}

double threadMicroseconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

}  // namespace

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

double wallTime(int calls, const std::function<void()>& work) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i) {
        work();
    }
    const std::chrono::duration<double, std::micro> taken = Clock::now() - start;
    return taken.count() / calls;
}

double threadTime(int calls, const std::function<void()>& work) {
    const double start = threadMicroseconds();
    for (int i = 0; i < calls; ++i) {
        work();
    }
    return (threadMicroseconds() - start) / calls;
}

Contest contest(int rounds, const std::function<double()>& value,
                const std::function<double()>& limit) {
    std::vector<double> values;
    std::vector<double> limits;
    std::vector<double> ratios;
    for (int i = 0; i < rounds; ++i) {
        limits.push_back(limit());
        values.push_back(value());
        ratios.push_back(values.back() / limits.back());
    }
    return {median(values), median(limits), median(ratios)};
}

void report(const char* what, const Contest& result) {
    std::printf("%-52s %9.3f us  against %9.3f us: %6.3f\n", what, result.value, result.limit,
                result.ratio);
    std::fflush(stdout);
}

void figure(const std::string& name, double value) {
    figures().emplace_back(name, value);
}

void point(const std::string& curve, double x, double y) {
    plotted().push_back("point " + curve + text(x) + text(y));
}

void distribution(const std::string& name, std::vector<double> values) {
    constexpr size_t kLast = 100;
    std::sort(values.begin(), values.end());
    std::string line = "distribution " + name;
    for (size_t percent = 0; percent <= kLast && !values.empty(); ++percent) {
        line += text(values[(values.size() - 1) * percent / kLast]);
    }
    plotted().push_back(line);
}

void printFigures() {
    for (const std::string& line : plotted()) {
        std::puts(line.c_str());
    }
    for (const auto& entry : figures()) {
        std::printf("figure %s %.3f\n", entry.first.c_str(), entry.second);
    }
}

}  // namespace bench
