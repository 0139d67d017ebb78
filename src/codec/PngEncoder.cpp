#include "PngEncoder.h"

#include "AtomicFile.h"

#include "PixelConversion.h"
#include "PngWholeEncoder.h"

#include <png.h>

#include <csetjmp>
#include <string>

namespace tosvar {

struct PngEncoder::State {
    PngByteSink sink;
    int width = 0;
    int height = 0;
    bool opaque = true;
    int rowsWritten = 0;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::vector<std::uint8_t> rowBuffer;
    std::string errorMessage;
    bool failed = false;

    ~State() {
        if (png) png_destroy_write_struct(&png, info ? &info : nullptr);
    }

    Error fail(const std::string& message) {
        failed = true;
        if (errorMessage.empty()) errorMessage = message;
        return Error{"PNG encode: " + errorMessage};
    }
};

namespace {

void onError(png_structp png, png_const_charp message) {
    auto* state = static_cast<PngEncoder::State*>(png_get_error_ptr(png));
    state->errorMessage = message ? message : "unknown libpng error";
    std::longjmp(png_jmpbuf(png), 1);
}

void onWarning(png_structp, png_const_charp) {}

void onWrite(png_structp png, png_bytep data, png_size_t length) {
    auto* state = static_cast<PngEncoder::State*>(png_get_io_ptr(png));
    if (!state->sink(data, length)) png_error(png, "the output refused the bytes");
}

void onFlush(png_structp) {}

// Calls into libpng that may longjmp back here. Nothing with a destructor may
// live on the stack between this frame and libpng.
template <typename Body>
bool protectedCall(png_structp png, Body&& body) {
    if (setjmp(png_jmpbuf(png))) return false;
    body();
    return true;
}

} // namespace

PngEncoder::PngEncoder(PngByteSink sink, int width, int height, bool opaque, PngEncodeOptions options)
    : state_(std::make_unique<State>()) {
    State& s = *state_;
    s.sink = std::move(sink);
    s.width = width;
    s.height = height;
    s.opaque = opaque;
    if (width <= 0 || height <= 0) {
        s.fail("cannot write a " + std::to_string(width) + "x" + std::to_string(height) + " image");
        return;
    }
    s.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &s, onError, onWarning);
    if (!s.png || !(s.info = png_create_info_struct(s.png))) {
        s.fail("out of memory");
        return;
    }
    s.rowBuffer.resize(static_cast<std::size_t>(width) * (opaque ? 3 : 4));
    const int level = options.compressionLevel < 0 ? 0 : options.compressionLevel > 9 ? 9 : options.compressionLevel;
    const bool ok = protectedCall(s.png, [&s, level] {
        png_set_write_fn(s.png, &s, onWrite, onFlush);
        png_set_IHDR(s.png, s.info, static_cast<png_uint_32>(s.width), static_cast<png_uint_32>(s.height), 8,
                     s.opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(s.png, level);
        png_set_compression_mem_level(s.png, 9);
        // Sub and Up catch the horizontal runs and repeated rows of screen content;
        // trying all five filters per row costs more than it saves at low levels.
        png_set_filter(s.png, PNG_FILTER_TYPE_BASE, level == 0 ? PNG_FILTER_NONE : PNG_FILTER_SUB | PNG_FILTER_UP);
        png_write_info(s.png, s.info);
    });
    if (!ok) s.fail(s.errorMessage);
}

PngEncoder::~PngEncoder() = default;

std::optional<Error> PngEncoder::writeRows(const ImageBuffer& band) {
    State& s = *state_;
    if (s.failed) return Error{"PNG encode: " + s.errorMessage};
    if (band.width() != s.width)
        return s.fail("band is " + std::to_string(band.width()) + " wide, image is " + std::to_string(s.width));
    if (s.rowsWritten + band.height() > s.height)
        return s.fail("more rows than the " + std::to_string(s.height) + " announced");
    for (int y = 0; y < band.height(); ++y) {
        if (s.opaque) {
            PixelConversion::toRgb(band.row(y), band.order(), s.width, s.rowBuffer.data());
        } else {
            PixelConversion::toStraightRgba(band.row(y), band.order(), s.width, s.rowBuffer.data());
        }
        png_bytep row = s.rowBuffer.data();
        if (!protectedCall(s.png, [&s, row] { png_write_row(s.png, row); })) return s.fail(s.errorMessage);
        ++s.rowsWritten;
    }
    return std::nullopt;
}

std::optional<Error> PngEncoder::finish() {
    State& s = *state_;
    if (s.failed) return Error{"PNG encode: " + s.errorMessage};
    if (s.rowsWritten != s.height)
        return s.fail("only " + std::to_string(s.rowsWritten) + " of " + std::to_string(s.height) + " rows written");
    if (!protectedCall(s.png, [&s] { png_write_end(s.png, nullptr); })) return s.fail(s.errorMessage);
    return std::nullopt;
}

Expected<std::vector<std::uint8_t>> PngEncoder::encode(const ImageBuffer& image, PngEncodeOptions options) {
    return PngWholeEncoder::encode(image, options.compressionLevel);
}

std::optional<Error> PngEncoder::writeFile(const ImageBuffer& image, const std::filesystem::path& path,
                                           PngEncodeOptions options) {
    Expected<std::vector<std::uint8_t>> png = encode(image, options);
    if (!png) return png.error();
    if (auto error = AtomicFile::write(path, *png)) return Error{"PNG encode: " + error->message};
    return std::nullopt;
}

} // namespace tosvar
