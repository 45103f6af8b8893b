// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_HOUSE_INCLUDE_RULE_H
#define VOXTREL_TESTS_HOUSE_INCLUDE_RULE_H

#include <string>
#include <vector>

namespace house {

/// One folder and what its files may include. A prefix ending in '/' opens a whole folder.
struct Room {
    const char* folder;
    std::vector<std::string> doors;
};

/// The rooms of the project, each with the doors that are open to it.
const std::vector<Room>& rooms();

/// The targets of the include directives in a source text, in order.
std::vector<std::string> includesOf(const std::string& source);

/// Those of them that stand in quotes: files of the project.
std::vector<std::string> quotedIncludesOf(const std::string& source);

/// Whether a file of `room` at `path` (from the root) may include `target`. Standard and operating
/// system headers are always allowed; whatever names a folder of the project or of the platform is
/// allowed only through an open door.
bool mayInclude(const Room& room, const std::string& path, const std::string& target);

}  // namespace house

#endif
