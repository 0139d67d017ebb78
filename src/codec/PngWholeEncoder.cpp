#include "PngWholeEncoder.h"

#include "PixelConversion.h"
#include "PixelMemory.h"

#include <libdeflate.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace tosvar::PngWholeEncoder {

namespace {

constexpr std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

void putBigEndian32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value >> 24));
    out.push_back(static_cast<std::uint8_t>(value >> 16));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

// Appends a chunk whose data already stands at the end of `out` after its
// 8-byte header placeholder, starting at `chunkStart`.
void closeChunk(std::vector<std::uint8_t>& out, std::size_t chunkStart) {
    const std::size_t dataLength = out.size() - chunkStart - 8;
    const std::uint8_t* typeAndData = out.data() + chunkStart + 4;
    const std::uint32_t crc = libdeflate_crc32(0, typeAndData, dataLength + 4);
    for (int i = 0; i < 4; ++i) out[chunkStart + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(dataLength >> (24 - 8 * i));
    putBigEndian32(out, crc);
}

std::size_t openChunk(std::vector<std::uint8_t>& out, const char type[4]) {
    const std::size_t start = out.size();
    out.insert(out.end(), 4, 0);
    out.insert(out.end(), type, type + 4);
    return start;
}

// Sum of the filtered bytes read as signed values: the usual estimate of how
// well a row will compress.
std::uint64_t cost(const std::uint8_t* filtered, std::size_t length) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < length; ++i) sum += static_cast<std::uint64_t>(std::abs(static_cast<std::int8_t>(filtered[i])));
    return sum;
}

} // namespace

Expected<std::vector<std::uint8_t>> encode(const ImageBuffer& image, int compressionLevel) {
    if (image.isEmpty()) return Error{"PNG encode: cannot write a " + std::to_string(image.width()) + "x" +
                                      std::to_string(image.height()) + " image"};
    const bool opaque = image.isOpaque();
    const int channels = opaque ? 3 : 4;
    const std::size_t rowBytes = static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(channels);
    const std::size_t filteredSize = (rowBytes + 1) * static_cast<std::size_t>(image.height());

    PixelMemory filtered = allocatePixelMemory(filteredSize, PixelMemoryFill::uninitialized);
    std::vector<std::uint8_t> previous(rowBytes, 0), current(rowBytes), sub(rowBytes), up(rowBytes);
    for (int y = 0; y < image.height(); ++y) {
        if (opaque) {
            PixelConversion::toRgb(image.row(y), image.order(), image.width(), current.data());
        } else {
            PixelConversion::toStraightRgba(image.row(y), image.order(), image.width(), current.data());
        }
        for (std::size_t i = 0; i < rowBytes; ++i) {
            sub[i] = static_cast<std::uint8_t>(current[i] - (i >= static_cast<std::size_t>(channels) ? current[i - static_cast<std::size_t>(channels)] : 0));
            up[i] = static_cast<std::uint8_t>(current[i] - previous[i]);
        }
        std::uint8_t* line = filtered.get() + static_cast<std::size_t>(y) * (rowBytes + 1);
        const bool useUp = y > 0 && cost(up.data(), rowBytes) < cost(sub.data(), rowBytes);
        line[0] = useUp ? 2 : 1;
        std::memcpy(line + 1, useUp ? up.data() : sub.data(), rowBytes);
        previous.swap(current);
    }

    const int level = compressionLevel < 0 ? 0 : compressionLevel > 12 ? 12 : compressionLevel;
    std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(level), &libdeflate_free_compressor);
    if (!compressor) return Error{"PNG encode: out of memory"};

    std::vector<std::uint8_t> out(signature, signature + 8);
    const std::size_t header = openChunk(out, "IHDR");
    putBigEndian32(out, static_cast<std::uint32_t>(image.width()));
    putBigEndian32(out, static_cast<std::uint32_t>(image.height()));
    out.insert(out.end(), {8, static_cast<std::uint8_t>(opaque ? 2 : 6), 0, 0, 0});
    closeChunk(out, header);

    // The bound is as large as the image; only the few compressed megabytes are copied out.
    const std::size_t bound = libdeflate_zlib_compress_bound(compressor.get(), filteredSize);
    PixelMemory compressed = allocatePixelMemory(bound, PixelMemoryFill::uninitialized);
    const std::size_t written =
        libdeflate_zlib_compress(compressor.get(), filtered.get(), filteredSize, compressed.get(), bound);
    if (written == 0) return Error{"PNG encode: compression failed"};
    const std::size_t data = openChunk(out, "IDAT");
    out.insert(out.end(), compressed.get(), compressed.get() + written);
    closeChunk(out, data);

    closeChunk(out, openChunk(out, "IEND"));
    return out;
}

} // namespace tosvar::PngWholeEncoder
