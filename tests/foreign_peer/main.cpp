// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Roles.h"

int main(int argc, char** argv) {
    return voxtrel_test::runRoleOrTests(argc, argv);
}
