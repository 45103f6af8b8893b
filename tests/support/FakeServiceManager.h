// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_FAKESERVICEMANAGER_H
#define VOXTREL_TESTS_SUPPORT_FAKESERVICEMANAGER_H

#include "ipc/BinderHeaders.h"

namespace support {

/// A service manager of the test's own: notes each question in the journal as "find NAME" and finds
/// one binder, under any name.
class FakeServiceManager : public android::IServiceManager {
public:
    android::sp<android::IBinder> service;  ///< what is found; null for nothing
    int absentFor = 0;                      ///< so many questions find nothing at first

    android::sp<android::IBinder> getService(const android::String16& name) const override;
    android::sp<android::IBinder> checkService(const android::String16& name) const override;
    android::status_t addService(const android::String16& name,
                                 const android::sp<android::IBinder>& added,
                                 bool allowIsolated) override;
    android::Vector<android::String16> listServices() override;

protected:
    android::IBinder* onAsBinder() override;

private:
    mutable int mQuestions = 0;
};

}  // namespace support

#endif
