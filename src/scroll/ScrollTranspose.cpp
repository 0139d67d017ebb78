#include "ScrollTranspose.h"

#include <algorithm>
#include <cstring>

namespace tosvar::ScrollTranspose {

std::optional<ImageBuffer> transposed(const ImageBuffer& image) {
    if (image.isEmpty()) return std::nullopt;
    MutableImage out(image.height(), image.width(), image.order(), PixelMemoryFill::uninitialized);
    // Tiles keep both the rows read and the rows written in cache.
    constexpr int tile = 32;
    for (int y0 = 0; y0 < image.height(); y0 += tile) {
        const int y1 = std::min(y0 + tile, image.height());
        for (int x0 = 0; x0 < image.width(); x0 += tile) {
            const int x1 = std::min(x0 + tile, image.width());
            for (int x = x0; x < x1; ++x) {
                std::uint8_t* target = out.row(x);
                for (int y = y0; y < y1; ++y) std::memcpy(target + 4 * y, image.row(y) + 4 * x, 4);
            }
        }
    }
    return std::move(out).freeze();
}

} // namespace tosvar::ScrollTranspose
