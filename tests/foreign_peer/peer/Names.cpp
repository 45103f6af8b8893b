// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/peer/Names.h"

#include <iterator>

namespace foreign {

namespace {

constexpr int32_t kSystemStability = 12;
constexpr int32_t kPermissionDenied = -1;
constexpr int32_t kUnknownTransaction = -74;

// The death of a service is told with its handle as the cookie.
constexpr uint64_t cookieOf(uint32_t handle) {
    return handle;
}

}  // namespace

Outgoing Names::serve(const Incoming& call) {
    if (call.code == B_PACK_CHARS('_', 'P', 'N', 'G')) {
        return {mShape == Shape::Number ? kPermissionDenied : 0, {}};
    }
    ImageReader request(call.data);
    (void)request.int32();  // the strict-mode policy
    if (request.text16() != "android.os.IServiceManager") {
        return {kPermissionDenied, {}};
    }
    switch (call.code) {
        case 1:
        case 2:
            return find(request);
        case 3:
            return add(request);
        case 4:
            return nameOf(request);
        default:
            return {mShape == Shape::Number ? kPermissionDenied : kUnknownTransaction, {}};
    }
}

Outgoing Names::find(ImageReader& request) const {
    Outgoing answer;
    const auto found = mHandles.find(request.text16().value_or(""));
    if (found != mHandles.end()) {
        answer.data.handle(found->second);
    } else if (mShape == Shape::Number) {
        answer.data.int32(0);
    } else {
        answer.data.noObject();
    }
    if (mShape == Shape::Stable) {
        answer.data.int32(found != mHandles.end() ? kSystemStability : 0);
    }
    return answer;
}

Outgoing Names::add(ImageReader& request) {
    Outgoing answer;
    const std::string name = request.text16().value_or("");
    const flat_binder_object service = request.object().value_or(flat_binder_object{});
    if (name.empty() || service.hdr.type != BINDER_TYPE_HANDLE) {
        return {kPermissionDenied, {}};
    }
    mHandles[name] = service.handle;
    mWatchDeath(service.handle, cookieOf(service.handle));
    answer.data.int32(0);
    return answer;
}

Outgoing Names::nameOf(ImageReader& request) const {
    const int32_t index = request.int32().value_or(-1);
    if (index < 0 || static_cast<size_t>(index) >= mHandles.size()) {
        return {kPermissionDenied, {}};
    }
    Outgoing answer;
    answer.data.text16(std::next(mHandles.begin(), index)->first);
    return answer;
}

void Names::died(uint64_t cookie) {
    for (auto one = mHandles.begin(); one != mHandles.end();) {
        one = cookieOf(one->second) == cookie ? mHandles.erase(one) : std::next(one);
    }
}

}  // namespace foreign
