// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Roles.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>

namespace voxtrel_test {

namespace {

std::map<std::string, int (*)(const Arguments&)>& roles() {
    static std::map<std::string, int (*)(const Arguments&)> all;
    return all;
}

std::string& path() {
    static std::string own;
    return own;
}

}  // namespace

Role::Role(const std::string& name, int (*run)(const Arguments&)) {
    roles()[name] = run;
}

const std::string& ownPath() {
    return path();
}

int runRoleOr(int argc, char** argv, int (*otherwise)(int argc, char** argv)) {
    char resolved[PATH_MAX];
    path() = realpath(argv[0], resolved) != nullptr ? resolved : argv[0];
    signal(SIGPIPE, SIG_DFL);  // a runtime that raises it ends the program
    const std::string first = argc > 1 ? argv[1] : "";
    const std::string mark = kRoleArgument;
    if (first.compare(0, mark.size(), mark) != 0) {
        return otherwise(argc, argv);
    }
    const auto role = roles().find(first.substr(mark.size()));
    if (role == roles().end()) {
        std::cerr << "no such role: " << first << std::endl;
        return 2;
    }
    return role->second(Arguments(argv + 2, argv + argc));
}

int runRoleOrTests(int argc, char** argv) {
    return runRoleOr(argc, argv, [](int count, char** values) {
        testing::InitGoogleTest(&count, values);
        return RUN_ALL_TESTS();
    });
}

void tell(const std::string& line) {
    std::cout << line << std::endl;
}

std::string hear() {
    std::string line;
    std::getline(std::cin, line);
    return line;
}

}  // namespace voxtrel_test
