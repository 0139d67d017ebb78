#pragma once

#include "ImageBuffer.h"

#include <cstdint>
#include <vector>

namespace tosvar {

// Maps true-colour frames onto one palette of at most 256 colours with
// Floyd-Steinberg error diffusion. Each pixel takes the exactly nearest
// entry: for every 15-bit cell of colour space the few entries that can be
// nearest to some colour in it are listed once, so a pixel compares itself
// with those only (a lookup of the cell's centre alone would cost up to four
// levels a channel, a visible 40 dB ceiling). Immutable after construction:
// one quantiser serves frames on several threads.
class GIFColorQuantizer {
public:
    // `palette` holds 0x00RRGGBB colours; entries past 256 are dropped.
    explicit GIFColorQuantizer(std::vector<std::uint32_t> palette);

    const std::vector<std::uint32_t>& palette() const { return palette_; }
    // The palette entry nearest a colour; the lowest index on a tie.
    std::uint8_t nearest(int red, int green, int blue) const;

    // Every n-th pixel of `image` as 0x00RRGGBB, n chosen to give about
    // `maxSamples`; alpha is ignored.
    static std::vector<std::uint32_t> samplePixels(const ImageBuffer& image, int maxSamples);
    // The palette index of every pixel, row by row, errors of 6 levels or
    // more diffused right 7/16 and to the row below 3/16, 5/16 and 1/16;
    // empty for an empty image or palette.
    std::vector<std::uint8_t> indices(const ImageBuffer& image) const;

private:
    std::vector<std::uint32_t> palette_;
    std::vector<float> reds_, greens_, blues_;
    // The candidates of cell i are candidates_[cellStart_[i] .. cellStart_[i + 1]).
    std::vector<std::uint32_t> cellStart_;
    std::vector<std::uint8_t> candidates_;
};

} // namespace tosvar
