// The stitcher's document as images: the pieces top to bottom, a scaled
// composite for previews, the full image, and a PNG streamed band by band.
#include "ScrollStitcher.h"

#include "PngEncoder.h"
#include "ScrollTranspose.h"
#include "StitchRowSource.h"

#include <algorithm>
#include <cstring>

namespace tosvar {

namespace {

// Nearest-neighbour resampling: previews want speed, not smoothness.
ImageBuffer resampled(const ImageBuffer& image, int width, int height) {
    MutableImage out(width, height, image.order(), PixelMemoryFill::uninitialized);
    std::vector<int> columns(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x) columns[x] = static_cast<int>((x + 0.5) * image.width() / width);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* source = image.row(static_cast<int>((y + 0.5) * image.height() / height));
        std::uint8_t* target = out.row(y);
        for (int x = 0; x < width; ++x) std::memcpy(target + 4 * x, source + 4 * columns[x], 4);
    }
    return std::move(out).freeze();
}

std::vector<ImageBuffer> imagesOf(const std::vector<ScrollPiece>& pieces) {
    std::vector<ImageBuffer> images;
    for (const ScrollPiece& piece : pieces) images.push_back(piece.image);
    return images;
}

} // namespace

std::vector<ScrollPiece> ScrollStitcher::pieces(bool includeTail) const {
    if (strips.empty() || frameWidth < 1) return {};
    const ImageBuffer& first = strips.front();
    const int firstFrame = stripSources.front().frame;
    const int cut = std::max(seeded ? firstBottom : staticBottom, 0);
    const int headRows = first.height() - cut;
    if (headRows < 1) return {};

    std::vector<ScrollPiece> out;
    auto headRowsFrom = [&](int from, int to) {
        if (to > from) out.push_back({first.cropped({0, from, first.width(), to - from}), {firstFrame, from}});
    };
    auto addPrepended = [&] {
        for (std::size_t i = 0; i < prepended.size(); ++i) out.push_back({prepended[i], prependedSources[i]});
    };
    if (firstTop >= 1 && !prepended.empty()) {
        // Rows added above the start go under the first frame's header.
        const int split = std::min(firstTop, headRows);
        headRowsFrom(0, split);
        addPrepended();
        headRowsFrom(split, headRows);
    } else {
        addPrepended();
        headRowsFrom(0, headRows);
    }
    for (std::size_t i = 1; i < strips.size(); ++i) out.push_back({strips[i], stripSources[i]});

    if (!includeTail) return out;
    const int H = frameHeight;
    const std::optional<ImageBuffer>& tailFrame = seeded ? deepestFrame : lastFrame;
    const int tailRows = seeded ? std::min(H, H - (capturedDocBottom - deepestViewDocTop)) : staticBottom;
    if (tailRows > 0 && tailFrame)
        out.push_back({tailFrame->cropped({0, H - tailRows, tailFrame->width(), tailRows}),
                       {seeded ? deepestFrameIndex : lastFrameIndex, H - tailRows}});
    return out;
}

std::optional<ImageBuffer> ScrollStitcher::composited(std::optional<int> maxWidth, std::optional<int> maxHeight,
                                                      bool includeTail) const {
    const std::vector<ScrollPiece> parts = pieces(includeTail);
    int total = 0;
    for (const ScrollPiece& piece : parts) total += piece.image.height();
    if (parts.empty() || frameWidth < 1 || total == 0) return std::nullopt;
    double scale = 1;
    if (maxWidth) scale = std::min(double(*maxWidth) / frameWidth, 1.0);
    if (maxHeight) scale = std::min(scale, double(*maxHeight) / total);
    const int outWidth = std::max(static_cast<int>(scale * frameWidth), 1);

    std::vector<ImageBuffer> images;
    int outHeight = 0;
    for (const ScrollPiece& piece : parts) {
        // Every piece keeps at least one row, so rounding never leaves a gap.
        const int rows = std::max(static_cast<int>(scale * piece.image.height()), 1);
        images.push_back(scale < 1 ? resampled(piece.image, outWidth, rows) : piece.image);
        outHeight += rows;
    }
    ImageBuffer image = StitchRowSource(std::move(images), outWidth, outHeight, false).renderBand(0);
    if (image.isEmpty()) return std::nullopt;
    return image;
}

std::optional<ImageBuffer> ScrollStitcher::finalize() const {
    std::optional<ImageBuffer> image = composited(std::nullopt, std::nullopt, true);
    if (!image || axis == ScrollAxis::vertical) return image;
    return ScrollTranspose::transposed(*image);
}

std::optional<Error> ScrollStitcher::encodePNG(int rowsPerBand,
                                               const std::function<bool(const std::uint8_t*, std::size_t)>& sink) const {
    const std::vector<ScrollPiece> parts = pieces(true);
    if (parts.empty() || frameWidth < 1) return Error{"the scrolling capture holds no image"};
    const StitchRowSource source(imagesOf(parts), frameWidth, rowsPerBand, axis == ScrollAxis::horizontal);
    if (source.height() < 1 || source.width() < 1) return Error{"the scrolling capture holds no image"};
    PngEncoder encoder(sink, source.width(), source.height(), source.isOpaque());
    for (int start = 0; start < source.height(); start += source.rowsPerBand())
        if (std::optional<Error> failed = encoder.writeRows(source.renderBand(start))) return failed;
    return encoder.finish();
}

std::optional<ImageBuffer> ScrollStitcher::docWindowImage(ScrollBand docRange) const {
    if (docRange.height <= 0 || frameWidth < 1 || strips.empty()) return std::nullopt;
    MutableImage out(frameWidth, docRange.height, strips.front().order());
    for (std::size_t i = 0; i < strips.size(); ++i) {
        const ImageBuffer strip = strips[i].converted(out.order());
        // The first frame's footer is not document: later strips hold those rows.
        const int rows = i == 0 ? std::min(strip.height(), frameHeight - std::max(firstBottom, 0)) : strip.height();
        const int top = stripDocStarts[i];
        const int first = std::max(docRange.start, top), last = std::min(docRange.end(), top + rows);
        const std::size_t bytes = 4 * static_cast<std::size_t>(std::min(strip.width(), frameWidth));
        for (int y = first; y < last; ++y) std::memcpy(out.row(y - docRange.start), strip.row(y - top), bytes);
    }
    return std::move(out).freeze();
}

std::optional<ImageBuffer> ScrollStitcher::detached(const ImageBuffer& image) {
    if (image.isEmpty()) return std::nullopt;
    MutableImage copy(image.width(), image.height(), image.order(), PixelMemoryFill::uninitialized);
    const std::size_t bytes = 4 * static_cast<std::size_t>(image.width());
    for (int y = 0; y < image.height(); ++y) std::memcpy(copy.row(y), image.row(y), bytes);
    return std::move(copy).freeze();
}

int ScrollStitcher::prependInsertRow() const {
    if (!seeded || strips.empty()) return 0;
    return std::min(std::max(strips.front().height() - std::max(firstBottom, 0), 0), firstTop);
}

} // namespace tosvar
