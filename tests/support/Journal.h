// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_JOURNAL_H
#define VOXTREL_TESTS_SUPPORT_JOURNAL_H

#include <string>
#include <vector>

namespace support {

using Lines = std::vector<std::string>;

/// Adds a line to the one journal in which all fakes of a test write down what they saw, so that a
/// test can compare the order of things that different fakes see.
/// Called on: any thread.
void note(const std::string& line);

/// The journal so far, oldest line first, and empties it.
Lines takeNotes();

}  // namespace support

#endif
