#pragma once

#include "Expected.h"
#include "ImageBuffer.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace tosvar::PngDecoder {

struct Header {
    int width = 0;
    int height = 0;
};

// Any PNG (palette, gray, 16-bit, interlaced, with or without alpha) becomes
// premultiplied RGBA. Corrupt or truncated bytes give an error that says what
// and where, never a partial image.
Expected<ImageBuffer> decode(std::span<const std::uint8_t> bytes);
Expected<ImageBuffer> decodeFile(const std::filesystem::path& path);
// Reads the size without decoding the pixels.
Expected<Header> readHeader(std::span<const std::uint8_t> bytes);

// Largest image we agree to allocate: 1 GiB of pixels, at most 1,000,000 on a side.
inline constexpr std::uint64_t maxPixelBytes = 1ull << 30;
inline constexpr std::uint32_t maxSide = 1'000'000;

} // namespace tosvar::PngDecoder
