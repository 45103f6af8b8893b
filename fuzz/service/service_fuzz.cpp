// SPDX-License-Identifier: Apache-2.0
// A whole service behind its stub, with any requests of any clients in any order, at any moment of
// what is being spoken: each utterance that it accepts starts in its turn and ends once, the client
// is told of that and of each refusal, the lock is let go with its holder, settings survive, and of
// clients that die nothing stays.
#include <cstdio>
#include <filesystem>

#include "fuzz/service/Scene.h"
#include "tests/support/TempFolder.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    return std::freopen("/dev/null", "w", stdout) != nullptr ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const voxtrel_test::TempFolder folder;
    for (const auto& left : std::filesystem::directory_iterator(folder.path(""))) {
        std::filesystem::remove(left);
    }
    voxtrel_fuzz::Input input(data, size);
    voxtrel_fuzz::Scene(folder.path("voxtrel.ini"), input).run();
    return 0;
}
