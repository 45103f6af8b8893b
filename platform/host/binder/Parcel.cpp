// SPDX-License-Identifier: Apache-2.0
#include "binder/Parcel.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace android {

namespace {

// Whole words, so that what fits also fits with its padding.
constexpr size_t kLargest =
    (static_cast<size_t>(std::numeric_limits<int32_t>::max()) - 64) & ~static_cast<size_t>(3);

// The driver's flat_binder_object, with the values that a device's runtime writes. A transport
// fills the handle in; null is an object at the address 0.
struct FlatBinder {
    uint32_t type;
    uint32_t flags;
    uint64_t value;
    uint64_t cookie;
};
constexpr uint32_t kObjectType = B_PACK_CHARS('s', 'b', '*', 0x85U);
constexpr uint32_t kHandleType = B_PACK_CHARS('s', 'h', '*', 0x85U);
constexpr uint32_t kFlags = 0x17F;  // any priority, takes descriptors
constexpr FlatBinder kNull{kObjectType, kFlags, 0, 0};
constexpr FlatBinder kToBeFilledIn{kHandleType, kFlags, 0, 0};

bool isNull(const FlatBinder& binder) {
    return (binder.type == kObjectType || binder.type == 0) && binder.value == 0 &&
           binder.cookie == 0;
}

constexpr size_t padded(size_t length) {
    return (length + 3) & ~static_cast<size_t>(3);
}

}  // namespace

// Not defaulted, so that a const parcel may be declared; its own room is written before it is read.
Parcel::Parcel() {}  // NOLINT(modernize-use-equals-default)

Parcel::~Parcel() {
    if (mBlock != mInline) {
        std::free(mBlock);
    }
}

const uint8_t* Parcel::data() const {
    return mBlock + kHeadroom;
}

size_t Parcel::dataSize() const {
    return mSize;
}

size_t Parcel::dataAvail() const {
    return mPosition < mSize ? mSize - mPosition : 0;
}

size_t Parcel::dataPosition() const {
    return mPosition;
}

size_t Parcel::dataCapacity() const {
    return mCapacity;
}

status_t Parcel::setDataSize(size_t size) {
    if (size > kLargest) {
        return BAD_VALUE;
    }
    if (size > mCapacity && grow(size) != OK) {
        return NO_MEMORY;
    }
    if (size > mSize) {
        std::memset(bytes() + mSize, 0, size - mSize);
    }
    dropObjectsFrom(size, kLargest);
    mSize = size;
    mPosition = std::min(mPosition, mSize);
    return OK;
}

void Parcel::setDataPosition(size_t position) const {
    mPosition = std::min(position, kLargest);
}

status_t Parcel::setDataCapacity(size_t size) {
    return size > mCapacity ? grow(size) : OK;
}

status_t Parcel::setData(const uint8_t* buffer, size_t length) {
    freeData();
    if (length > kLargest) {
        return BAD_VALUE;
    }
    if (length > mCapacity && grow(length) != OK) {
        return NO_MEMORY;
    }
    if (length != 0) {
        std::memcpy(bytes(), buffer, length);
    }
    mSize = length;
    return OK;
}

void Parcel::freeData() {
    mObjects.clear();
    if (mBlock != mInline) {
        std::free(mBlock);
    }
    mBlock = mInline;
    mCapacity = kInlineCapacity;
    mSize = 0;
    mPosition = 0;
    mError = OK;
}

status_t Parcel::errorCheck() const {
    return mError;
}

void Parcel::setError(status_t error) {
    mError = error;
}

status_t Parcel::grow(size_t capacity) {
    if (capacity > kLargest) {
        return BAD_VALUE;
    }
    auto* block = static_cast<uint8_t*>(
        std::realloc(mBlock == mInline ? nullptr : mBlock, kHeadroom + capacity));
    if (block == nullptr) {
        return NO_MEMORY;
    }
    if (mBlock == mInline) {
        std::memcpy(block + kHeadroom, mInline + kHeadroom, mSize);
    }
    mBlock = block;
    mCapacity = capacity;
    return OK;
}

const Parcel::Object* Parcel::objectAt(size_t offset) const {
    for (const Object& object : mObjects) {
        if (object.offset == offset) {
            return &object;
        }
    }
    return nullptr;
}

