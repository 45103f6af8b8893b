// SPDX-License-Identifier: Apache-2.0
// Leaves a kilobyte of what a driver's process may have unread: it sends one-way calls to an object
// of that process, whose name it is given, and stays until it is killed.
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>

#include <cstdio>

#include <unistd.h>

namespace {

constexpr int kBudget = 520'192;
constexpr int kLeft = 1024;
constexpr int kSize = 512;

int sendOneWay(const android::sp<android::IBinder>& blocked, size_t size) {
    android::Parcel data;
    android::Parcel reply;
    (void)data.writeInplace(size);
    return blocked->transact(android::IBinder::FIRST_CALL_TRANSACTION, data, &reply,
                             android::IBinder::FLAG_ONEWAY);
}

}  // namespace

int main(int, char** argv) {
    const android::sp<android::IBinder> blocked =
        android::defaultServiceManager()->getService(android::String16(argv[1]));
    if (blocked == nullptr) {
        std::puts("not found");
        return 1;
    }
    for (int left = kBudget; left > kLeft; left -= kSize) {
        const int status = sendOneWay(blocked, kSize);
        if (status != android::OK) {
            std::printf("%d with %d left\n", status, left);
            return 1;
        }
    }
    std::puts("flooded");
    std::fflush(stdout);
    pause();
}
