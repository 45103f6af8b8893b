// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SERVICE_FIGURES_H
#define VOXTREL_BENCH_SERVICE_FIGURES_H

#include <cstdint>
#include <string>
#include <vector>

namespace voxtreld {

/// Nanoseconds of the clock that all processes of a machine share.
int64_t nowNs();

/// The value that `share` of the samples do not exceed; 0.5 is the median.
double quantile(std::vector<double> samples, double share);

/// A line for people about a series of times in microseconds.
void describe(const std::string& what, const std::vector<double>& microseconds);

/// "figure NAME VALUE".
void figure(const std::string& name, double value);

}  // namespace voxtreld

#endif
