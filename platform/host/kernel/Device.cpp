// SPDX-License-Identifier: Apache-2.0
#include "kernel/Device.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/Log.h"

namespace android::kernel {

namespace {

std::string whyNotOpened(const std::string& path, int error) {
    const std::string text = "cannot open the binder driver " + path + ": ";
    switch (error) {
        case ENOENT:
        case ENODEV:
        case ENXIO:
            return text +
                   "there is none; load it with 'modprobe binder_linux devices=binder', or "
                   "unset VOXTREL_BINDER_DRIVER to use sockets";
        case EACCES:
        case EPERM:
            return text + "not permitted; let this user read and write it, say with 'chmod 666 " +
                   path + "', or unset VOXTREL_BINDER_DRIVER to use sockets";
        default:
            return text + strerrordesc_np(error);
    }
}

std::string whyOtherProtocol(const std::string& path, int version) {
    return path + " speaks version " + std::to_string(version) +
           " of the binder protocol, and this runtime version " +
           std::to_string(BINDER_CURRENT_PROTOCOL_VERSION) +
           ": use a kernel without CONFIG_ANDROID_BINDER_IPC_32BIT, or unset "
           "VOXTREL_BINDER_DRIVER to use sockets";
}

}  // namespace

size_t Device::mappingSize() {
    static const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size_t{1024} * 1024 - 2 * page;
}

std::unique_ptr<Device> Device::open(SystemCalls& system, const std::string& path,
                                     std::string& error) {
    transport::Fd fd = system.open(path.c_str());
    if (!fd.valid()) {
        error = whyNotOpened(path, errno);
        return nullptr;
    }
    std::unique_ptr<Device> device(new Device(system, std::move(fd)));
    return device->prepare(path, error) ? std::move(device) : nullptr;
}

bool Device::prepare(const std::string& path, std::string& error) {
    binder_version version = {};
    if (control(BINDER_VERSION, &version) != 0) {
        error = path +
                " is no binder driver: set VOXTREL_BINDER_DRIVER to its device, say "
                "/dev/binder, or unset it to use sockets";
        return false;
    }
    if (version.protocol_version != BINDER_CURRENT_PROTOCOL_VERSION) {
        error = whyOtherProtocol(path, version.protocol_version);
        return false;
    }
    mMemory = mSystem.map(mFd.get(), mappingSize());
    if (mMemory == nullptr) {
        error = "cannot map " + std::to_string(mappingSize()) + " bytes of the binder driver " +
                path + " into this process: " + strerrordesc_np(errno);
        return false;
    }
    return true;
}

Device::~Device() {
    if (mMemory != nullptr) {
        mSystem.unmap(mMemory, mappingSize());
    }
}

int Device::control(unsigned long request, void* argument) {
    int result = -1;
    do {
        result = mSystem.ioctl(mFd.get(), request, argument);
    } while (result < 0 && errno == EINTR);
    return result < 0 ? errno : 0;
}

// A signal may come after the commands were consumed, but only before anything was read. Consumed
// commands must not be written again.
int Device::exchange(CommandBuffer& commands, ReturnBuffer* returns) {
    for (;;) {
        binder_write_read transfer = {};
        transfer.write_size = commands.size();
        transfer.write_buffer = toWord(commands.data());
        transfer.read_size = returns != nullptr ? ReturnBuffer::kCapacity : 0;
        transfer.read_buffer = returns != nullptr ? toWord(returns->data()) : 0;
        const int result = mSystem.ioctl(mFd.get(), BINDER_WRITE_READ, &transfer);
        const int error = result < 0 ? errno : 0;
        commands.consume(static_cast<size_t>(transfer.write_consumed));
        if (returns != nullptr) {
            returns->fill(static_cast<size_t>(transfer.read_consumed));
        }
        if (error != EINTR) {
            return error;
        }
    }
}

void Device::write(CommandBuffer commands) {
    for (size_t before = 0; !commands.empty() && commands.size() != before;) {
        before = commands.size();
        const int error = exchange(commands, nullptr);
        if (error != 0) {
            transport::logLimited("the binder driver fails: %s", strerrordesc_np(error));
            return;
        }
    }
}

int Device::setMaxThreads(uint32_t count) {
    return control(BINDER_SET_MAX_THREADS, &count);
}

int Device::becomeContextManager() {
    int32_t unused = 0;
    return control(BINDER_SET_CONTEXT_MGR, &unused);
}

void Device::exitThread() {
    int32_t unused = 0;
    (void)control(BINDER_THREAD_EXIT, &unused);  // the thread ends either way
}

}  // namespace android::kernel
