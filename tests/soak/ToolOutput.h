// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_TOOLOUTPUT_H
#define VOXTREL_TESTS_SOAK_TOOLOUTPUT_H

#include <istream>

#include "tests/soak/Ledger.h"

namespace soak {

/// Notes what `voxtrelctl say --json` has printed of its utterance, as one of the client `run`:
/// that there is one from its first event on, and each end that it was told of.
void noteEvents(std::istream& output, unsigned run, Ledger& ledger);

}  // namespace soak

#endif
