// SPDX-License-Identifier: Apache-2.0
#include "kernel/Threads.h"

#include <system_error>

namespace android::kernel {

namespace {

void endThread(void* thread) {
    delete static_cast<DriverThread*>(thread);
}

}  // namespace

Threads::Threads(Process& process) : mProcess(process) {
    if (pthread_key_create(&mKey, &endThread) != 0) {
        throw std::system_error(EAGAIN, std::generic_category(), "pthread_key_create");
    }
}

Threads::~Threads() {
    void* last = pthread_getspecific(mKey);
    (void)pthread_setspecific(mKey, nullptr);
    endThread(last);
    (void)pthread_key_delete(mKey);  // cannot fail for a key that was created
}

DriverThread& Threads::current() {
    auto* thread = static_cast<DriverThread*>(pthread_getspecific(mKey));
    if (thread == nullptr) {
        thread = new DriverThread(mProcess);
        (void)pthread_setspecific(mKey, thread);  // else it is made anew with each call
    }
    return *thread;
}

void Threads::startLooper() {
    start(BC_ENTER_LOOPER);
}

void Threads::startRequestedLooper() {
    start(BC_REGISTER_LOOPER);
}

void Threads::start(uint32_t enter) {
    mProcess.threads.start([this, enter] { run(enter); });
}

// An implementation may end its thread in the middle of a call. Another looper takes its place,
// which the driver has not requested.
void Threads::run(uint32_t enter) {
    struct Successor {
        explicit Successor(Threads& all) : threads(all) {}
        ~Successor() {
            if (isWanted) {
                threads.start(BC_ENTER_LOOPER);
            }
        }
        Successor(const Successor&) = delete;
        Successor& operator=(const Successor&) = delete;
        Threads& threads;
        bool isWanted = true;
    };
    (void)pthread_setname_np(pthread_self(), "binder");  // works without a name as well
    Successor successor(*this);
    current().serveForever(enter);
    successor.isWanted = false;
}

}  // namespace android::kernel
