#include "ScrollGray.h"

#include "ScrollKernels.h"

#include <algorithm>
#include <cmath>

namespace tosvar::ScrollGray {

namespace {

struct Shape {
    int source = 0; // columns read from the image
    int target = 0; // columns of the plane
    int height = 0;
};

std::optional<Shape> shapeOf(const ImageBuffer& image, int maxColumns, int trailingInset) {
    if (image.isEmpty()) return std::nullopt;
    Shape shape{sourceWidth(image.width(), trailingInset), 0, image.height()};
    shape.target = std::min(maxColumns, shape.source);
    if (shape.target < 1 || shape.height < 1) return std::nullopt;
    return shape;
}

} // namespace

int sourceWidth(int imageWidth, int trailingInset) {
    const bool insetApplies = trailingInset > 0 && imageWidth > 4 * trailingInset;
    return imageWidth - (insetApplies ? trailingInset : 0);
}

std::optional<Plane> convert(const ImageBuffer& image, int maxColumns, int trailingInset) {
    if (std::optional<Plane> plane = convertFast(image, maxColumns, trailingInset)) return plane;
    return convertSlow(image, maxColumns, trailingInset);
}

std::optional<Plane> convertFast(const ImageBuffer& image, int maxColumns, int trailingInset) {
    const std::optional<Shape> shape = shapeOf(image, maxColumns, trailingInset);
    if (!shape) return std::nullopt;
    const bool reduces = shape->target != shape->source;
    if (reduces && !ScrollKernels::ColumnResampler::fits(shape->source, shape->target)) return std::nullopt;

    Plane plane{shape->target, shape->height, {}};
    plane.bytes.resize(static_cast<std::size_t>(shape->target) * static_cast<std::size_t>(shape->height));
    const ScrollKernels::GrayWeights weights = ScrollKernels::grayWeights(image.order());
    if (!reduces) {
        for (int y = 0; y < shape->height; ++y)
            ScrollKernels::grayRow(image.row(y), shape->source, weights,
                                   plane.bytes.data() + static_cast<std::size_t>(y) * shape->target);
        return plane;
    }
    const ScrollKernels::ColumnResampler resampler(shape->source, shape->target);
    std::vector<std::uint8_t> gray(static_cast<std::size_t>(shape->source));
    std::vector<std::uint32_t> prefix;
    for (int y = 0; y < shape->height; ++y) {
        ScrollKernels::grayRow(image.row(y), shape->source, weights, gray.data());
        resampler.resample(gray.data(), plane.bytes.data() + static_cast<std::size_t>(y) * shape->target, prefix);
    }
    return plane;
}

std::optional<Plane> convertSlow(const ImageBuffer& image, int maxColumns, int trailingInset) {
    const std::optional<Shape> shape = shapeOf(image, maxColumns, trailingInset);
    if (!shape) return std::nullopt;
    Plane plane{shape->target, shape->height, {}};
    plane.bytes.resize(static_cast<std::size_t>(shape->target) * static_cast<std::size_t>(shape->height));
    const double span = double(shape->source) / shape->target;
    std::vector<double> gray(static_cast<std::size_t>(shape->source));
    for (int y = 0; y < shape->height; ++y) {
        for (int x = 0; x < shape->source; ++x) {
            const Rgba8 p = image.pixel(x, y);
            gray[x] = (77.0 * p.r + 150.0 * p.g + 29.0 * p.b) / 256.0;
        }
        std::uint8_t* out = plane.bytes.data() + static_cast<std::size_t>(y) * shape->target;
        for (int c = 0; c < shape->target; ++c) {
            const double from = c * span, to = std::min((c + 1) * span, double(shape->source));
            double sum = 0;
            for (int x = static_cast<int>(from); x < shape->source && x < to; ++x)
                sum += gray[x] * (std::min(to, x + 1.0) - std::max(from, double(x)));
            out[c] = static_cast<std::uint8_t>(std::clamp(std::lround(sum / (to - from)), 0L, 255L));
        }
    }
    return plane;
}

} // namespace tosvar::ScrollGray
