// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SUPPORT_TIMING_H
#define VOXTREL_BENCH_SUPPORT_TIMING_H

#include <functional>
#include <string>
#include <vector>

namespace bench {

double median(std::vector<double> values);

/// Microseconds that one of `calls` rounds of `work` takes, by the clock on the wall.
double wallTime(int calls, const std::function<void()>& work);

/// Microseconds of processor time that one of `calls` rounds of `work` takes this thread: what
/// other processes do meanwhile on the same processor does not count.
double threadTime(int calls, const std::function<void()>& work);

/// Something measured next to what it is measured against, in the same run.
struct Contest {
    double value;  ///< median, in microseconds
    double limit;  ///< median, in microseconds
    double ratio;  ///< median of the rounds' ratios
};

/// Measures both in turn, `rounds` times.
Contest contest(int rounds, const std::function<double()>& value,
                const std::function<double()>& limit);

/// Prints one line for people now; the figure comes with all others at the end.
void report(const char* what, const Contest& result);
void figure(const std::string& name, double value);
/// A point of a curve, how something grows with `x`.
void point(const std::string& curve, double x, double y);
/// Single measurements, by their percentiles from 0 to 100.
void distribution(const std::string& name, std::vector<double> values);
/// The lines that a script reads: `figure NAME VALUE`, `point CURVE X Y` and
/// `distribution NAME VALUE...`.
void printFigures();

}  // namespace bench

#endif
