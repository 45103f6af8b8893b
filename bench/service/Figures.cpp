// SPDX-License-Identifier: Apache-2.0
#include "bench/service/Figures.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace voxtreld {

int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double quantile(std::vector<double> samples, double share) {
    if (samples.empty()) {
        return NAN;
    }
    const double last = static_cast<double>(samples.size() - 1);
    const auto place = static_cast<std::ptrdiff_t>(std::lround(share * last));
    std::nth_element(samples.begin(), samples.begin() + place, samples.end());
    return samples[static_cast<size_t>(place)];
}

void describe(const std::string& what, const std::vector<double>& microseconds) {
    std::printf("%-46s best %8.1f  median %8.1f  p90 %8.1f  worst %8.1f us  (%zu)\n", what.c_str(),
                quantile(microseconds, 0.0), quantile(microseconds, 0.5),
                quantile(microseconds, 0.9), quantile(microseconds, 1.0), microseconds.size());
}

void figure(const std::string& name, double value) {
    std::printf("figure %s %.2f\n", name.c_str(), value);
}

}  // namespace voxtreld
