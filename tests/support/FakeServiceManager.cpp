// SPDX-License-Identifier: Apache-2.0
#include "tests/support/FakeServiceManager.h"

#include <string>

#include "tests/support/Journal.h"

namespace support {

android::sp<android::IBinder> FakeServiceManager::getService(const android::String16& name) const {
    const char16_t* units = name;
    const std::string narrow(units, units + name.size());
    note("find " + narrow);
    ++mQuestions;
    return mQuestions > absentFor ? service : nullptr;
}

android::sp<android::IBinder> FakeServiceManager::checkService(
    const android::String16& /*name*/) const {
    return nullptr;
}

android::status_t FakeServiceManager::addService(const android::String16& /*name*/,
                                                 const android::sp<android::IBinder>& /*added*/,
                                                 bool /*allowIsolated*/) {
    return android::INVALID_OPERATION;
}

android::Vector<android::String16> FakeServiceManager::listServices() {
    return {};
}

android::IBinder* FakeServiceManager::onAsBinder() {
    return nullptr;
}

}  // namespace support
