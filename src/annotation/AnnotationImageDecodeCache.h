#pragma once

#include "AnnotationImage.h"
#include "Expected.h"
#include "ImageBuffer.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <unordered_map>

namespace tosvar {

// Decoded pictures of `image` elements by picture id, so drawing decodes each
// picture once. Any thread may call it. The lock guards only the map: a miss
// decodes outside it, so two threads may decode the same picture at once and
// the first to finish is kept. A full store (64 pictures) is emptied before
// the next one goes in. A picture that fails to decode is not remembered and
// reads as absent; the element is then left undrawn.
class AnnotationImageDecodeCache {
public:
    // Turns encoded bytes into pixels (the first frame, for formats with several).
    using Decoder = std::function<Expected<ImageBuffer>(std::span<const std::uint8_t>)>;

    static constexpr std::size_t capacity = 64;

    explicit AnnotationImageDecodeCache(Decoder decoder);

    // The store the product draws with, decoding with our PNG decoder.
    static AnnotationImageDecodeCache& shared();

    std::optional<ImageBuffer> image(const AnnotationImage& picture);
    std::size_t count() const;

private:
    const Decoder decode_;
    mutable std::mutex mutex_;
    std::unordered_map<Uuid, ImageBuffer> entries_;
};

} // namespace tosvar
