// SPDX-License-Identifier: Apache-2.0
#include "utils/RefBase.h"

#include <atomic>

namespace android {

namespace {

// Set in the strong count until the first strong reference has been announced.
constexpr uint32_t kUntouched = 0x80000000U;
constexpr uint32_t kCountMask = ~kUntouched;

}  // namespace

// Each strong reference carries a weak one, so the counts outlive the object.
class RefBase::Counts final : public RefBase::weakref_type {
public:
    explicit Counts(RefBase* owner) : base(owner) {}

    bool untouched() const { return (strong.load(std::memory_order_relaxed) & kUntouched) != 0; }
    bool livesToLastWeak() const {
        return (lifetime.load(std::memory_order_relaxed) & OBJECT_LIFETIME_MASK) ==
               OBJECT_LIFETIME_WEAK;
    }
    void announceFirst(uint32_t countBefore);
    bool holdLiving();
    bool revive(const void* id);

    std::atomic<uint32_t> strong{kUntouched};
    std::atomic<int32_t> weak{0};
    std::atomic<int32_t> lifetime{OBJECT_LIFETIME_STRONG};
    RefBase* const base;
};

void RefBase::Counts::announceFirst(uint32_t countBefore) {
    if ((countBefore & kUntouched) != 0 &&
        (strong.fetch_and(kCountMask, std::memory_order_relaxed) & kUntouched) != 0) {
        base->onFirstRef();
    }
}

bool RefBase::Counts::holdLiving() {
    uint32_t now = strong.load(std::memory_order_relaxed);
    while (now != 0 && (now != kUntouched || !livesToLastWeak())) {
        if (strong.compare_exchange_weak(now, now + 1, std::memory_order_acq_rel)) {
            announceFirst(now);
            return true;
        }
    }
    return false;
}

bool RefBase::Counts::revive(const void* id) {
    if (!livesToLastWeak() || !base->onIncStrongAttempted(FIRST_INC_STRONG, id)) {
        return false;
    }
    const uint32_t before = strong.fetch_add(1, std::memory_order_acq_rel);
    announceFirst(before);
    if ((before & kCountMask) != 0) {
        // Another thread was quicker: takes back what onIncStrongAttempted has granted here.
        base->onLastStrongRef(id);
    }
    return true;
}

RefBase* RefBase::weakref_type::refBase() const {
    return static_cast<const Counts*>(this)->base;
}

void RefBase::weakref_type::incWeak(const void* /*id*/) {
    static_cast<Counts*>(this)->weak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::weakref_type::decWeak(const void* id) {
    auto* counts = static_cast<Counts*>(this);
    if (counts->weak.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
    }
    if (counts->livesToLastWeak()) {
        counts->base->onLastWeakRef(id);
        delete counts->base;
    } else if (!counts->untouched()) {
        delete counts;
    }
}

bool RefBase::weakref_type::attemptIncStrong(const void* id) {
    incWeak(id);
    auto* counts = static_cast<Counts*>(this);
    if (counts->holdLiving() || counts->revive(id)) {
        return true;
    }
    decWeak(id);
    return false;
}

bool RefBase::weakref_type::attemptIncWeak(const void* /*id*/) {
    auto& weak = static_cast<Counts*>(this)->weak;
    int32_t now = weak.load(std::memory_order_relaxed);
    while (now > 0) {
        if (weak.compare_exchange_weak(now, now + 1, std::memory_order_relaxed)) {
            return true;
        }
    }
    return false;
}

int32_t RefBase::weakref_type::getWeakCount() const {
    return static_cast<const Counts*>(this)->weak.load(std::memory_order_relaxed);
}

RefBase::RefBase() : mCounts(new Counts(this)) {}

RefBase::~RefBase() {
    if (!mCounts->untouched() && !mCounts->livesToLastWeak()) {
        return;  // the last strong reference is going and takes the counts along
    }
    if (mCounts->weak.load(std::memory_order_relaxed) == 0) {
        delete mCounts;
        return;
    }
    // Destroyed directly while watched: the watchers find it gone and free the counts.
    mCounts->lifetime.store(OBJECT_LIFETIME_STRONG, std::memory_order_relaxed);
    mCounts->strong.store(0, std::memory_order_release);
}

void RefBase::incStrong(const void* id) const {
    mCounts->incWeak(id);
    mCounts->announceFirst(mCounts->strong.fetch_add(1, std::memory_order_relaxed));
}

void RefBase::forceIncStrong(const void* id) const {
    incStrong(id);
}

void RefBase::decStrong(const void* id) const {
    Counts* counts = mCounts;
    if (counts->strong.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        counts->base->onLastStrongRef(id);
        if (!counts->livesToLastWeak()) {
            delete this;
        }
    }
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): kept by the weak reference let go here
    counts->decWeak(id);
}

int32_t RefBase::getStrongCount() const {
    return static_cast<int32_t>(mCounts->strong.load(std::memory_order_relaxed) & kCountMask);
}

RefBase::weakref_type* RefBase::createWeak(const void* id) const {
    mCounts->incWeak(id);
    return mCounts;
}

RefBase::weakref_type* RefBase::getWeakRefs() const {
    return mCounts;
}

void RefBase::extendObjectLifetime(int32_t mode) {
    mCounts->lifetime.fetch_or(mode, std::memory_order_relaxed);
}

void RefBase::onFirstRef() {}

void RefBase::onLastStrongRef(const void* /*id*/) {}

bool RefBase::onIncStrongAttempted(uint32_t flags, const void* /*id*/) {
    return (flags & FIRST_INC_STRONG) != 0;
}

void RefBase::onLastWeakRef(const void* /*id*/) {}

}  // namespace android
