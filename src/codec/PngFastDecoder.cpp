#include "PngFastDecoder.h"

#include "PixelConversion.h"
#include "PngBytes.h"
#include "PngDecoder.h"

#include <libdeflate.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace tosvar::PngFastDecoder {

namespace {

constexpr std::uint8_t signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

Error failure(const std::string& message) { return Error{"PNG decode: " + message}; }

struct Header {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int channels = 0; // 3 or 4
};

inline std::uint8_t paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return static_cast<std::uint8_t>(a);
    if (pb <= pc) return static_cast<std::uint8_t>(b);
    return static_cast<std::uint8_t>(c);
}

// Reverses one row's filter in place. `previous` is the unfiltered row above,
// or null for the first row (which then reads as zeros).
bool unfilter(std::uint8_t filter, std::uint8_t* row, const std::uint8_t* previous, std::size_t length, int bpp) {
    const std::size_t step = static_cast<std::size_t>(bpp);
    switch (filter) {
    case 0: return true;
    case 1:
        for (std::size_t i = step; i < length; ++i) row[i] = static_cast<std::uint8_t>(row[i] + row[i - step]);
        return true;
    case 2:
        if (previous)
            for (std::size_t i = 0; i < length; ++i) row[i] = static_cast<std::uint8_t>(row[i] + previous[i]);
        return true;
    case 3:
        for (std::size_t i = 0; i < length; ++i) {
            const int left = i >= step ? row[i - step] : 0;
            const int up = previous ? previous[i] : 0;
            row[i] = static_cast<std::uint8_t>(row[i] + ((left + up) >> 1));
        }
        return true;
    case 4:
        for (std::size_t i = 0; i < length; ++i) {
            const int left = i >= step ? row[i - step] : 0;
            const int up = previous ? previous[i] : 0;
            const int upLeft = previous && i >= step ? previous[i - step] : 0;
            row[i] = static_cast<std::uint8_t>(row[i] + paeth(left, up, upLeft));
        }
        return true;
    default: return false;
    }
}

} // namespace

std::optional<Expected<ImageBuffer>> decode(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 8 || std::memcmp(bytes.data(), signature, 8) != 0) return std::nullopt;

    Header header;
    std::vector<std::uint8_t> compressed;
    bool sawEnd = false;
    std::size_t offset = 8;
    while (!sawEnd) {
        if (bytes.size() - offset < 12) return failure("data truncated at byte " + std::to_string(bytes.size()));
        const std::uint32_t length = bigEndian32(bytes.data() + offset);
        const std::uint8_t* type = bytes.data() + offset + 4;
        if (length > bytes.size() - offset - 12)
            return failure("data truncated at byte " + std::to_string(bytes.size()));
        const std::uint8_t* data = type + 4;
        const std::uint32_t stored = bigEndian32(data + length);
        if (libdeflate_crc32(0, type, length + 4u) != stored)
            return failure(std::string(reinterpret_cast<const char*>(type), 4) + ": CRC error");

        if (std::memcmp(type, "IHDR", 4) == 0) {
            if (length != 13) return failure("IHDR has the wrong length");
            header.width = bigEndian32(data);
            header.height = bigEndian32(data + 4);
            const std::uint8_t depth = data[8], colour = data[9], interlace = data[12];
            if (depth != 8 || (colour != 2 && colour != 6) || interlace != 0 || data[10] != 0 || data[11] != 0)
                return std::nullopt;
            header.channels = colour == 6 ? 4 : 3;
        } else if (std::memcmp(type, "IDAT", 4) == 0) {
            compressed.insert(compressed.end(), data, data + length);
        } else if (std::memcmp(type, "IEND", 4) == 0) {
            sawEnd = true;
        } else if (std::memcmp(type, "tRNS", 4) == 0) {
            return std::nullopt; // a colour key: the general decoder expands it
        } else if (!(type[0] & 0x20)) {
            if (std::memcmp(type, "PLTE", 4) != 0) return std::nullopt; // an unknown critical chunk
        }
        if (header.channels == 0 && !sawEnd && std::memcmp(type, "IHDR", 4) != 0) return failure("IHDR missing");
        offset += 12u + length;
    }
    if (header.channels == 0) return failure("IHDR missing");

    const std::uint64_t pixelBytes = std::uint64_t(header.width) * header.height * 4;
    if (header.width == 0 || header.height == 0 || header.width > PngDecoder::maxSide ||
        header.height > PngDecoder::maxSide || pixelBytes > PngDecoder::maxPixelBytes)
        return failure(std::to_string(header.width) + "x" + std::to_string(header.height) +
                       " is larger than this program opens");

    const std::size_t rowBytes = std::size_t(header.width) * static_cast<std::size_t>(header.channels);
    const std::size_t rawSize = (rowBytes + 1) * header.height;
    PixelMemory raw = allocatePixelMemory(rawSize, PixelMemoryFill::uninitialized);
    std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> inflater(
        libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    if (!inflater) return failure("out of memory");
    std::size_t produced = 0;
    const libdeflate_result result = libdeflate_zlib_decompress(inflater.get(), compressed.data(), compressed.size(),
                                                                raw.get(), rawSize, &produced);
    if (result != LIBDEFLATE_SUCCESS || produced != rawSize) return failure("corrupt image data");

    const int width = static_cast<int>(header.width);
    MutableImage image(width, static_cast<int>(header.height), PixelOrder::rgba, PixelMemoryFill::uninitialized);
    const std::uint8_t* previous = nullptr;
    for (std::uint32_t y = 0; y < header.height; ++y) {
        std::uint8_t* line = raw.get() + y * (rowBytes + 1);
        std::uint8_t* pixels = line + 1;
        if (!unfilter(line[0], pixels, previous, rowBytes, header.channels))
            return failure("unknown row filter " + std::to_string(line[0]) + " in row " + std::to_string(y));
        std::uint8_t* out = image.row(static_cast<int>(y));
        if (header.channels == 4) {
            std::memcpy(out, pixels, rowBytes);
            PixelConversion::premultiplyRgba(out, width);
        } else {
            PixelConversion::rgbToOpaqueRgba(pixels, width, out);
        }
        previous = pixels;
    }
    return Expected<ImageBuffer>(std::move(image).freeze());
}

} // namespace tosvar::PngFastDecoder
