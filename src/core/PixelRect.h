#pragma once

#include <algorithm>

namespace tosvar {

// A rectangle of whole pixels in image space (origin top left, y down).
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int maxX() const { return x + width; }
    int maxY() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }

    PixelRect intersection(const PixelRect& o) const {
        const int x0 = std::max(x, o.x), y0 = std::max(y, o.y);
        const int x1 = std::min(maxX(), o.maxX()), y1 = std::min(maxY(), o.maxY());
        if (x1 <= x0 || y1 <= y0) return {};
        return {x0, y0, x1 - x0, y1 - y0};
    }

    friend constexpr bool operator==(const PixelRect&, const PixelRect&) = default;
};

} // namespace tosvar
