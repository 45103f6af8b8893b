// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SCALE_SECTIONS_H
#define VOXTREL_BENCH_SCALE_SECTIONS_H

#include <string>

namespace bench {

/// Each starts what it measures in stacks of its own, below this folder.
void clients(const std::string& folder);
void queues(const std::string& folder);
void texts(const std::string& folder);
void deathsAtOnce(const std::string& folder);

}  // namespace bench

#endif