void Parcel::dropObjectsFrom(size_t begin, size_t end) {
    const auto touched = [begin, end](const Object& object) {
        return object.offset + kBinderSize > begin && object.offset < end;
    };
    mObjects.erase(std::remove_if(mObjects.begin(), mObjects.end(), touched), mObjects.end());
}

void* Parcel::writeInplace(size_t length) {
    if (mError != OK || length > kLargest || mPosition > kLargest - padded(length)) {
        mError = mError != OK ? mError : static_cast<status_t>(BAD_VALUE);
        return nullptr;
    }
    const size_t end = mPosition + padded(length);
    if (end > mCapacity) {
        mError = grow(std::min(std::max(end + end / 2, size_t{2 * kInlineCapacity}), kLargest));
        if (mError != OK) {
            return nullptr;
        }
    }
    if (mPosition > mSize) {
        std::memset(bytes() + mSize, 0, mPosition - mSize);
    }
    if (!mObjects.empty() && mPosition < mSize) {
        dropObjectsFrom(mPosition, end);
    }
    uint8_t* where = bytes() + mPosition;
    for (size_t pad = length; pad < padded(length); ++pad) {
        where[pad] = 0;
    }
    mPosition = end;
    mSize = std::max(mSize, end);
    return where;
}

status_t Parcel::write(const void* from, size_t length) {
    void* where = writeInplace(length);
    if (where == nullptr) {
        return mError;
    }
    if (length != 0) {
        std::memcpy(where, from, length);
    }
    return OK;
}

template <typename T>
status_t Parcel::writeScalar(T value) {
    static_assert(sizeof(T) % 4 == 0, "scalars need no padding");
    if (mError == OK && mPosition == mSize && sizeof(T) <= mCapacity - mSize) {
        // What nearly every write is: one more value at the end, where there is room.
        std::memcpy(bytes() + mSize, &value, sizeof(T));
        mSize += sizeof(T);
        mPosition = mSize;
        return OK;
    }
    void* where = writeInplace(sizeof(T));
    if (where == nullptr) {
        return mError;
    }
    std::memcpy(where, &value, sizeof(T));
    return OK;
}

status_t Parcel::writeInt32(int32_t value) {
    return writeScalar(value);
}

status_t Parcel::writeUint32(uint32_t value) {
    return writeScalar(value);
}

status_t Parcel::writeInt64(int64_t value) {
    return writeScalar(value);
}

status_t Parcel::writeUint64(uint64_t value) {
    return writeScalar(value);
}

status_t Parcel::writeFloat(float value) {
    return writeScalar(value);
}

status_t Parcel::writeDouble(double value) {
    return writeScalar(value);
}

status_t Parcel::writeBool(bool value) {
    return writeInt32(value ? 1 : 0);
}

status_t Parcel::writeCString(const char* text) {
    return write(text, std::strlen(text) + 1);
}

status_t Parcel::writeString16(const String16& text) {
    const status_t status = writeInt32(static_cast<int32_t>(text.size()));
    return status == OK ? write(text, (text.size() + 1) * sizeof(char16_t)) : status;
}

status_t Parcel::writeStrongBinder(const sp<IBinder>& binder) {
    const size_t offset = mPosition;
    auto* where = static_cast<uint8_t*>(writeInplace(kBinderSize));
    if (where == nullptr) {
        return mError;
    }
    const FlatBinder& image = binder != nullptr ? kToBeFilledIn : kNull;
    static_assert(sizeof(image) == kBinderSize, "the same on every machine");
    std::memcpy(where, &image, sizeof(image));
    if (binder != nullptr) {
        const auto behind =
            std::upper_bound(mObjects.begin(), mObjects.end(), offset,
                             [](size_t place, const Object& one) { return place < one.offset; });
        mObjects.insert(behind, {offset, binder});
    }
    return OK;
}

const void* Parcel::readInplace(size_t length) const {
    const size_t available = dataAvail();
    if (length > available || padded(length) > available) {
        return nullptr;
    }
    const uint8_t* where = data() + mPosition;
    mPosition += padded(length);
    return where;
}

