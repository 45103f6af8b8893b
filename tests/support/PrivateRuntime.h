// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_PRIVATERUNTIME_H
#define VOXTREL_TESTS_SUPPORT_PRIVATERUNTIME_H

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"

namespace voxtrel_test {

/// A service manager of the test's own, in a folder of its own, found by this process and by every
/// one that it starts.
class PrivateRuntime {
public:
    /// `program` is the service manager's; it is running when the constructor returns.
    explicit PrivateRuntime(const std::string& program);
    ~PrivateRuntime();
    PrivateRuntime(const PrivateRuntime&) = delete;
    PrivateRuntime& operator=(const PrivateRuntime&) = delete;

    const std::string& folder() const { return mFolder; }
    std::string socket() const { return mFolder + "/binder"; }
    /// Where it is looked for: at the socket, or at the device of the driver that
    /// $VOXTREL_BINDER_DRIVER names.
    std::string place() const;
    /// Lets every user ask the manager. Over the driver that is the device's matter. False if that
    /// failed.
    bool admitOthers() const;
    ChildProcess& manager() { return *mManager; }
    void killManager();
    void startManager();

private:
    const std::string mProgram;
    std::string mFolder;
    std::unique_ptr<ChildProcess> mManager;
};

}  // namespace voxtrel_test

#endif
