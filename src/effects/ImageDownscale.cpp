#include "ImageDownscale.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tosvar::ImageDownscale {

namespace {

// For each target index along one axis, the source indices it covers and the
// share of the target each contributes (summing to 1).
struct Coverage {
    std::vector<int> first;          // first source index of target i
    std::vector<int> offset;         // where target i's weights start in `weights`
    std::vector<float> weights;

    int count(std::size_t i) const { return offset[i + 1] - offset[i]; }

    Coverage(int source, int target) {
        const double scale = static_cast<double>(source) / target;
        offset.push_back(0);
        for (int i = 0; i < target; ++i) {
            const double begin = i * scale;
            const double end = i == target - 1 ? source : (i + 1) * scale;
            const int from = static_cast<int>(std::floor(begin));
            const int to = std::min(source, static_cast<int>(std::ceil(end)));
            first.push_back(from);
            for (int j = from; j < to; ++j) {
                const double covered = std::min(end, j + 1.0) - std::max(begin, static_cast<double>(j));
                weights.push_back(static_cast<float>(covered / (end - begin)));
            }
            offset.push_back(static_cast<int>(weights.size()));
        }
    }
};

// One source row reduced to the target width, four floats per pixel.
void reduceRow(const std::uint8_t* row, const Coverage& columns, std::vector<float>& out) {
    const std::size_t width = columns.first.size();
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint8_t* source = row + static_cast<std::size_t>(columns.first[x]) * 4;
        const float* weight = columns.weights.data() + columns.offset[x];
        float sum[4] = {0, 0, 0, 0};
        for (int k = 0, n = columns.count(x); k < n; ++k, source += 4)
            for (int c = 0; c < 4; ++c) sum[c] += weight[k] * source[c];
        for (int c = 0; c < 4; ++c) out[x * 4 + c] = sum[c];
    }
}

} // namespace

ImageBuffer areaAverage(const ImageBuffer& image, int width, int height) {
    if (image.isEmpty()) return {};
    width = std::clamp(width, 1, image.width());
    height = std::clamp(height, 1, image.height());
    const Coverage columns(image.width(), width);
    const Coverage rows(image.height(), height);

    MutableImage result(width, height, image.order(), PixelMemoryFill::uninitialized);
    const std::size_t floatsPerRow = static_cast<std::size_t>(width) * 4;
    std::vector<float> reduced(floatsPerRow);
    std::vector<float> sum(floatsPerRow);
    for (int y = 0; y < height; ++y) {
        std::fill(sum.begin(), sum.end(), 0.0f);
        const float* weight = rows.weights.data() + rows.offset[y];
        for (int k = 0, n = rows.count(y); k < n; ++k) {
            reduceRow(image.row(rows.first[y] + k), columns, reduced);
            for (std::size_t i = 0; i < floatsPerRow; ++i) sum[i] += weight[k] * reduced[i];
        }
        // Every channel goes through the same operations, so a colour never
        // ends above its alpha.
        std::uint8_t* out = result.row(y);
        for (std::size_t i = 0; i < floatsPerRow; ++i)
            out[i] = static_cast<std::uint8_t>(std::clamp(sum[i], 0.0f, 255.0f) + 0.5f);
    }
    return std::move(result).freeze();
}

} // namespace tosvar::ImageDownscale
