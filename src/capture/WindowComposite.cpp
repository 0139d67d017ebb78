#include "WindowComposite.h"

#include <algorithm>
#include <cmath>

namespace tosvar::WindowComposite {

namespace {

// Premultiplied source-over of one row of pixels in the same byte order.
void blendRow(std::uint8_t* destination, const std::uint8_t* source, int pixels, int alphaOffset) {
    for (int i = 0; i < pixels; ++i) {
        const std::uint8_t* s = source + 4 * i;
        std::uint8_t* d = destination + 4 * i;
        const unsigned keep = 255u - s[alphaOffset];
        for (int c = 0; c < 4; ++c) d[c] = static_cast<std::uint8_t>(s[c] + (d[c] * keep + 127) / 255);
    }
}

} // namespace

Rect unionOf(const std::vector<Rect>& rectangles) {
    Rect result = Rect::null();
    for (const Rect& rectangle : rectangles) result = result.unionWith(rectangle);
    return result;
}

std::optional<ImageBuffer> render(const std::vector<Layer>& layers, const Rect& rect, double scale) {
    if (layers.empty()) return std::nullopt;
    scale = std::max(scale, 1.0);
    const long width = std::lround(scale * rect.width());
    const long height = std::lround(scale * rect.height());
    if (width < 1 || height < 1) return std::nullopt;

    const PixelOrder order = layers.front().image.order();
    const int alphaOffset = channelOffsets(order).a;
    MutableImage canvas(static_cast<int>(width), static_cast<int>(height), order);
    const PixelRect canvasBounds{0, 0, canvas.width(), canvas.height()};
    for (const Layer& layer : layers) {
        const ImageBuffer image = layer.image.converted(order);
        const int x = static_cast<int>(std::lround(scale * (layer.frame.minX() - rect.minX())));
        // Frames count y upwards from the bottom; image rows count down from the top.
        const int fromBottom = static_cast<int>(std::lround(scale * (layer.frame.minY() - rect.minY())));
        const int y = canvas.height() - fromBottom - image.height();
        const PixelRect placed = PixelRect{x, y, image.width(), image.height()}.intersection(canvasBounds);
        if (placed.isEmpty()) continue;
        for (int row = placed.y; row < placed.maxY(); ++row)
            blendRow(canvas.row(row) + 4 * placed.x, image.row(row - y) + 4 * (placed.x - x), placed.width, alphaOffset);
    }
    return std::move(canvas).freeze();
}

} // namespace tosvar::WindowComposite
