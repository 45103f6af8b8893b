// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_HEADERS_H
#define VOXTREL_PLATFORM_CHECK_HEADERS_H

// The platform's headers as ipc/BinderHeaders.h includes them, so that this program asks no more of
// a release than the library does.
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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
#include <binder/ProcessState.h>
#include <ttscommon/ttscommon.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/String16.h>
#include <utils/StrongPointer.h>

#endif
