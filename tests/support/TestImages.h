#pragma once

#include "ImageBuffer.h"

#include <random>

namespace tosvar {

// Premultiplied noise: every channel different, colour never above alpha.
inline ImageBuffer noiseImage(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int a = byte(random);
            auto upTo = [&](int limit) { return static_cast<std::uint8_t>(byte(random) * limit / 255); };
            image.setPixel(x, y, {upTo(a), upTo(a), upTo(a), static_cast<std::uint8_t>(a)});
        }
    return std::move(image).freeze();
}

} // namespace tosvar
