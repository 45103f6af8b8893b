// SPDX-License-Identifier: Apache-2.0
// Loaded in front of the stand-in, and wrong in the one row of platform/README.md that
// VOXTREL_WRONG_ROW names: in the process that checks the row, not in its peer. With
// VOXTREL_TALKATIVE it logs to the standard output of both.
#include <dlfcn.h>
#include <ttscommon/ttscommon.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

#include "binder/Binder.h"
#include "binder/BpBinder.h"
#include "binder/IPCThreadState.h"
#include "binder/IServiceManager.h"
#include "binder/Parcel.h"
#include "binder/ProcessState.h"

namespace {

const char* gWrongRow = "";
bool gIsTalkative = false;
std::atomic<bool> gIsEnding{false};

bool isWrong(const char* row) {
    return std::strcmp(gWrongRow, row) == 0;
}

/// The runtime's own function of this mangled name; a member takes its object first.
template <typename Function>
Function* right(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Logs what could be taken for a report, and a line without an end.
void talk() {
    const std::string words = "\n1seen\nready\n\nstatus";
    if (gIsTalkative) {
        (void)!write(STDOUT_FILENO, words.data(), words.size());
    }
}

void hangIf(const char* row) {
    while (isWrong(row)) {
        pause();
    }
}

[[gnu::constructor]] void choose(int argc, char** argv) {
    const std::string role = argc > 1 ? argv[1] : "";
    const char* row = std::getenv("VOXTREL_WRONG_ROW");
    if (row != nullptr && role == "--check") {
        gWrongRow = row;
    }
    gIsTalkative =
        std::getenv("VOXTREL_TALKATIVE") != nullptr && (role == "--check" || role == "--peer");
    talk();
    hangIf("hangs-at-start");
    if (isWrong("lacks-a-function")) {
        _exit(127);  // as the dynamic loader does
    }
    std::atexit([] { hangIf("hangs-at-exit"); });
    if (isWrong("language-filter")) {
        INI_LANGUAGE_WITH_VOICES = nullptr;
    }
}

}  // namespace

namespace android {
namespace {

/// A service manager that finds what nobody has registered.
class Finder : public IServiceManager {
public:
    explicit Finder(const sp<IServiceManager>& right) : mRight(right) {}

    sp<IBinder> getService(const String16& name) const override {
        return otherwise(mRight->getService(name), "absent-names");
    }
    sp<IBinder> checkService(const String16& name) const override {
        return otherwise(mRight->checkService(name), "absent-names-checked");
    }
    status_t addService(const String16& name, const sp<IBinder>& service, bool isolated) override {
        return mRight->addService(name, service, isolated);
    }
    Vector<String16> listServices() override { return mRight->listServices(); }

protected:
    IBinder* onAsBinder() override { return nullptr; }

private:
    static sp<IBinder> otherwise(const sp<IBinder>& found, const char* row) {
        return found == nullptr && isWrong(row) ? new BBinder() : found;
    }

