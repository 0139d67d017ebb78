#pragma once

#include "ImageBuffer.h"
#include "ScrollPatch.h"

#include <cstdint>
#include <random>
#include <vector>

// Gray test material for the scroll tests: hand-made patches and tall
// seeded pages to cut viewports from.
namespace tosvar::ScrollTest {

// A patch from rows of values, all rows the same length.
inline ScrollPatch patchOf(const std::vector<std::vector<float>>& rows) {
    ScrollPatch patch{rows.empty() ? 0 : static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), {}};
    for (const auto& row : rows) patch.pixels.insert(patch.pixels.end(), row.begin(), row.end());
    return patch;
}

// A patch of one value.
inline ScrollPatch flatPatch(int width, int height, float value) {
    return {width, height, std::vector<float>(static_cast<std::size_t>(width) * height, value)};
}

// A page of unique rows: every row a different pattern of integer gray levels.
inline ScrollPatch noisePage(int width, int height, std::uint32_t seed) {
    std::mt19937 random(seed);
    ScrollPatch page{width, height, std::vector<float>(static_cast<std::size_t>(width) * height)};
    for (float& v : page.pixels) v = static_cast<float>(random() % 256);
    return page;
}

// Rows [top, top + height) of `page`.
inline ScrollPatch viewport(const ScrollPatch& page, int top, int height) {
    ScrollPatch view{page.width, height, {}};
    view.pixels.assign(page.pixels.begin() + static_cast<std::ptrdiff_t>(top) * page.width,
                       page.pixels.begin() + static_cast<std::ptrdiff_t>(top + height) * page.width);
    return view;
}

// An opaque image whose every pixel has gray `patch` value (r = g = b).
inline ImageBuffer imageOf(const ScrollPatch& patch, PixelOrder order = PixelOrder::bgra) {
    MutableImage image(patch.width, patch.height, order);
    for (int y = 0; y < patch.height; ++y)
        for (int x = 0; x < patch.width; ++x) {
            const auto v = static_cast<std::uint8_t>(patch.at(x, y));
            image.setPixel(x, y, {v, v, v, 255});
        }
    return std::move(image).freeze();
}

} // namespace tosvar::ScrollTest
