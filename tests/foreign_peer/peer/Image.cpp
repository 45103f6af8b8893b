// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/peer/Image.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace foreign {

namespace {

constexpr uint32_t kObjectFlags = 0x7F | FLAT_BINDER_FLAG_ACCEPTS_FDS;

size_t padded(size_t size) {
    return (size + 3) & ~size_t{3};
}

}  // namespace

void Image::raw(const void* value, size_t size) {
    const auto* from = static_cast<const uint8_t*>(value);
    bytes.insert(bytes.end(), from, from + size);
    bytes.resize(padded(bytes.size()));
}

void Image::int32(int32_t value) {
    raw(&value, sizeof(value));
}

void Image::float32(float value) {
    raw(&value, sizeof(value));
}

void Image::text(const std::string& value) {
    raw(value.c_str(), value.size() + 1);
}

void Image::text16(const std::string& value) {
    std::u16string units(value.begin(), value.end());
    int32(static_cast<int32_t>(units.size()));
    raw(units.c_str(), (units.size() + 1) * sizeof(char16_t));
}

void Image::object(uint32_t type, uint64_t value) {
    flat_binder_object one = {};
    one.hdr.type = type;
    one.flags = kObjectFlags;
    one.binder = value;
    raw(&one, sizeof(one));
}

void Image::known(uint32_t type, uint64_t value) {
    offsets.push_back(bytes.size());
    object(type, value);
}

void Image::node(uint64_t number) {
    known(BINDER_TYPE_BINDER, number);
}

void Image::handle(uint32_t number) {
    known(BINDER_TYPE_HANDLE, number);
}

void Image::weakNode(uint64_t number) {
    known(BINDER_TYPE_WEAK_BINDER, number);
}

void Image::descriptor(uint32_t number) {
    known(BINDER_TYPE_FD, number);
}

void Image::noObject() {
    object(BINDER_TYPE_BINDER, 0);
}

bool Image::hasObjectAt(size_t offset) const {
    for (const binder_size_t one : offsets) {
        if (one == offset) {
            return true;
        }
    }
    return false;
}

flat_binder_object Image::objectAt(size_t offset) const {
    flat_binder_object one = {};
    if (hasObjectAt(offset) && offset + sizeof(one) <= bytes.size()) {
        std::memcpy(&one, bytes.data() + offset, sizeof(one));
    }
    return one;
}

const uint8_t* ImageReader::take(size_t size) {
    if (size > left() || padded(size) > left()) {
        return nullptr;
    }
    const uint8_t* at = mImage.bytes.data() + mPosition;
    mPosition += padded(size);
    return at;
}

std::optional<int32_t> ImageReader::int32() {
    int32_t value = 0;
    const uint8_t* at = take(sizeof(value));
    if (at == nullptr) {
        return {};
    }
    std::memcpy(&value, at, sizeof(value));
    return value;
}

std::optional<float> ImageReader::float32() {
    float value = 0;
    const uint8_t* at = take(sizeof(value));
    if (at == nullptr) {
        return {};
    }
    std::memcpy(&value, at, sizeof(value));
    return value;
}

std::optional<std::string> ImageReader::text() {
    const auto begin = mImage.bytes.begin() + static_cast<ptrdiff_t>(mPosition);
    const auto end = std::find(begin, mImage.bytes.end(), 0);
    if (end == mImage.bytes.end()) {
        return {};
    }
    const std::string value(begin, end);
    take(value.size() + 1);
    return value;
}

std::optional<std::string> ImageReader::text16() {
    const size_t start = mPosition;
    const std::optional<int32_t> length = int32();
    const size_t units = length.has_value() && *length >= 0 ? static_cast<size_t>(*length) : left();
    const uint8_t* at = units < left() ? take((units + 1) * sizeof(char16_t)) : nullptr;
    if (at == nullptr) {
        mPosition = start;
        return {};
    }
    std::string value;
    for (size_t i = 0; i < units; ++i) {
        value.push_back(static_cast<char>(at[i * sizeof(char16_t)]));
    }
    return value;
}

std::optional<flat_binder_object> ImageReader::object() {
    const size_t start = mPosition;
    if (take(sizeof(flat_binder_object)) == nullptr) {
        return {};
    }
    return mImage.objectAt(start);
}

}  // namespace foreign
