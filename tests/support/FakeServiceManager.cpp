// SPDX-License-Identifier: Apache-2.0
#include "tests/support/FakeServiceManager.h"

#include <string>

#include "tests/support/Journal.h"

namespace support {

static_assert(!std::is_abstract_v<FakeServiceManager>,
              "this release of the platform leaves more open than is answered here");

android::sp<android::IBinder> FakeServiceManager::getService(const android::String16& name) const {
    const char16_t* units = name;
    const std::string narrow(units, units + name.size());
    note("find " + narrow);
    ++mQuestions;
    return mQuestions > absentFor ? service : nullptr;
}

}  // namespace support
