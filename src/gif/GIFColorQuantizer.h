#pragma once

#include "ImageBuffer.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tosvar {

// Maps true-colour frames onto one palette of at most 256 colours with
// Floyd-Steinberg error diffusion. The nearest palette entry of every 15-bit
// colour is worked out once, so each pixel costs one lookup. Immutable after
// construction: one quantiser serves frames on several threads.
class GIFColorQuantizer {
public:
    // `palette` holds 0x00RRGGBB colours; entries past 256 are dropped.
    explicit GIFColorQuantizer(std::vector<std::uint32_t> palette);

    const std::vector<std::uint32_t>& palette() const { return palette_; }
    // The palette entry nearest a 15-bit colour (5 bits a channel, red highest).
    std::uint8_t nearest(std::uint16_t colour15) const { return nearest_[colour15]; }

    // Every n-th pixel of `image` as 0x00RRGGBB, n chosen to give about
    // `maxSamples`; alpha is ignored.
    static std::vector<std::uint32_t> samplePixels(const ImageBuffer& image, int maxSamples);
    // The palette index of every pixel, row by row, errors diffused right
    // 7/16 and to the row below 3/16, 5/16 and 1/16; empty for an empty
    // image or palette.
    std::vector<std::uint8_t> indices(const ImageBuffer& image) const;

private:
    std::vector<std::uint32_t> palette_;
    std::vector<float> reds_, greens_, blues_;
    std::array<std::uint8_t, 32768> nearest_{};
};

} // namespace tosvar
