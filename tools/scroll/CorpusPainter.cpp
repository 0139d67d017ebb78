#include "CorpusPainter.h"

#include <algorithm>
#include <cmath>

namespace tosvar::ScrollCorpus {

Color mix(Color a, Color b, double t) {
    auto channel = [t](int x, int y) { return static_cast<std::uint8_t>(std::lround(x + (y - x) * t)); };
    return {channel(a.r, b.r), channel(a.g, b.g), channel(a.b, b.b)};
}

std::uint32_t hash(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    std::uint32_t h = 0x9e3779b9u;
    for (std::uint32_t v : {a, b, c, d}) {
        h ^= v + 0x7f4a7c15u + (h << 6) + (h >> 2);
        h *= 0x85ebca6bu;
        h ^= h >> 13;
    }
    return h;
}

GlyphFont::GlyphFont(std::uint32_t seed) {
    std::mt19937 random(seed);
    for (auto& glyph : bits_) {
        // Strokes over the x-height rows 2-6, with optional ascender and descender.
        const int top = random() % 3 == 0 ? 0 : 2;
        const int bottom = random() % 5 == 0 ? 8 : 6;
        auto stem = [&](int column, int from, int to) {
            for (int r = from; r <= to; ++r) glyph[r] |= std::uint8_t(1u << column);
        };
        auto bar = [&](int row, int from, int to) {
            for (int c = from; c <= to; ++c) glyph[row] |= std::uint8_t(1u << c);
        };
        switch (random() % 6) {
        case 0: // a bowl
            stem(0, 3, 5), stem(4, 3, 5), bar(2, 1, 3), bar(6, 1, 3);
            break;
        case 1: // two stems
            stem(0, top, bottom), stem(4, 2, 6), bar(2, 1, 3);
            break;
        case 2: // a stem with arms
            stem(1 + static_cast<int>(random() % 3), top, bottom), bar(2, 0, 4), bar(random() % 2 ? 6 : 4, 0, 3);
            break;
        case 3: // a diagonal
            for (int r = 2; r <= 6; ++r) glyph[r] |= std::uint8_t(1u << std::min(4, (r - 2) + static_cast<int>(random() % 2)));
            stem(0, 2, 3);
            break;
        case 4: // an open bowl with a stem
            stem(0, 2, 6), bar(2, 0, 3), bar(6, 0, 3), stem(4, top == 0 ? 0 : 3, 5);
            break;
        default: // a narrow letter
            stem(2, top, bottom), bar(top, 1, 2);
            break;
        }
        if (random() % 4 == 0) bar(4, 0, 4);
    }
}

void Painter::blend(int x, int y, Color color, double alpha) {
    if (x < clip_.x || y < clip_.y || x >= clip_.maxX() || y >= clip_.maxY() || alpha <= 0) return;
    std::uint8_t* p = image_.row(y) + 4 * x;
    alpha = std::min(alpha, 1.0);
    p[0] = static_cast<std::uint8_t>(std::lround(p[0] + (color.r - p[0]) * alpha));
    p[1] = static_cast<std::uint8_t>(std::lround(p[1] + (color.g - p[1]) * alpha));
    p[2] = static_cast<std::uint8_t>(std::lround(p[2] + (color.b - p[2]) * alpha));
    p[3] = 255;
}

void Painter::fillRect(double x0, double y0, double x1, double y1, Color color, double alpha) {
    x0 = std::max(x0, double(clip_.x));
    x1 = std::min(x1, double(clip_.maxX()));
    y0 = std::max(y0, double(clip_.y));
    y1 = std::min(y1, double(clip_.maxY()));
    if (x1 <= x0 || y1 <= y0) return;
    const int left = static_cast<int>(std::floor(x0)), right = static_cast<int>(std::ceil(x1));
    const int top = static_cast<int>(std::floor(y0)), bottom = static_cast<int>(std::ceil(y1));
    for (int y = top; y < bottom; ++y) {
        const double rowCover = std::min(y1, y + 1.0) - std::max(y0, double(y));
        for (int x = left; x < right; ++x)
            blend(x, y, color, (std::min(x1, x + 1.0) - std::max(x0, double(x))) * rowCover * alpha);
    }
}

void Painter::fillRoundedRect(int x0, int y0, int x1, int y1, int radius, Color color) {
    for (int y = std::max(y0, 0); y < std::min(y1, image_.height()); ++y) {
        // Inset of this row at the rounded corners.
        const double dy = std::max({0.0, y0 + radius - (y + 0.5), (y + 0.5) - (y1 - radius)});
        const double inset = dy > 0 ? radius - std::sqrt(std::max(0.0, double(radius) * radius - dy * dy)) : 0.0;
        fillRect(x0 + inset, y, x1 - inset, y + 1, color);
    }
}

void Painter::fillCircle(double cx, double cy, double radius, Color color) {
    for (int y = static_cast<int>(cy - radius) - 1; y <= static_cast<int>(cy + radius) + 1; ++y) {
        const double dy = y + 0.5 - cy;
        if (std::fabs(dy) >= radius) continue;
        const double half = std::sqrt(radius * radius - dy * dy);
        fillRect(cx - half, y, cx + half, y + 1, color);
    }
}

void Painter::verticalGradient(int x0, int y0, int x1, int y1, Color top, Color bottom) {
    for (int y = y0; y < y1; ++y) fillRect(x0, y, x1, y + 1, mix(top, bottom, double(y - y0) / std::max(y1 - y0 - 1, 1)));
}

void Painter::horizontalGradient(int x0, int y0, int x1, int y1, Color left, Color right) {
    for (int x = x0; x < x1; ++x) fillRect(x, y0, x + 1, y1, mix(left, right, double(x - x0) / std::max(x1 - x0 - 1, 1)));
}

void Painter::photo(int x0, int y0, int x1, int y1, std::uint32_t seed) {
    // Random colours on a coarse grid, interpolated, plus grain.
    constexpr int grid = 7;
    const double cellW = double(x1 - x0) / (grid - 1), cellH = double(y1 - y0) / (grid - 1);
    auto control = [&](int gx, int gy, int channel) { return double(hash(seed, gx, gy, channel) % 256); };
    for (int y = std::max(y0, clip_.y); y < std::min(y1, clip_.maxY()); ++y) {
        const double fy = (y - y0) / cellH;
        const int gy = std::min(static_cast<int>(fy), grid - 2);
        const double ty = fy - gy;
        for (int x = std::max(x0, clip_.x); x < std::min(x1, clip_.maxX()); ++x) {
            const double fx = (x - x0) / cellW;
            const int gx = std::min(static_cast<int>(fx), grid - 2);
            const double tx = fx - gx;
            std::uint8_t* p = image_.row(y) + 4 * x;
            const int grain = static_cast<int>(hash(seed, x, y) % 25) - 12;
            for (int c = 0; c < 3; ++c) {
                const double top = control(gx, gy, c) * (1 - tx) + control(gx + 1, gy, c) * tx;
                const double low = control(gx, gy + 1, c) * (1 - tx) + control(gx + 1, gy + 1, c) * tx;
                p[c] = static_cast<std::uint8_t>(std::clamp(static_cast<int>(top * (1 - ty) + low * ty) + grain, 0, 255));
            }
            p[3] = 255;
        }
    }
}

void Painter::glyph(const GlyphFont& font, int index, double x, double y, double cellWidth, double cellHeight,
                    Color color, bool bold) {
    const double extra = bold ? cellWidth / 2 : 0.0;
    for (int r = 0; r < GlyphFont::rows; ++r) {
        // Runs of set cells as one rectangle, so no seam splits a stroke.
        for (int c = 0; c < GlyphFont::columns;) {
            if (!font.bit(index, c, r)) {
                ++c;
                continue;
            }
            int end = c;
            while (end < GlyphFont::columns && font.bit(index, end, r)) ++end;
            fillRect(x + c * cellWidth, y + r * cellHeight, x + end * cellWidth + extra, y + (r + 1) * cellHeight, color);
            c = end;
        }
    }
}

} // namespace tosvar::ScrollCorpus
