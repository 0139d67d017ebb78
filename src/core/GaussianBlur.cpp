#include "GaussianBlur.h"

#include <algorithm>
#include <cmath>

namespace tosvar::GaussianBlur {

namespace {

// One box pass along every row, all `Channels` of a pixel together: a
// running sum per channel over a row padded by `radius` pixels each side.
template <int Channels>
void boxRows(std::vector<float>& plane, int width, int firstRow, int endRow, int radius, Edges edges) {
    const std::size_t rowStride = static_cast<std::size_t>(width) * Channels;
    std::vector<float> line(rowStride + 2 * static_cast<std::size_t>(radius) * Channels);
    const float scale = 1.0f / static_cast<float>(2 * radius + 1);
    for (int y = firstRow; y < endRow; ++y) {
        float* row = plane.data() + rowStride * static_cast<std::size_t>(y);
        for (int i = 0; i < radius; ++i)
            for (int c = 0; c < Channels; ++c) {
                line[static_cast<std::size_t>(i) * Channels + c] = edges == Edges::extended ? row[c] : 0.0f;
                line[rowStride + static_cast<std::size_t>(radius + i) * Channels + c] =
                    edges == Edges::extended ? row[rowStride - Channels + c] : 0.0f;
            }
        std::copy(row, row + rowStride, line.begin() + static_cast<std::ptrdiff_t>(radius) * Channels);

        float sums[Channels] = {};
        for (int i = 0; i <= 2 * radius; ++i)
            for (int c = 0; c < Channels; ++c) sums[c] += line[static_cast<std::size_t>(i) * Channels + c];
        const float* entering = line.data() + static_cast<std::size_t>(2 * radius + 1) * Channels;
        const float* leaving = line.data();
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < Channels; ++c) {
                row[static_cast<std::size_t>(x) * Channels + c] = sums[c] * scale;
                // The last step reads one pixel past the padding; its sum is never used.
                if (x + 1 < width) sums[c] += entering[static_cast<std::size_t>(x) * Channels + c] - leaving[static_cast<std::size_t>(x) * Channels + c];
            }
        }
    }
}

// One box pass down the columns [first, end) of the row (counted in floats),
// from `source` into `target`: a running sum of partial rows, so the inner
// loops walk memory in order and vectorise.
void boxColumns(const std::vector<float>& source, std::vector<float>& target, std::size_t rowStride, int height,
                int radius, Edges edges, std::size_t first, std::size_t end) {
    const std::size_t span = end - first;
    std::vector<float> sums(span, 0.0f);
    const std::vector<float> zeros(edges == Edges::transparent ? span : 0, 0.0f);
    auto row = [&](int y) -> const float* {
        if (y < 0 || y >= height) {
            if (edges == Edges::transparent) return zeros.data();
            y = std::clamp(y, 0, height - 1);
        }
        return source.data() + rowStride * static_cast<std::size_t>(y) + first;
    };
    for (int y = -radius; y <= radius; ++y) {
        const float* r = row(y);
        for (std::size_t i = 0; i < span; ++i) sums[i] += r[i];
    }
    const float scale = 1.0f / static_cast<float>(2 * radius + 1);
    for (int y = 0; y < height; ++y) {
        float* out = target.data() + rowStride * static_cast<std::size_t>(y) + first;
        for (std::size_t i = 0; i < span; ++i) out[i] = sums[i] * scale;
        const float* entering = row(y + radius + 1);
        const float* leaving = row(y - radius);
        for (std::size_t i = 0; i < span; ++i) sums[i] += entering[i] - leaving[i];
    }
}

} // namespace

std::vector<int> boxSizes(double sigma) {
    constexpr int passes = 3;
    const double ideal = std::sqrt(12.0 * sigma * sigma / passes + 1);
    int lower = static_cast<int>(std::floor(ideal));
    if (lower % 2 == 0) --lower;
    const int upper = lower + 2;
    const double m = (12.0 * sigma * sigma - passes * lower * lower - 4.0 * passes * lower - 3.0 * passes) / (-4.0 * lower - 4);
    const int lowerCount = static_cast<int>(std::lround(m));
    std::vector<int> sizes;
    for (int i = 0; i < passes; ++i) sizes.push_back(std::max(1, i < lowerCount ? lower : upper));
    return sizes;
}

void blur(std::vector<float>& plane, int width, int height, int channels, double sigma, Edges edges,
          const ParallelRunner& run) {
    if (sigma <= 0 || width <= 0 || height <= 0) return;
    if (channels != 1 && channels != 4) return;
    std::vector<float> scratch(plane.size());
    const std::size_t rowStride = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    // Columns go in runs of 64 floats, so parts never share a cache line.
    constexpr std::size_t columnRun = 64;
    const int columnRuns = static_cast<int>((rowStride + columnRun - 1) / columnRun);
    for (int size : boxSizes(sigma)) {
        const int radius = (size - 1) / 2;
        if (radius == 0) continue;
        run(height, [&](int begin, int end) {
            if (channels == 1) {
                boxRows<1>(plane, width, begin, end, radius, edges);
            } else {
                boxRows<4>(plane, width, begin, end, radius, edges);
            }
        });
        run(columnRuns, [&](int begin, int end) {
            boxColumns(plane, scratch, rowStride, height, radius, edges, static_cast<std::size_t>(begin) * columnRun,
                       std::min(rowStride, static_cast<std::size_t>(end) * columnRun));
        });
        plane.swap(scratch);
    }
}

} // namespace tosvar::GaussianBlur
