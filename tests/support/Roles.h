// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_ROLES_H
#define VOXTREL_TESTS_SUPPORT_ROLES_H

#include <string>
#include <vector>

namespace voxtrel_test {

inline constexpr const char* kRoleArgument = "--role=";

using Arguments = std::vector<std::string>;

/// What a test program does when it is started again as a second process. One global object a role;
/// its name is unique in the program.
class Role {
public:
    Role(const std::string& name, int (*run)(const Arguments&));
};

/// The program that is running.
const std::string& ownPath();

/// The main function of a program with roles: a role, or what the program is for.
int runRoleOr(int argc, char** argv, int (*otherwise)(int argc, char** argv));
/// The same where that is GoogleTest's tests.
int runRoleOrTests(int argc, char** argv);

/// For a role: one line to the test, and the next line from it (empty at its end).
void tell(const std::string& line);
std::string hear();

}  // namespace voxtrel_test

#endif
