#pragma once

#include "AnnotationElement.h"
#include "ImageBuffer.h"
#include "ParallelFor.h"

#include <cmath>
#include <functional>

namespace tosvar::samples {

// A made-up screen: a soft gradient, a band of fine stripes and a chequered
// patch, so mosaic, blur and magnifier have something to change. Opaque.
inline ImageBuffer screenPattern(int width, int height, PixelOrder order = PixelOrder::rgba) {
    MutableImage image(width, height, order);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto r = static_cast<std::uint8_t>(200 + 55 * x / std::max(width - 1, 1));
            auto g = static_cast<std::uint8_t>(215 + 40 * y / std::max(height - 1, 1));
            std::uint8_t b = 235;
            if (y > height / 3 && y < height / 3 + 24 && (x / 3) % 2 == 0 && (y / 4) % 2 == 0) r = g = b = 40;
            if (x > width * 2 / 3 && y > height / 2 && ((x / 8) + (y / 8)) % 2 == 0) {
                r = 30;
                g = 90;
                b = 200;
            }
            image.setPixel(x, y, {r, g, b, 255});
        }
    }
    return std::move(image).freeze();
}

inline AnnotationElement drawn(AnnotationKind kind, Geometry geometry, const std::function<void(AnnotationStyle&)>& tweak = {}) {
    AnnotationStyle style;
    if (tweak) tweak(style);
    return {Uuid::random(), std::move(kind), std::move(geometry), std::move(style)};
}

// Splits kernels over the shared pool, as the product does.
inline void onSharedPool(int count, const std::function<void(int, int)>& body) {
    parallelFor(WorkerPool::shared(), count, 8, body);
}

} // namespace tosvar::samples
