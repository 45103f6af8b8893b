// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_OPTIONS_H
#define VOXTREL_PLATFORM_CHECK_OPTIONS_H

#include <chrono>
#include <string>
#include <vector>

namespace check {

/// What the command line asks for.
struct Options {
    std::vector<std::string> rows;  ///< names; empty: all
    std::chrono::seconds deadline{20};
    bool isList = false;
    bool isVerbose = false;
};

/// Reads the command line. Prints help, version and errors.
/// @return true to go on; else the process is to exit with `exitStatus`.
bool parseOptions(int argc, char** argv, Options& options, int& exitStatus);

}  // namespace check

#endif
