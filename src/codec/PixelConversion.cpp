#include "PixelConversion.h"

namespace tosvar::PixelConversion {

namespace {

inline std::uint8_t unpremultiply(std::uint8_t c, std::uint8_t a) {
    if (a == 255) return c;
    if (a == 0) return 0;
    const unsigned v = (static_cast<unsigned>(c) * 255u + a / 2u) / a;
    return static_cast<std::uint8_t>(v > 255u ? 255u : v);
}

template <int R, int G, int B>
void toRgbFixed(const std::uint8_t* __restrict src, int width, std::uint8_t* __restrict dst) {
    for (int x = 0; x < width; ++x) {
        dst[3 * x + 0] = src[4 * x + R];
        dst[3 * x + 1] = src[4 * x + G];
        dst[3 * x + 2] = src[4 * x + B];
    }
}

} // namespace

void toRgb(const std::uint8_t* src, PixelOrder order, int width, std::uint8_t* dst) {
    switch (order) {
    case PixelOrder::rgba: return toRgbFixed<0, 1, 2>(src, width, dst);
    case PixelOrder::bgra: return toRgbFixed<2, 1, 0>(src, width, dst);
    case PixelOrder::argb: return toRgbFixed<1, 2, 3>(src, width, dst);
    case PixelOrder::abgr: return toRgbFixed<3, 2, 1>(src, width, dst);
    }
}

void toStraightRgba(const std::uint8_t* src, PixelOrder order, int width, std::uint8_t* dst) {
    const ChannelOffsets o = channelOffsets(order);
    for (int x = 0; x < width; ++x) {
        const std::uint8_t* p = src + 4 * x;
        const std::uint8_t a = p[o.a];
        dst[4 * x + 0] = unpremultiply(p[o.r], a);
        dst[4 * x + 1] = unpremultiply(p[o.g], a);
        dst[4 * x + 2] = unpremultiply(p[o.b], a);
        dst[4 * x + 3] = a;
    }
}

void rgbToOpaqueRgba(const std::uint8_t* __restrict src, int width, std::uint8_t* __restrict dst) {
    for (int x = 0; x < width; ++x) {
        dst[4 * x + 0] = src[3 * x + 0];
        dst[4 * x + 1] = src[3 * x + 1];
        dst[4 * x + 2] = src[3 * x + 2];
        dst[4 * x + 3] = 255;
    }
}

void premultiplyRgba(std::uint8_t* pixels, int width) {
    for (int x = 0; x < width; ++x) {
        std::uint8_t* p = pixels + 4 * x;
        const unsigned a = p[3];
        if (a == 255) continue;
        // (c * a + 127) / 255, exactly, without a division.
        for (int c = 0; c < 3; ++c) {
            const unsigned t = p[c] * a + 128u;
            p[c] = static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
        }
    }
}

} // namespace tosvar::PixelConversion
