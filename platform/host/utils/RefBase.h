// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_REFBASE_H
#define VOXTREL_UTILS_REFBASE_H

#include <cstdint>
#include <type_traits>
#include <utility>

#include "utils/StrongPointer.h"

namespace android {

/// Base of everything that is held by `sp<>` and watched by `wp<>`; always a virtual base.
///
/// An object lives from its first strong reference to its last (or, after
/// `extendObjectLifetime(OBJECT_LIFETIME_WEAK)`, to its last weak one). A weak reference is made
/// strong again only while the object lives; that test and the last release may race freely.
///
/// Called on: any thread. Locks: none, the counts are atomic.
class RefBase {
public:
    /// `id` names the holder; it is not used here.
    void incStrong(const void* id) const;
    void decStrong(const void* id) const;
    void forceIncStrong(const void* id) const;
    int32_t getStrongCount() const;

    /// The part that outlives the object for as long as weak references exist.
    class weakref_type {
    public:
        RefBase* refBase() const;
        void incWeak(const void* id);
        void decWeak(const void* id);
        /// Adds a strong reference; false when the object is gone.
        bool attemptIncStrong(const void* id);
        /// Adds a weak reference; false when there is none left to copy.
        bool attemptIncWeak(const void* id);
        int32_t getWeakCount() const;

    protected:
        weakref_type() = default;
        ~weakref_type() = default;
    };

    weakref_type* createWeak(const void* id) const;
    weakref_type* getWeakRefs() const;

    RefBase(const RefBase&) = delete;
    RefBase& operator=(const RefBase&) = delete;

protected:
    RefBase();
    virtual ~RefBase();

    enum {
        OBJECT_LIFETIME_STRONG = 0x0000,
        OBJECT_LIFETIME_WEAK = 0x0001,
        OBJECT_LIFETIME_MASK = 0x0001,
    };
    /// Called by a derived class before it hands out weak references to itself.
    void extendObjectLifetime(int32_t mode);

    enum { FIRST_INC_STRONG = 0x0001 };

    virtual void onFirstRef();
    virtual void onLastStrongRef(const void* id);
    /// Asked of an object of weak lifetime that nobody holds any more: may it be held again?
    virtual bool onIncStrongAttempted(uint32_t flags, const void* id);
    virtual void onLastWeakRef(const void* id);

private:
    class Counts;
    Counts* const mCounts;
};

/// Watches an object without keeping it alive.
template <typename T>
class wp {
public:
    using weakref_type = RefBase::weakref_type;

    wp() = default;
    wp(T* object) {  // NOLINT(google-explicit-constructor)
        watch(object);
    }
    wp(const sp<T>& object) {  // NOLINT(google-explicit-constructor)
        watch(object.get());
    }
    wp(const wp<T>& other) : mPointer(other.mPointer), mRefs(other.mRefs) { hold(); }
    wp(wp<T>&& other) noexcept : mPointer(other.mPointer), mRefs(other.mRefs) { other.forget(); }
    template <typename U>
    wp(U* object) {  // NOLINT(google-explicit-constructor)
        watch(object);
    }
    template <typename U>
    wp(const sp<U>& object) {  // NOLINT(google-explicit-constructor)
        watch(object.get());
    }
    template <typename U>
    wp(const wp<U>& other) {  // NOLINT(google-explicit-constructor)
        convert(other);
    }

    ~wp() {
        if (mRefs != nullptr) {
            mRefs->decWeak(this);
        }
    }

    // A copy is made before anything is let go.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    wp& operator=(const wp<T>& other) {
        take(wp<T>(other));
        return *this;
    }
    wp& operator=(wp<T>&& other) noexcept {
        take(std::move(other));
        return *this;
    }
    wp& operator=(T* object) {
        take(wp<T>(object));
        return *this;
    }
    wp& operator=(const sp<T>& object) {
        take(wp<T>(object));
        return *this;
    }
    template <typename U>
    wp& operator=(const wp<U>& other) {
        take(wp<T>(other));
        return *this;
    }
    template <typename U>
    wp& operator=(const sp<U>& object) {
        take(wp<T>(object));
        return *this;
    }
    template <typename U>
    wp& operator=(U* object) {
        take(wp<T>(object));
        return *this;
    }

    void clear() { take(wp<T>()); }

    /// The object, held; null when it is gone.
    sp<T> promote() const {
        return mRefs != nullptr && mRefs->attemptIncStrong(this) ? sp<T>::adopt(mPointer) : sp<T>();
    }

    /// For comparing and printing: the object may be gone.
    T* unsafe_get() const { return mPointer; }
    weakref_type* get_refs() const { return mRefs; }

private:
    template <typename U>
    friend class wp;

    void watch(T* object) {
        if (object != nullptr) {
            mPointer = object;
            mRefs = object->createWeak(this);
        }
    }

    void hold() const {
        if (mRefs != nullptr) {
            mRefs->incWeak(this);
        }
    }

    void forget() {
        mPointer = nullptr;
        mRefs = nullptr;
    }

    /// The way to a virtual base stands in the object itself, which may be gone: it is asked only
    /// while it is held. Watching an object that is gone as its base gives an empty pointer.
    template <typename U>
    void convert(const wp<U>& other) {
        if constexpr (canCastDown<U>(0)) {
            mPointer = other.mPointer;
            mRefs = other.mRefs;
            hold();
        } else {
            const sp<U> alive = other.promote();
            watch(alive.get());
        }
    }

    /// A base that can be cast down again is not a virtual one.
    template <typename U>
    static constexpr auto canCastDown(int)
        -> decltype(static_cast<U*>(static_cast<T*>(nullptr)), true) {
        return true;
    }
    template <typename U>
    static constexpr bool canCastDown(...) {
        return false;
    }

    void take(wp<T>&& other) {
        std::swap(mPointer, other.mPointer);
        std::swap(mRefs, other.mRefs);
        const wp<T> old(std::move(other));
    }

    T* mPointer = nullptr;
    weakref_type* mRefs = nullptr;
};

/// Two weak pointers are equal when they watch the same object, not merely the same address.
template <typename T, typename U>
bool operator==(const wp<T>& a, const wp<U>& b) {
    return a.get_refs() == b.get_refs();
}
template <typename T, typename U>
bool operator!=(const wp<T>& a, const wp<U>& b) {
    return !(a == b);
}
template <typename T, typename U>
bool operator<(const wp<T>& a, const wp<U>& b) {
    return std::less<const void*>()(a.get_refs(), b.get_refs());
}
template <typename T>
bool operator==(const wp<T>& a, std::nullptr_t) {
    return a.get_refs() == nullptr;
}
template <typename T>
bool operator!=(const wp<T>& a, std::nullptr_t) {
    return a.get_refs() != nullptr;
}

}  // namespace android

#endif
