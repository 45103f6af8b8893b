// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_STRONGPOINTER_H
#define VOXTREL_UTILS_STRONGPOINTER_H

#include <cstddef>
#include <functional>
#include <utility>

namespace android {

/// Holds an object (`incStrong`/`decStrong`) for as long as the pointer lives.
///
/// Offers only what every age of the public API offers: no conversion to bool and no maker
/// function, so that what compiles here compiles on a device. One pointer may be used by one
/// thread at a time; the object that it holds may be held from any number of threads.
template <typename T>
class sp {
public:
    sp() = default;
    sp(T* object) : mPointer(object) { hold(); }  // NOLINT(google-explicit-constructor)
    sp(const sp<T>& other) : sp(other.mPointer) {}
    sp(sp<T>&& other) noexcept : mPointer(other.release()) {}
    template <typename U>
    sp(U* object) : sp(static_cast<T*>(object)) {}  // NOLINT(google-explicit-constructor)
    template <typename U>
    sp(const sp<U>& other)  // NOLINT(google-explicit-constructor)
        : sp(static_cast<T*>(other.get())) {}
    template <typename U>
    sp(sp<U>&& other)  // NOLINT(google-explicit-constructor)
        : mPointer(other.release()) {}

    ~sp() {
        if (mPointer != nullptr) {
            mPointer->decStrong(this);
        }
    }

    // A copy is made before anything is let go.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    sp& operator=(const sp<T>& other) {
        take(sp<T>(other));
        return *this;
    }
    sp& operator=(sp<T>&& other) noexcept {
        take(std::move(other));
        return *this;
    }
    sp& operator=(T* object) {
        take(sp<T>(object));
        return *this;
    }
    template <typename U>
    sp& operator=(const sp<U>& other) {
        take(sp<T>(other));
        return *this;
    }
    template <typename U>
    sp& operator=(sp<U>&& other) {
        take(sp<T>(std::move(other)));
        return *this;
    }
    template <typename U>
    sp& operator=(U* object) {
        take(sp<T>(object));
        return *this;
    }

    /// Lets go of the object.
    void clear() { take(sp<T>()); }

    T& operator*() const { return *mPointer; }
    T* operator->() const { return mPointer; }
    T* get() const { return mPointer; }

private:
    template <typename U>
    friend class sp;
    template <typename U>
    friend class wp;

    void hold() const {
        if (mPointer != nullptr) {
            mPointer->incStrong(this);
        }
    }

    T* release() {
        T* object = mPointer;
        mPointer = nullptr;
        return object;
    }

    /// The old object is let go last, when this pointer already shows the new one: its destructor
    /// may look at this pointer.
    void take(sp<T>&& other) {
        T* taken = other.release();
        T* old = mPointer;
        mPointer = taken;
        if (old != nullptr) {
            old->decStrong(this);
        }
    }

    /// For a count that is already ours.
    static sp<T> adopt(T* object) {
        sp<T> pointer;
        pointer.mPointer = object;
        return pointer;
    }

    T* mPointer = nullptr;
};

template <typename T, typename U>
bool operator==(const sp<T>& a, const sp<U>& b) {
    return a.get() == b.get();
}
template <typename T, typename U>
bool operator!=(const sp<T>& a, const sp<U>& b) {
    return a.get() != b.get();
}
template <typename T, typename U>
bool operator<(const sp<T>& a, const sp<U>& b) {
    return std::less<const void*>()(a.get(), b.get());
}
template <typename T, typename U>
bool operator==(const sp<T>& a, const U* b) {
    return a.get() == b;
}
template <typename T, typename U>
bool operator!=(const sp<T>& a, const U* b) {
    return a.get() != b;
}
template <typename T>
bool operator==(const sp<T>& a, std::nullptr_t) {
    return a.get() == nullptr;
}
template <typename T>
bool operator!=(const sp<T>& a, std::nullptr_t) {
    return a.get() != nullptr;
}
template <typename T>
bool operator==(std::nullptr_t, const sp<T>& a) {
    return a.get() == nullptr;
}
template <typename T>
bool operator!=(std::nullptr_t, const sp<T>& a) {
    return a.get() != nullptr;
}

}  // namespace android

#endif
