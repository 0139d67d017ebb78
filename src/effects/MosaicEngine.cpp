#include "MosaicEngine.h"

#include "GaussianBlur.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tosvar {

namespace {

// The block edges along one axis: a grid of `block` anchored at the middle
// of `size`, clipped to [0, size].
std::vector<int> blockEdges(int size, double block) {
    const double centre = size / 2.0;
    const double first = centre - std::ceil(centre / block) * block;
    std::vector<int> edges;
    for (double edge = first; edge < size; edge += block) edges.push_back(std::clamp(static_cast<int>(std::lround(edge)), 0, size));
    edges.push_back(size);
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    return edges;
}

} // namespace

void MosaicEngine::store(std::map<double, ImageBuffer>& cache, double key, const ImageBuffer& image) {
    if (cache.size() > maxCachedBeforeReset) cache.clear();
    cache.emplace(key, image);
}

std::optional<ImageBuffer> MosaicEngine::pixelated(double blockSize) {
    const double block = std::max(blockSize, 1.0);
    if (auto found = pixelCache_.find(block); found != pixelCache_.end()) return found->second;
    if (base_.isEmpty()) return std::nullopt;

    const std::vector<int> xs = blockEdges(base_.width(), block);
    const std::vector<int> ys = blockEdges(base_.height(), block);
    MutableImage out(base_.width(), base_.height());
    std::vector<std::uint64_t> sums(4 * (xs.size() - 1));
    for (std::size_t by = 0; by + 1 < ys.size(); ++by) {
        std::fill(sums.begin(), sums.end(), 0);
        for (int y = ys[by]; y < ys[by + 1]; ++y) {
            const std::uint8_t* row = base_.row(y);
            for (std::size_t bx = 0; bx + 1 < xs.size(); ++bx)
                for (int x = xs[bx]; x < xs[bx + 1]; ++x)
                    for (int c = 0; c < 4; ++c) sums[4 * bx + c] += row[4 * x + c];
        }
        for (std::size_t bx = 0; bx + 1 < xs.size(); ++bx) {
            const std::uint64_t count = static_cast<std::uint64_t>(xs[bx + 1] - xs[bx]) * static_cast<std::uint64_t>(ys[by + 1] - ys[by]);
            std::uint8_t colour[4];
            for (int c = 0; c < 4; ++c) colour[c] = static_cast<std::uint8_t>((sums[4 * bx + c] + count / 2) / count);
            for (int y = ys[by]; y < ys[by + 1]; ++y) {
                std::uint8_t* row = out.row(y);
                for (int x = xs[bx]; x < xs[bx + 1]; ++x) std::copy(colour, colour + 4, row + 4 * x);
            }
        }
    }
    ImageBuffer image = std::move(out).freeze();
    store(pixelCache_, block, image);
    return image;
}

std::optional<ImageBuffer> MosaicEngine::blurred(double radius) {
    const double r = std::max(radius, 0.0);
    if (auto found = blurCache_.find(r); found != blurCache_.end()) return found->second;
    if (base_.isEmpty()) return std::nullopt;

    const int width = base_.width(), height = base_.height();
    std::vector<float> plane(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = base_.row(y);
        std::copy(row, row + 4 * width, plane.begin() + static_cast<std::ptrdiff_t>(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(y)));
    }
    GaussianBlur::blur(plane, width, height, 4, r, GaussianBlur::Edges::extended);
    MutableImage out(width, height);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = out.row(y);
        const float* source = plane.data() + 4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(y);
        for (int i = 0; i < 4 * width; ++i) row[i] = static_cast<std::uint8_t>(std::clamp(source[i] + 0.5f, 0.0f, 255.0f));
    }
    ImageBuffer image = std::move(out).freeze();
    store(blurCache_, r, image);
    return image;
}

} // namespace tosvar
