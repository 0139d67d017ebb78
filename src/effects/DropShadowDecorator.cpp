#include "DropShadowDecorator.h"

#include "GaussianBlur.h"
#include "PngDecoder.h"
#include "PngEncoder.h"

#include <algorithm>
#include <cmath>

namespace tosvar::DropShadowDecorator {

namespace {

// The blur of a shadow spreads over about twice its standard deviation on
// each side; a blur parameter names that spread, so sigma is half of it.
constexpr double sigmaPerBlur = 0.5;

// Premultiplied source-over of `image` onto `canvas` at (x, y), both RGBA.
void paint(MutableImage& canvas, const ImageBuffer& image, int x, int y) {
    for (int row = 0; row < image.height(); ++row) {
        const std::uint8_t* s = image.row(row);
        std::uint8_t* d = canvas.row(y + row) + 4 * x;
        for (int i = 0; i < 4 * image.width(); i += 4) {
            const unsigned keep = 255u - s[i + 3];
            if (keep == 0) {
                std::copy(s + i, s + i + 4, d + i);
                continue;
            }
            for (int c = 0; c < 4; ++c) d[i + c] = static_cast<std::uint8_t>(s[i + c] + (d[i + c] * keep + 127) / 255);
        }
    }
}

// Black at `alpha` (0...1 per pixel) over the canvas.
void darken(MutableImage& canvas, const std::vector<float>& alpha, double opacity) {
    const int width = canvas.width();
    for (int y = 0; y < canvas.height(); ++y) {
        std::uint8_t* d = canvas.row(y);
        const float* a = alpha.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        for (int x = 0; x < width; ++x) {
            const float shadow = std::clamp(a[x] * static_cast<float>(opacity), 0.0f, 1.0f);
            const float keep = 1.0f - shadow;
            std::uint8_t* p = d + 4 * x;
            p[0] = static_cast<std::uint8_t>(p[0] * keep + 0.5f);
            p[1] = static_cast<std::uint8_t>(p[1] * keep + 0.5f);
            p[2] = static_cast<std::uint8_t>(p[2] * keep + 0.5f);
            p[3] = static_cast<std::uint8_t>(shadow * 255.0f + p[3] * keep + 0.5f);
        }
    }
}

// Walks at most `limit` samples from the edge: true when a sample above 239
// comes after at least 4 samples in 17...239; samples of 16 or less are skipped.
bool gradientRun(const std::vector<std::uint8_t>& samples, std::size_t limit) {
    int ramp = 0;
    for (std::size_t i = 0; i < samples.size() && i < limit; ++i) {
        const std::uint8_t value = samples[i];
        if (value > 239) return ramp >= 4;
        if (value > 16) ++ramp;
    }
    return false;
}

} // namespace

Insets Style::insets() const {
    double reach = 0, drop = 0;
    for (const Layer& layer : layers) {
        reach = std::max(reach, 1.5 * layer.blurRadius);
        drop = std::max(drop, layer.offsetY);
    }
    return {std::max(reach - drop, 0.0), reach, reach + drop, reach};
}

std::optional<ImageBuffer> decorate(const ImageBuffer& source, double scale, const Style& style) {
    if (source.isEmpty()) return std::nullopt;
    const double s = std::max(scale, 1.0);
    const ImageBuffer image = source.converted(PixelOrder::rgba);
    const Insets points = style.insets();
    const int top = static_cast<int>(std::ceil(points.top * s));
    const int left = static_cast<int>(std::ceil(points.left * s));
    const int bottom = static_cast<int>(std::ceil(points.bottom * s));
    const int right = static_cast<int>(std::ceil(points.right * s));
    MutableImage canvas(image.width() + left + right, image.height() + top + bottom);
    const int width = canvas.width(), height = canvas.height();

    if (style.layers.empty()) paint(canvas, image, left, top);
    std::vector<float> alpha;
    for (const Layer& layer : style.layers) {
        // The image's alpha, moved down by the offset, blurred into a shadow.
        alpha.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0.0f);
        const int shift = static_cast<int>(std::lround(layer.offsetY * s));
        for (int y = 0; y < image.height(); ++y) {
            const int target = top + y + shift;
            if (target < 0 || target >= height) continue;
            const std::uint8_t* row = image.row(y);
            float* out = alpha.data() + static_cast<std::size_t>(target) * static_cast<std::size_t>(width) + left;
            for (int x = 0; x < image.width(); ++x) out[x] = row[4 * x + 3] / 255.0f;
        }
        GaussianBlur::blur(alpha, width, height, 1, sigmaPerBlur * layer.blurRadius * s, GaussianBlur::Edges::transparent);
        darken(canvas, alpha, layer.opacity);
        paint(canvas, image, left, top);
    }
    return std::move(canvas).freeze();
}

std::optional<std::vector<std::uint8_t>> decoratePNG(const std::vector<std::uint8_t>& png, double scale, const Style& style) {
    Expected<ImageBuffer> image = PngDecoder::decode(png);
    if (!image) return std::nullopt;
    const std::optional<ImageBuffer> decorated = decorate(*image, scale, style);
    if (!decorated) return std::nullopt;
    Expected<std::vector<std::uint8_t>> encoded = PngEncoder::encode(*decorated);
    if (!encoded) return std::nullopt;
    return std::move(encoded).value();
}

bool looksDecorated(const ImageBuffer& image, bool hasAlphaChannel) {
    const int width = image.width(), height = image.height();
    if (!hasAlphaChannel || width < 24 || height < 24) return false;
    const int a = channelOffsets(image.order()).a;
    auto alphaAt = [&](int x, int y) { return image.row(y)[4 * x + a]; };
    auto rowStrip = [&](int y) {
        std::vector<std::uint8_t> strip(static_cast<std::size_t>(width));
        for (int x = 0; x < width; ++x) strip[static_cast<std::size_t>(x)] = alphaAt(x, y);
        return strip;
    };
    auto columnStrip = [&](int x) {
        std::vector<std::uint8_t> strip(static_cast<std::size_t>(height));
        for (int y = 0; y < height; ++y) strip[static_cast<std::size_t>(y)] = alphaAt(x, y);
        return strip;
    };
    const std::vector<std::uint8_t> topRow = rowStrip(0), bottomRow = rowStrip(height - 1), middleRow = rowStrip(height / 2),
                                    middleColumn = columnStrip(width / 2);
    for (const auto* strip : {&topRow, &bottomRow, &middleRow, &middleColumn})
        if (strip->front() > 16 || strip->back() > 16) return false;

    const std::size_t limit = static_cast<std::size_t>(std::min(std::max(width, height) / 2, 400));
    const std::vector<std::uint8_t> fromBottom(middleColumn.rbegin(), middleColumn.rend());
    const std::vector<std::uint8_t> fromRight(middleRow.rbegin(), middleRow.rend());
    const int sides = int(gradientRun(fromBottom, limit)) + int(gradientRun(middleRow, limit)) + int(gradientRun(fromRight, limit));
    return sides >= 2;
}

} // namespace tosvar::DropShadowDecorator