status_t Parcel::read(void* out, size_t length) const {
    if (length > kLargest) {
        return BAD_VALUE;
    }
    const void* where = readInplace(length);
    if (where == nullptr) {
        return NOT_ENOUGH_DATA;
    }
    if (length != 0) {
        std::memcpy(out, where, length);
    }
    return OK;
}

template <typename T>
status_t Parcel::readScalar(T* out) const {
    const void* where = readInplace(sizeof(T));
    if (where == nullptr) {
        return NOT_ENOUGH_DATA;
    }
    std::memcpy(out, where, sizeof(T));
    return OK;
}

template <typename T>
T Parcel::readScalar() const {
    T value{};
    (void)readScalar(&value);  // past the end: 0
    return value;
}

int32_t Parcel::readInt32() const {
    return readScalar<int32_t>();
}

status_t Parcel::readInt32(int32_t* out) const {
    return readScalar(out);
}

uint32_t Parcel::readUint32() const {
    return readScalar<uint32_t>();
}

status_t Parcel::readUint32(uint32_t* out) const {
    return readScalar(out);
}

int64_t Parcel::readInt64() const {
    return readScalar<int64_t>();
}

status_t Parcel::readInt64(int64_t* out) const {
    return readScalar(out);
}

uint64_t Parcel::readUint64() const {
    return readScalar<uint64_t>();
}

status_t Parcel::readUint64(uint64_t* out) const {
    return readScalar(out);
}

float Parcel::readFloat() const {
    return readScalar<float>();
}

status_t Parcel::readFloat(float* out) const {
    return readScalar(out);
}

double Parcel::readDouble() const {
    return readScalar<double>();
}

status_t Parcel::readDouble(double* out) const {
    return readScalar(out);
}

bool Parcel::readBool() const {
    return readInt32() != 0;
}

status_t Parcel::readBool(bool* out) const {
    int32_t value = 0;
    const status_t status = readInt32(&value);
    if (status == OK) {
        *out = value != 0;
    }
    return status;
}

const char* Parcel::readCString() const {
    const size_t available = dataAvail();
    const auto* text = reinterpret_cast<const char*>(data() + mPosition);
    const void* end = available != 0 ? std::memchr(text, 0, available) : nullptr;
    if (end == nullptr) {
        return nullptr;
    }
    const auto length = static_cast<size_t>(static_cast<const char*>(end) - text) + 1;
    mPosition += std::min(padded(length), available);
    return text;
}

String16 Parcel::readString16() const {
    String16 text;
    (void)readString16(&text);  // past the end: empty
    return text;
}

status_t Parcel::readString16(String16* out) const {
    const size_t start = mPosition;
    int32_t length = 0;
    if (readInt32(&length) != OK) {
        return NOT_ENOUGH_DATA;
    }
    const auto units = static_cast<size_t>(length);
    const void* text =
        length >= 0 && units < dataAvail() ? readInplace((units + 1) * sizeof(char16_t)) : nullptr;
    if (text == nullptr) {
        mPosition = start;
        return length < 0 ? static_cast<status_t>(UNEXPECTED_NULL)
                          : static_cast<status_t>(NOT_ENOUGH_DATA);
    }
    *out = String16(static_cast<const char16_t*>(text), units);
    return OK;
}

sp<IBinder> Parcel::readStrongBinder() const {
    sp<IBinder> binder;
    (void)readNullableStrongBinder(&binder);  // past the end: null
    return binder;
}

status_t Parcel::readStrongBinder(sp<IBinder>* out) const {
    sp<IBinder> binder;
    const status_t status = readNullableStrongBinder(&binder);
    if (status != OK) {
        return status;
    }
    if (binder == nullptr) {
        return UNEXPECTED_NULL;
    }
    *out = binder;
    return OK;
}

status_t Parcel::readNullableStrongBinder(sp<IBinder>* out) const {
    const size_t offset = mPosition;
    const void* where = readInplace(kBinderSize);
    if (where == nullptr) {
        return NOT_ENOUGH_DATA;
    }
    FlatBinder image;
    std::memcpy(&image, where, sizeof(image));
    const Object* object = objectAt(offset);
    if (object == nullptr && !isNull(image)) {
        return BAD_TYPE;
    }
    *out = object != nullptr ? object->binder : nullptr;
    return OK;
}

}  // namespace android
