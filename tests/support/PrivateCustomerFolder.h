// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_PRIVATECUSTOMERFOLDER_H
#define VOXTREL_TESTS_SUPPORT_PRIVATECUSTOMERFOLDER_H

namespace voxtrel_test {

/// A real, empty folder "/Customer" that only this process sees.
///
/// The first object moves the process into a mount namespace of its own, where the root folder is
/// a memory file system that shows everything of the old root but its "/Customer". It stays there;
/// each further object empties (or makes again) the folder. A test may remove the folder to see
/// what happens on a device that lacks it.
///
/// Needs either the right to mount (root) or user namespaces, for which the process must have one
/// thread only. Where the kernel allows neither, the constructor throws and says why: a test that
/// cannot run has failed.
///
/// Called on: the thread that is to see the folder, and threads that it starts later see it too.
class PrivateCustomerFolder {
public:
    PrivateCustomerFolder();
    ~PrivateCustomerFolder();
    PrivateCustomerFolder(const PrivateCustomerFolder&) = delete;
    PrivateCustomerFolder& operator=(const PrivateCustomerFolder&) = delete;
};

}  // namespace voxtrel_test

#endif
