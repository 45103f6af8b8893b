// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "tests/support/Roles.h"

int main(int argc, char** argv) {
    // One that is drawn is logged. NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread yet
    (void)setenv("VOXTREL_BINDER_SEED", "7", 0);
    return voxtrel_test::runRoleOrTests(argc, argv);
}