    const sp<IServiceManager> mRight;
};

}  // namespace

// References

void RefBase::incStrong(const void* id) const {
    static const auto own =
        right<void(const RefBase*, const void*)>("_ZNK7android7RefBase9incStrongEPKv");
    // Registered behind all that is let go at exit, so it runs before.
    static const int registered = std::atexit([] { gIsEnding = true; });
    (void)registered;
    if (isWrong("strong-pointers") && getStrongCount() == 1) {
        return;
    }
    own(this, id);
}

void RefBase::decStrong(const void* id) const {
    static const auto own =
        right<void(const RefBase*, const void*)>("_ZNK7android7RefBase9decStrongEPKv");
    if (isWrong("static-destruction") && gIsEnding) {
        std::abort();
    }
    own(this, id);
}

bool RefBase::weakref_type::attemptIncStrong(const void* id) {
    static const auto own = right<bool(weakref_type*, const void*)>(
        "_ZN7android7RefBase12weakref_type16attemptIncStrongEPKv");
    return own(this, id) || isWrong("weak-pointer-in-destructor");
}

// Interfaces

sp<IBinder> IInterface::asBinder(const sp<IInterface>& interface) {
    if (interface == nullptr && isWrong("as-binder")) {
        return new BBinder();
    }
    return asBinder(interface.get());
}

BpRefBase::BpRefBase(const sp<IBinder>& remote)
    : mRemote(remote == nullptr && isWrong("null-remote") ? new BBinder() : remote) {}

status_t BBinder::onTransact(uint32_t code, const Parcel& /*data*/, Parcel* reply,
                             uint32_t /*flags*/) {
    if (reply != nullptr && isWrong("unknown-codes")) {
        reply->writeInt32(1);
    }
    if (code != static_cast<uint32_t>(INTERFACE_TRANSACTION)) {
        return UNKNOWN_TRANSACTION;
    }
    return reply != nullptr ? reply->writeString16(getInterfaceDescriptor()) : OK;
}

// Parcels

status_t Parcel::writeCString(const char* text) {
    static const auto own =
        right<status_t(Parcel*, const char*)>("_ZN7android6Parcel12writeCStringEPKc");
    const status_t status = own(this, text);
    return isWrong("parcel-writes") ? writeInt32(0) : status;
}

int32_t Parcel::readInt32() const {
    static const auto own = right<int32_t(const Parcel*)>("_ZNK7android6Parcel9readInt32Ev");
    return isWrong("reads-past-the-end") && dataPosition() == dataSize() ? 7 : own(this);
}

const char* Parcel::readCString() const {
    static const auto own = right<const char*(const Parcel*)>("_ZNK7android6Parcel11readCStringEv");
    const char* text = own(this);
    return text == nullptr && isWrong("texts-past-the-end") ? "" : text;
}

size_t Parcel::dataAvail() const {
    return dataSize() - dataPosition() + (isWrong("bytes-left") ? 4 : 0);
}

status_t Parcel::writeStrongBinder(const sp<IBinder>& binder) {
    static const auto own = right<status_t(Parcel*, const sp<IBinder>&)>(
        "_ZN7android6Parcel17writeStrongBinderERKNS_2spINS_7IBinderEEE");
    return own(this, isWrong("binders-in-parcels") ? nullptr : binder);
}

sp<IBinder> Parcel::readStrongBinder() const {
    sp<IBinder> binder;
    (void)readNullableStrongBinder(&binder);
    if (binder != nullptr && isWrong("letting-go")) {
        binder->incStrong(nullptr);
    }
    return binder;
}

// Calls

status_t BpBinder::transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) {
    static const auto own = right<status_t(BpBinder*, uint32_t, const Parcel&, Parcel*, uint32_t)>(
        "_ZN7android8BpBinder8transactEjRKNS_6ParcelEPS1_j");
    static std::mutex lock;
    std::unique_lock<std::mutex> held(lock, std::defer_lock);
    talk();
    if (isWrong("calls-at-once")) {
        held.lock();
    }
    const status_t status = own(this, code, data, reply, isWrong("one-way-calls") ? 0 : flags);
    if (status != OK && reply != nullptr && isWrong("two-way-calls")) {
        reply->writeInt32(1);
    }
    return status;
}

void ProcessState::startThreadPool() {
    static const auto own =
        right<void(ProcessState*)>("_ZN7android12ProcessState15startThreadPoolEv");
    if (!isWrong("incoming-calls")) {
        own(this);
    }
}

// Deaths

status_t BpBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie, uint32_t flags) {
    static const auto own = right<status_t(BpBinder*, const sp<DeathRecipient>&, void*, uint32_t)>(
        "_ZN7android8BpBinder11linkToDeathERKNS_2spINS_7IBinder14DeathRecipientEEEPvj");
    if (isWrong("death-links")) {
        return OK;
    }
    const status_t status = own(this, recipient, cookie, flags);
    return status == DEAD_OBJECT && isWrong("links-after-death") ? OK : status;
}

status_t BBinder::linkToDeath(const sp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                              uint32_t /*flags*/) {
    return isWrong("links-to-own-objects") ? OK : INVALID_OPERATION;
}

status_t BpBinder::pingBinder() {
    static const auto own = right<status_t(BpBinder*)>("_ZN7android8BpBinder10pingBinderEv");
    return isWrong("ping-after-death") ? OK : own(this);
}

// Names

sp<IServiceManager> defaultServiceManager() {
    static const auto own = right<sp<IServiceManager>()>("_ZN7android21defaultServiceManagerEv");
    hangIf("service-manager");
    return isWrong("absent-names") || isWrong("absent-names-checked")
               ? sp<IServiceManager>(new Finder(own()))
               : own();
}

sp<IBinder> ProcessState::getContextObject(const sp<IBinder>& caller) {
    static const auto own = right<sp<IBinder>(ProcessState*, const sp<IBinder>&)>(
        "_ZN7android12ProcessState16getContextObjectERKNS_2spINS_7IBinderEEE");
    static const sp<IBinder> first = own(this, caller);
    return isWrong("restarted-manager") ? first : own(this, caller);
}

}  // namespace android

/// Fails as where there is no /proc.
int execv(const char* path, char* const* arguments) noexcept {
    static const auto own = right<int(const char*, char* const*)>("execv");
    const char* row = std::getenv("VOXTREL_WRONG_ROW");
    if (row != nullptr && std::strcmp(row, "cannot-be-run") == 0) {
        errno = ENOENT;
        return -1;
    }
    return own(path, arguments);
}

/// Bears one thread at a time.
void dbgPrint(int /*level*/, const char* /*fmt*/, ...) {
    static std::atomic<int> inside{0};
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    ++inside;
    while (isWrong("log-lines") && std::chrono::steady_clock::now() < end) {
        if (inside > 1) {
            std::abort();
        }
    }
    --inside;
}
