#include "GIFColorQuantizer.h"

#include <algorithm>
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
    for (int i = 0; i < 32768; ++i) {
        const int r = ((i >> 10) & 31) << 3 | 4, g = ((i >> 5) & 31) << 3 | 4, b = (i & 31) << 3 | 4;
        int best = 0, bestDistance = std::numeric_limits<int>::max();
        for (std::size_t p = 0; p < palette_.size(); ++p) {
            const int dr = r - static_cast<int>(reds_[p]), dg = g - static_cast<int>(greens_[p]), db = b - static_cast<int>(blues_[p]);
            const int distance = dr * dr + dg * dg + db * db;
            if (distance < bestDistance) bestDistance = distance, best = static_cast<int>(p);
        }
        nearest_[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(best);
    }
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
            const std::uint8_t index = nearest_[static_cast<std::size_t>((static_cast<int>(r) >> 3) << 10 | (static_cast<int>(g) >> 3) << 5 |
                                                                         (static_cast<int>(b) >> 3))];
            target[x] = index;
            const float error[3] = {r - reds_[index], g - greens_[index], b - blues_[index]};
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
