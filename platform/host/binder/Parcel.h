// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_PARCEL_H
#define VOXTREL_BINDER_PARCEL_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "binder/IBinder.h"

namespace android {

/// The values of one request or reply, one behind the other, each padded to 4 bytes, in native byte
/// order: the image is the same on a 32-bit and a 64-bit machine.
///
/// Reads past the end give 0 or null; the forms with an out-parameter give `NOT_ENOUGH_DATA` and
/// leave the parameter alone. Writes go to the current position and may overwrite. Small
/// contents stand in the object itself. Called on: one thread at a time; several may send a parcel
/// at once to other processes. Locks: none.
class Parcel {
public:
    Parcel();
    ~Parcel();
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    const uint8_t* data() const;
    size_t dataSize() const;
    size_t dataAvail() const;
    size_t dataPosition() const;
    size_t dataCapacity() const;
    status_t setDataSize(size_t size);
    void setDataPosition(size_t position) const;
    status_t setDataCapacity(size_t size);
    /// Contents become a copy of `length` bytes without any binder.
    status_t setData(const uint8_t* buffer, size_t length);
    /// Empty again, as constructed; binders are let go.
    void freeData();
    /// The first error of a write, until `freeData`.
    status_t errorCheck() const;
    void setError(status_t error);

    status_t write(const void* bytes, size_t length);
    /// Room for `length` bytes, padding zeroed; null when there is none.
    void* writeInplace(size_t length);
    status_t writeInt32(int32_t value);
    status_t writeUint32(uint32_t value);
    status_t writeInt64(int64_t value);
    status_t writeUint64(uint64_t value);
    status_t writeFloat(float value);
    status_t writeDouble(double value);
    status_t writeBool(bool value);
    /// The text and its NUL.
    status_t writeCString(const char* text);
    /// int32 number of units, the units, a NUL unit.
    status_t writeString16(const String16& text);
    /// 24 bytes: the driver's flat_binder_object, whose values a transport fills in on the way.
    status_t writeStrongBinder(const sp<IBinder>& binder);

    status_t read(void* out, size_t length) const;
    /// `length` bytes where they stand in the parcel; null when there are fewer.
    const void* readInplace(size_t length) const;
    int32_t readInt32() const;
    status_t readInt32(int32_t* out) const;
    uint32_t readUint32() const;
    status_t readUint32(uint32_t* out) const;
    int64_t readInt64() const;
    status_t readInt64(int64_t* out) const;
    uint64_t readUint64() const;
    status_t readUint64(uint64_t* out) const;
    float readFloat() const;
    status_t readFloat(float* out) const;
    double readDouble() const;
    status_t readDouble(double* out) const;
    bool readBool() const;
    status_t readBool(bool* out) const;
    /// Where the text stands in the parcel; null without a NUL in what is left.
    const char* readCString() const;
    String16 readString16() const;
    status_t readString16(String16* out) const;
    /// What `writeStrongBinder` wrote here. Bytes that were not written by it give null.
    sp<IBinder> readStrongBinder() const;
    /// `UNEXPECTED_NULL` for null.
    status_t readStrongBinder(sp<IBinder>* out) const;
    status_t readNullableStrongBinder(sp<IBinder>* out) const;

private:
    // The transport receives into a parcel, with a header in front, in one piece.
    friend class ParcelFrame;

    struct Object {
        size_t offset;
        sp<IBinder> binder;
    };

    static constexpr size_t kBinderSize = 24;
    static constexpr size_t kHeadroom = 32;
    static constexpr size_t kInlineCapacity = 1088;

    uint8_t* bytes() { return mBlock + kHeadroom; }
    status_t grow(size_t capacity);
    const Object* objectAt(size_t offset) const;
    void dropObjectsFrom(size_t begin, size_t end);
    template <typename T>
    status_t writeScalar(T value);
    template <typename T>
    status_t readScalar(T* out) const;
    template <typename T>
    T readScalar() const;

    // The headroom is for the header of a message that is received into the parcel.
    alignas(8) uint8_t mInline[kHeadroom + kInlineCapacity];
    uint8_t* mBlock = mInline;
    size_t mCapacity = kInlineCapacity;
    size_t mSize = 0;
    mutable size_t mPosition = 0;
    status_t mError = OK;
    std::vector<Object> mObjects;  // sorted by offset
};

}  // namespace android

#endif
