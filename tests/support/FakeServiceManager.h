// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_FAKESERVICEMANAGER_H
#define VOXTREL_TESTS_SUPPORT_FAKESERVICEMANAGER_H

#include <optional>
#include <type_traits>
#include <vector>

#include "ipc/BinderHeaders.h"

namespace support {

/// What an interface's release names `ConnectionInfo`, `LocalRegistrationCallback` and
/// `ServiceDebugInfo`; in a release that has no such name, something that nobody else names.
struct Unnamed {};
template <typename Interface, typename = void>
struct ConnectionInfoOf {
    using Type = Unnamed;
};
template <typename Interface>
struct ConnectionInfoOf<Interface, std::void_t<typename Interface::ConnectionInfo>> {
    using Type = typename Interface::ConnectionInfo;
};
template <typename Interface, typename = void>
struct RegistrationCallbackOf {
    using Type = android::RefBase;
};
template <typename Interface>
struct RegistrationCallbackOf<Interface,
                              std::void_t<typename Interface::LocalRegistrationCallback>> {
    using Type = typename Interface::LocalRegistrationCallback;
};
template <typename Interface, typename = void>
struct DebugInfoOf {
    using Type = Unnamed;
};
template <typename Interface>
struct DebugInfoOf<Interface, std::void_t<typename Interface::ServiceDebugInfo>> {
    using Type = typename Interface::ServiceDebugInfo;
};

/// A service manager of the test's own: notes each question in the journal as "find NAME" and finds
/// one binder, under any name.
///
/// Releases of the platform differ in what their interface leaves open, so this one has it all.
/// Nothing is marked `override`: what a release does not know is a function more, and no more.
// NOLINTBEGIN(modernize-use-override,cppcoreguidelines-explicit-virtual-functions)
class FakeServiceManager : public android::IServiceManager {
public:
    using String = android::String16;
    using Strings = android::Vector<android::String16>;
    using Binder = android::sp<android::IBinder>;
    using Status = android::status_t;
    using ConnectionInfo = ConnectionInfoOf<android::IServiceManager>::Type;
    using RegistrationCallback = RegistrationCallbackOf<android::IServiceManager>::Type;
    using DebugInfo = DebugInfoOf<android::IServiceManager>::Type;

    Binder service;     ///< what is found; null for nothing
    int absentFor = 0;  ///< so many questions find nothing at first

    virtual Binder getService(const String& name) const;
    virtual Binder checkService(const String& /*name*/) const { return nullptr; }

    virtual Status addService(const String& /*name*/, const Binder& /*added*/,
                              bool /*allowIsolated*/) {
        return android::INVALID_OPERATION;
    }
    virtual Status addService(const String& /*name*/, const Binder& /*added*/,
                              bool /*allowIsolated*/, int /*dumpFlags*/) {
        return android::INVALID_OPERATION;
    }
    virtual Strings listServices() { return {}; }
    virtual Strings listServices(int /*dumpFlags*/) { return {}; }

    virtual Binder waitForService(const String& /*name*/) { return nullptr; }
    virtual bool isDeclared(const String& /*name*/) { return false; }
    virtual Strings getDeclaredInstances(const String& /*interface*/) { return {}; }
    virtual std::optional<String> updatableViaApex(const String& /*name*/) { return {}; }
    virtual Strings getUpdatableNames(const String& /*apex*/) { return {}; }
    virtual std::optional<ConnectionInfo> getConnectionInfo(const String& /*name*/) { return {}; }
    virtual Status registerForNotifications(const String& /*name*/,
                                            const android::sp<RegistrationCallback>& /*told*/) {
        return android::INVALID_OPERATION;
    }
    virtual Status unregisterForNotifications(const String& /*name*/,
                                              const android::sp<RegistrationCallback>& /*told*/) {
        return android::INVALID_OPERATION;
    }
    virtual std::vector<DebugInfo> getServiceDebugInfo() { return {}; }

protected:
    virtual android::IBinder* onAsBinder() { return nullptr; }

private:
    mutable int mQuestions = 0;
};
// NOLINTEND(modernize-use-override,cppcoreguidelines-explicit-virtual-functions)

}  // namespace support

#endif
