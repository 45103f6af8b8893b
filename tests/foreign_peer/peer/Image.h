// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_PEER_IMAGE_H
#define VOXTREL_TESTS_FOREIGN_PEER_PEER_IMAGE_H

#include <linux/android/binder.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace foreign {

/// The bytes of a transaction, and where in them its flat objects stand.
struct Image {
    std::vector<uint8_t> bytes;
    std::vector<binder_size_t> offsets;

    void int32(int32_t value);
    void float32(float value);
    void zeros(size_t count) { bytes.resize(bytes.size() + count); }
    /// With its terminator.
    void text(const std::string& value);
    /// Length in units, the units, one of zero; `value` is ASCII.
    void text16(const std::string& value);
    /// A node of this process.
    void node(uint64_t number);
    void handle(uint32_t number);
    /// Of an object of this process, without a count that keeps it.
    void weakNode(uint64_t number);
    void descriptor(uint32_t number);
    /// A flat object that is none: the driver is told nothing of it.
    void noObject();

    bool hasObjectAt(size_t offset) const;
    flat_binder_object objectAt(size_t offset) const;

private:
    void raw(const void* value, size_t size);
    void object(uint32_t type, uint64_t value);
    void known(uint32_t type, uint64_t value);
};

/// Reads an image from its beginning. Nothing: it ends before, or has something else there.
class ImageReader {
public:
    explicit ImageReader(const Image& image) : mImage(image) {}

    std::optional<int32_t> int32();
    std::optional<float> float32();
    std::optional<std::string> text();
    std::optional<std::string> text16();
    /// What is no object has the type 0.
    std::optional<flat_binder_object> object();

    bool isAtObject() const { return mImage.hasObjectAt(mPosition); }
    size_t left() const { return mImage.bytes.size() - mPosition; }

private:
    const uint8_t* take(size_t size);

    const Image& mImage;
    size_t mPosition = 0;
};

}  // namespace foreign

#endif
