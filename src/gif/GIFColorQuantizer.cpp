#include "GIFColorQuantizer.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace tosvar {

GIFColorQuantizer::GIFColorQuantizer(std::vector<std::uint32_t> palette) : palette_(std::move(palette)) {
    if (palette_.size() > 256) palette_.resize(256);
    for (std::uint32_t colour : palette_) {
        reds_.push_back(static_cast<float>((colour >> 16) & 0xFF));
        greens_.push_back(static_cast<float>((colour >> 8) & 0xFF));
        blues_.push_back(static_cast<float>(colour & 0xFF));
    }
    if (palette_.empty()) return;
    cellStart_.reserve(32769);
    std::vector<int> lowest(palette_.size());
    for (int cell = 0; cell < 32768; ++cell) {
        cellStart_.push_back(static_cast<std::uint32_t>(candidates_.size()));
        const int lo[3] = {((cell >> 10) & 31) << 3, ((cell >> 5) & 31) << 3, (cell & 31) << 3};
        // An entry is a candidate when its nearest approach to the cell is
        // no farther than the best entry's farthest.
        int bound = std::numeric_limits<int>::max();
        for (std::size_t p = 0; p < palette_.size(); ++p) {
            const int v[3] = {static_cast<int>(reds_[p]), static_cast<int>(greens_[p]), static_cast<int>(blues_[p])};
            int nearestSquared = 0, farthestSquared = 0;
            for (int k = 0; k < 3; ++k) {
                const int below = lo[k] - v[k], above = v[k] - (lo[k] + 7);
                const int gap = std::max({below, above, 0});
                const int far = std::max(std::abs(v[k] - lo[k]), std::abs(v[k] - lo[k] - 7));
                nearestSquared += gap * gap;
                farthestSquared += far * far;
            }
            lowest[p] = nearestSquared;
            bound = std::min(bound, farthestSquared);
        }
        for (std::size_t p = 0; p < palette_.size(); ++p)
            if (lowest[p] <= bound) candidates_.push_back(static_cast<std::uint8_t>(p));
    }
    cellStart_.push_back(static_cast<std::uint32_t>(candidates_.size()));
}

std::uint8_t GIFColorQuantizer::nearest(int red, int green, int blue) const {
    const int cell = (red >> 3) << 10 | (green >> 3) << 5 | (blue >> 3);
    std::uint8_t best = 0;
    float bestDistance = std::numeric_limits<float>::max();
    for (std::uint32_t i = cellStart_[static_cast<std::size_t>(cell)]; i < cellStart_[static_cast<std::size_t>(cell) + 1]; ++i) {
        const std::uint8_t p = candidates_[i];
        const float dr = static_cast<float>(red) - reds_[p], dg = static_cast<float>(green) - greens_[p], db = static_cast<float>(blue) - blues_[p];
        const float distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) bestDistance = distance, best = p; // candidates come in index order
    }
    return best;
}

std::vector<std::uint32_t> GIFColorQuantizer::samplePixels(const ImageBuffer& image, int maxSamples) {
    std::vector<std::uint32_t> samples;
    if (image.isEmpty() || maxSamples <= 0) return samples;
    const ChannelOffsets c = channelOffsets(image.order());
    const std::size_t count = static_cast<std::size_t>(image.width()) * image.height();
    const std::size_t stride = std::max<std::size_t>(1, count / static_cast<std::size_t>(maxSamples));
    for (std::size_t i = 0; i < count; i += stride) {
        const std::uint8_t* p = image.row(static_cast<int>(i / image.width())) + 4 * (i % image.width());
        samples.push_back(static_cast<std::uint32_t>(p[c.r]) << 16 | static_cast<std::uint32_t>(p[c.g]) << 8 | p[c.b]);
    }
    return samples;
}

// An error smaller than this, in levels, is kept rather than spread: where the
// palette holds a colour all but exactly (flat ground, text edges), spreading
// it only sprinkles noise that costs bytes and accuracy; gradients the
// palette steps through coarsely still get their dither.
constexpr float quietError = 6;

std::vector<std::uint8_t> GIFColorQuantizer::indices(const ImageBuffer& image) const {
    if (image.isEmpty() || palette_.empty()) return {};
    const int width = image.width(), height = image.height();
    const ChannelOffsets c = channelOffsets(image.order());
    std::vector<std::uint8_t> out(static_cast<std::size_t>(width) * height);
    // Errors of this row and the next, three floats a pixel, one pixel of slack each side.
    std::vector<float> current(static_cast<std::size_t>(width + 2) * 3, 0.0f), next(current.size(), 0.0f);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = image.row(y);
        std::uint8_t* target = &out[static_cast<std::size_t>(y) * width];
        for (int x = 0; x < width; ++x) {
            float* here = &current[static_cast<std::size_t>(x + 1) * 3];
            const float r = std::clamp(row[4 * x + c.r] + here[0], 0.0f, 255.0f);
            const float g = std::clamp(row[4 * x + c.g] + here[1], 0.0f, 255.0f);
            const float b = std::clamp(row[4 * x + c.b] + here[2], 0.0f, 255.0f);
            const std::uint8_t index = nearest(static_cast<int>(r + 0.5f), static_cast<int>(g + 0.5f), static_cast<int>(b + 0.5f));
            target[x] = index;
            const float error[3] = {r - reds_[index], g - greens_[index], b - blues_[index]};
            if (error[0] * error[0] + error[1] * error[1] + error[2] * error[2] < quietError * quietError) continue;
            float* right = here + 3;
            float* below = &next[static_cast<std::size_t>(x + 1) * 3];
            for (int k = 0; k < 3; ++k) {
                right[k] += error[k] * 0.4375f;
                below[k - 3] += error[k] * 0.1875f;
                below[k] += error[k] * 0.3125f;
                below[k + 3] += error[k] * 0.0625f;
            }
        }
        std::swap(current, next);
        std::fill(next.begin(), next.end(), 0.0f);
    }
    return out;
}

} // namespace tosvar
