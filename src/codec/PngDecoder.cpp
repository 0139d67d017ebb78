#include "PngDecoder.h"

#include "FileContents.h"
#include "PixelConversion.h"
#include "PngBytes.h"
#include "PngFastDecoder.h"

#include <libdeflate.h>
#include <png.h>

#include <csetjmp>
#include <cstring>
#include <string>
#include <vector>

namespace tosvar::PngDecoder {

namespace {

struct ReadState {
    std::span<const std::uint8_t> bytes;
    std::size_t offset = 0;
    char message[256] = {};
};

void onError(png_structp png, png_const_charp message) {
    auto* state = static_cast<ReadState*>(png_get_error_ptr(png));
    std::snprintf(state->message, sizeof state->message, "%s", message ? message : "unknown libpng error");
    std::longjmp(png_jmpbuf(png), 1);
}

void onWarning(png_structp, png_const_charp) {}

void onRead(png_structp png, png_bytep out, png_size_t length) {
    auto* state = static_cast<ReadState*>(png_get_io_ptr(png));
    if (state->bytes.size() - state->offset < length) {
        std::snprintf(state->message, sizeof state->message, "data truncated at byte %zu of %zu",
                      state->bytes.size(), state->offset + length);
        std::longjmp(png_jmpbuf(png), 1);
    }
    std::memcpy(out, state->bytes.data() + state->offset, length);
    state->offset += length;
}

// Owns the libpng read handles for one decode.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) {
        state_.bytes = bytes;
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state_, onError, onWarning);
        if (png_) info_ = png_create_info_struct(png_);
    }
    ~Reader() {
        if (png_) png_destroy_read_struct(&png_, info_ ? &info_ : nullptr, nullptr);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool valid() const { return png_ && info_; }
    png_structp png() const { return png_; }
    png_infop info() const { return info_; }
    Error error(const char* fallback) const {
        return Error{std::string("PNG decode: ") + (state_.message[0] ? state_.message : fallback)};
    }

    // Reads the header and sets the transforms that turn any PNG into 8-bit
    // straight RGBA rows. Returns false after a libpng error.
    bool readInfo(png_uint_32& width, png_uint_32& height, bool& hasAlpha) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_read_fn(png_, &state_, onRead);
        png_set_user_limits(png_, maxSide, maxSide);
        png_read_info(png_, info_);
        width = png_get_image_width(png_, info_);
        height = png_get_image_height(png_, info_);
        const int colorType = png_get_color_type(png_, info_);
        const int depth = png_get_bit_depth(png_, info_);
        hasAlpha = (colorType & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        if (colorType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png_);
        if (colorType == PNG_COLOR_TYPE_GRAY && depth < 8) png_set_expand_gray_1_2_4_to_8(png_);
        if (png_get_valid(png_, info_, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png_);
        if (depth == 16) png_set_strip_16(png_);
        if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_gray_to_rgb(png_);
        png_set_filler(png_, 0xff, PNG_FILLER_AFTER);
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return true;
    }

    bool readImage(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_image(png_, rows);
        png_read_end(png_, nullptr);
        return true;
    }

private:
    ReadState state_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

Expected<Header> checkedHeader(Reader& reader, bool& hasAlpha) {
    if (!reader.valid()) return Error{"PNG decode: out of memory"};
    png_uint_32 width = 0, height = 0;
    if (!reader.readInfo(width, height, hasAlpha)) return reader.error("unreadable header");
    const std::uint64_t bytes = std::uint64_t(width) * height * 4;
    if (width == 0 || height == 0 || bytes > maxPixelBytes)
        return Error{"PNG decode: " + std::to_string(width) + "x" + std::to_string(height) +
                     " is larger than this program opens"};
    return Header{static_cast<int>(width), static_cast<int>(height)};
}

} // namespace

Expected<Header> readHeader(std::span<const std::uint8_t> bytes) {
    // Signature, then the IHDR chunk: length 13, type, width, height, ..., CRC.
    if (bytes.size() < 8 || png_sig_cmp(bytes.data(), 0, 8) != 0) return Error{"PNG decode: not a PNG file"};
    if (bytes.size() < 33) return Error{"PNG decode: data truncated at byte " + std::to_string(bytes.size())};
    auto be32 = [&](std::size_t at) { return bigEndian32(bytes.data() + at); };
    if (be32(8) != 13 || std::memcmp(bytes.data() + 12, "IHDR", 4) != 0) return Error{"PNG decode: IHDR missing"};
    if (libdeflate_crc32(0, bytes.data() + 12, 17) != be32(29)) return Error{"PNG decode: IHDR: CRC error"};
    const std::uint32_t width = be32(16), height = be32(20);
    if (width == 0 || height == 0 || width > maxSide || height > maxSide)
        return Error{"PNG decode: " + std::to_string(width) + "x" + std::to_string(height) + " is not a valid size"};
    return Header{static_cast<int>(width), static_cast<int>(height)};
}

Expected<ImageBuffer> decode(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 8 || png_sig_cmp(bytes.data(), 0, 8) != 0) return Error{"PNG decode: not a PNG file"};
    if (auto fast = PngFastDecoder::decode(bytes)) return std::move(*fast);
    Reader reader(bytes);
    bool hasAlpha = false;
    Expected<Header> header = checkedHeader(reader, hasAlpha);
    if (!header) return header.error();

    MutableImage image(header->width, header->height, PixelOrder::rgba, PixelMemoryFill::uninitialized);
    std::vector<png_bytep> rows(static_cast<std::size_t>(header->height));
    for (int y = 0; y < header->height; ++y) rows[static_cast<std::size_t>(y)] = image.row(y);
    if (!reader.readImage(rows.data())) return reader.error("corrupt image data");
    if (hasAlpha) {
        for (int y = 0; y < header->height; ++y) PixelConversion::premultiplyRgba(image.row(y), header->width);
    }
    return std::move(image).freeze();
}

Expected<ImageBuffer> decodeFile(const std::filesystem::path& path) {
    Expected<std::vector<std::uint8_t>> bytes = readFileBytes(path);
    if (!bytes) return Error{"PNG decode: " + bytes.error().message};
    Expected<ImageBuffer> image = decode(*bytes);
    if (!image) return Error{image.error().message + " (" + path.string() + ")"};
    return image;
}

} // namespace tosvar::PngDecoder
