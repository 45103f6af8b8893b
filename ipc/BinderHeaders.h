// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_BINDERHEADERS_H
#define VOXTREL_IPC_BINDERHEADERS_H

// The one place of the library that includes the binder runtime, so that what differs between its
// releases is dealt with once.

// Some releases use these without including them.
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Newer releases refuse interfaces written by hand unless told before their first header.
#ifndef DO_NOT_CHECK_MANUAL_BINDER_INTERFACES
#define DO_NOT_CHECK_MANUAL_BINDER_INTERFACES
#endif

#include <binder/Binder.h>
#include <binder/BinderService.h>
#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>
#include <utils/StrongPointer.h>

#endif
