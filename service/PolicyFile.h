// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_POLICYFILE_H
#define VOXTREL_SERVICE_POLICYFILE_H

#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "service/Policy.h"

namespace voxtreld {

/// Where the policy is unless an option names another file.
constexpr const char* kDefaultPolicyFile = "/etc/voxtrel/policy";

/// Reads a policy as voxtreld-policy(5) has it: a rule a line, in words parted by blanks; a word
/// that begins with # begins a comment. Nothing of a file that has a mistake counts.
/// @param name of the file, for `error`, which receives "FILE:LINE: REASON", one line.
std::optional<std::vector<PolicyRule>> readPolicy(std::istream& in, const std::string& name,
                                                  std::string& error);

/// The rules of a file: of `named`, or of the default one if that is not given; then the file may
/// be missing, and there are no rules. Called on: the main thread, before there are others.
/// @param error receives the file, the line if it is one, what is wrong and what to do.
std::optional<std::vector<PolicyRule>> loadPolicy(const std::optional<std::string>& named,
                                                  std::string& error);

}  // namespace voxtreld

#endif
