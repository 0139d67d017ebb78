#include "MosaicEngine.h"

#include "GaussianBlur.h"

#include <algorithm>
#include <cmath>
#include <cstring>
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

std::uint8_t toByte(float value) { return static_cast<std::uint8_t>(std::clamp(value + 0.5f, 0.0f, 255.0f)); }

// The image reduced by `factor`: each reduced pixel the mean of the block it
// covers (edge blocks of what exists), four floats per pixel.
std::vector<float> reduce(const ImageBuffer& image, int factor, int width, int height, const ParallelRunner& run) {
    std::vector<float> plane(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    run(height, [&](int begin, int end) {
        std::vector<std::uint32_t> sums(static_cast<std::size_t>(width) * 4);
        for (int ry = begin; ry < end; ++ry) {
            std::fill(sums.begin(), sums.end(), 0u);
            const int y0 = ry * factor, y1 = std::min(y0 + factor, image.height());
            for (int y = y0; y < y1; ++y) {
                const std::uint8_t* row = image.row(y);
                for (int rx = 0; rx < width; ++rx) {
                    const int x0 = rx * factor, x1 = std::min(x0 + factor, image.width());
                    std::uint32_t* s = sums.data() + 4 * rx;
                    for (int x = x0; x < x1; ++x) {
                        const std::uint8_t* p = row + 4 * x;
                        s[0] += p[0];
                        s[1] += p[1];
                        s[2] += p[2];
                        s[3] += p[3];
                    }
                }
            }
            float* out = plane.data() + static_cast<std::size_t>(ry) * static_cast<std::size_t>(width) * 4;
            for (int rx = 0; rx < width; ++rx) {
                const int count = (std::min((rx + 1) * factor, image.width()) - rx * factor) * (y1 - y0);
                const float scale = 1.0f / static_cast<float>(count);
                for (int c = 0; c < 4; ++c) out[4 * rx + c] = static_cast<float>(sums[4 * static_cast<std::size_t>(rx) + c]) * scale;
            }
        }
    });
    return plane;
}

// Where a full-size pixel centre falls between two reduced pixel centres.
struct Tap {
    int low, high;
    float weight; // of `high`
};

std::vector<Tap> taps(int size, int reducedSize, int factor) {
    std::vector<Tap> out(static_cast<std::size_t>(size));
    for (int i = 0; i < size; ++i) {
        const double u = std::clamp((i + 0.5) / factor - 0.5, 0.0, static_cast<double>(reducedSize - 1));
        const int low = static_cast<int>(std::floor(u));
        out[static_cast<std::size_t>(i)] = {low, std::min(low + 1, reducedSize - 1), static_cast<float>(u - low)};
    }
    return out;
}

} // namespace

namespace PixelKernels {

ImageBuffer pixelate(const ImageBuffer& image, double blockSize, const ParallelRunner& run, std::optional<PixelRect> requested) {
    const double block = std::max(blockSize, 1.0);
    const PixelRect area = requested ? requested->intersection(image.bounds()) : image.bounds();
    const std::vector<int> allXs = blockEdges(image.width(), block);
    const std::vector<int> allYs = blockEdges(image.height(), block);
    // The edges of the blocks that meet the area, cut to it.
    auto within = [](const std::vector<int>& edges, int low, int high) {
        std::vector<int> out{low};
        for (int edge : edges)
            if (edge > low && edge < high) out.push_back(edge);
        out.push_back(high);
        return out;
    };
    // A block's mean is taken over the whole block, not just the area's part.
    auto blockOf = [](const std::vector<int>& edges, int at) {
        const auto next = std::upper_bound(edges.begin(), edges.end(), at);
        return std::pair{*(next - 1), *next};
    };
    const std::vector<int> xs = within(allXs, area.x, area.maxX());
    const std::vector<int> ys = within(allYs, area.y, area.maxY());
    MutableImage out(std::max(area.width, 1), std::max(area.height, 1), image.order(), PixelMemoryFill::uninitialized);
    if (area.width <= 0 || area.height <= 0) return std::move(out).freeze();
    const int blockRows = static_cast<int>(ys.size()) - 1;
    const std::size_t blockColumns = xs.size() - 1;
    run(blockRows, [&](int begin, int end) {
        std::vector<std::uint64_t> sums(4 * blockColumns);
        std::vector<std::uint32_t> colours(blockColumns);
        std::vector<std::pair<int, int>> columnBlocks(blockColumns);
        for (std::size_t bx = 0; bx < blockColumns; ++bx) columnBlocks[bx] = blockOf(allXs, xs[bx]);
        for (int by = begin; by < end; ++by) {
            std::fill(sums.begin(), sums.end(), 0);
            const auto [y0, y1] = blockOf(allYs, ys[by]);
            for (int y = y0; y < y1; ++y) {
                const std::uint8_t* row = image.row(y);
                for (std::size_t bx = 0; bx < blockColumns; ++bx) {
                    // A block row of at most 2^24 pixels cannot overflow 32 bits per channel.
                    std::uint32_t s0 = 0, s1 = 0, s2 = 0, s3 = 0;
                    for (int x = columnBlocks[bx].first; x < columnBlocks[bx].second; ++x) {
                        const std::uint8_t* p = row + 4 * x;
                        s0 += p[0];
                        s1 += p[1];
                        s2 += p[2];
                        s3 += p[3];
                    }
                    std::uint64_t* s = sums.data() + 4 * bx;
                    s[0] += s0;
                    s[1] += s1;
                    s[2] += s2;
                    s[3] += s3;
                }
            }
            for (std::size_t bx = 0; bx < blockColumns; ++bx) {
                const std::uint64_t count = static_cast<std::uint64_t>(columnBlocks[bx].second - columnBlocks[bx].first) *
                                            static_cast<std::uint64_t>(y1 - y0);
                std::uint8_t colour[4];
                for (int c = 0; c < 4; ++c) colour[c] = static_cast<std::uint8_t>((sums[4 * bx + c] + count / 2) / count);
                std::memcpy(&colours[bx], colour, 4);
            }
            for (int y = ys[by]; y < ys[by + 1]; ++y) {
                auto* row = reinterpret_cast<std::uint32_t*>(out.row(y - area.y));
                for (std::size_t bx = 0; bx < blockColumns; ++bx) std::fill(row + xs[bx] - area.x, row + xs[bx + 1] - area.x, colours[bx]);
            }
        }
    });
    return std::move(out).freeze();
}

int reductionFactor(double sigma) {
    if (sigma < 3) return 1;
    int factor = 1;
    while (factor < 16 && sigma / (factor * 2) >= 1.5) factor *= 2;
    return factor;
}

ImageBuffer blur(const ImageBuffer& image, double requestedSigma, const ParallelRunner& run) {
    const int width = image.width(), height = image.height();
    // Past the image's own size a wider blur changes nothing anyone could see.
    const double sigma = std::min(requestedSigma, static_cast<double>(std::max(width, height)));
    const int factor = reductionFactor(sigma);
    const int reducedWidth = (width + factor - 1) / factor, reducedHeight = (height + factor - 1) / factor;
    std::vector<float> plane = reduce(image, factor, reducedWidth, reducedHeight, run);
    // Reduction by block means and bilinear enlargement each add their own spread.
    const double added = factor == 1 ? 0 : (factor * factor - 1) / 12.0 + factor * factor / 6.0;
    const double remaining = std::sqrt(std::max(sigma * sigma - added, 0.0)) / factor;
    GaussianBlur::blur(plane, reducedWidth, reducedHeight, 4, remaining, GaussianBlur::Edges::extended, run);

    MutableImage out(width, height, image.order(), PixelMemoryFill::uninitialized);
    const std::vector<Tap> columns = taps(width, reducedWidth, factor);
    const std::vector<Tap> rows = taps(height, reducedHeight, factor);
    const std::size_t reducedStride = static_cast<std::size_t>(reducedWidth) * 4;
    const std::size_t fullStride = static_cast<std::size_t>(width) * 4;
    run(height, [&](int begin, int end) {
        // Reduced rows widened to full width, the two the current row lies
        // between; each is widened once per part however many rows use it.
        std::vector<float> low(fullStride), high(fullStride);
        int lowRow = -1, highRow = -1;
        auto widen = [&](int reducedRow, std::vector<float>& into) {
            const float* source = plane.data() + reducedStride * static_cast<std::size_t>(reducedRow);
            for (int x = 0; x < width; ++x) {
                const Tap& s = columns[static_cast<std::size_t>(x)];
                const float* l = source + 4 * s.low;
                const float* h = source + 4 * s.high;
                float* o = into.data() + 4 * static_cast<std::size_t>(x);
                for (int c = 0; c < 4; ++c) o[c] = l[c] + (h[c] - l[c]) * s.weight;
            }
        };
        for (int y = begin; y < end; ++y) {
            const Tap& t = rows[static_cast<std::size_t>(y)];
            if (t.low != lowRow) {
                if (t.low == highRow) {
                    low.swap(high);
                    std::swap(lowRow, highRow);
                } else {
                    widen(t.low, low);
                    lowRow = t.low;
                }
            }
            if (t.high != highRow) {
                widen(t.high, high);
                highRow = t.high;
            }
            // Locals, so the byte stores cannot alias the bounds and the loop vectorises.
            std::uint8_t* row = out.row(y);
            const float* a = low.data();
            const float* b = high.data();
            const float weight = t.weight;
            const std::size_t count = fullStride;
            for (std::size_t i = 0; i < count; ++i) row[i] = toByte(a[i] + (b[i] - a[i]) * weight);
        }
    });
    return std::move(out).freeze();
}

ImageBuffer blurArea(const ImageBuffer& image, double sigma, const PixelRect& requested, const ParallelRunner& run) {
    const PixelRect area = requested.intersection(image.bounds());
    // The source starts on the reduction grid of the whole image, so the
    // reduced pixels are the ones a whole-image blur would make.
    const int factor = reductionFactor(std::min(sigma, static_cast<double>(std::max(image.width(), image.height()))));
    const int margin = static_cast<int>(std::ceil(3 * std::max(sigma, 0.0))) + 2 * factor;
    const int x0 = std::max(0, (area.x - margin) / factor * factor), y0 = std::max(0, (area.y - margin) / factor * factor);
    const PixelRect source = PixelRect{x0, y0, area.maxX() + margin - x0, area.maxY() + margin - y0}.intersection(image.bounds());
    const ImageBuffer blurred = blur(image.cropped(source), sigma, run);
    return blurred.cropped({area.x - source.x, area.y - source.y, area.width, area.height});
}

} // namespace PixelKernels

void MosaicEngine::store(std::map<double, ImageBuffer>& cache, double key, const ImageBuffer& image) {
    if (cache.size() > maxCachedBeforeReset) cache.clear();
    cache.emplace(key, image);
}

std::optional<ImageBuffer> MosaicEngine::pixelated(double blockSize) {
    const double block = std::max(blockSize, 1.0);
    if (auto found = pixelCache_.find(block); found != pixelCache_.end()) return found->second;
    if (base_.isEmpty()) return std::nullopt;
    ImageBuffer image = PixelKernels::pixelate(base_, block, run_);
    store(pixelCache_, block, image);
    return image;
}

std::optional<EffectImage> MosaicEngine::pixelated(double blockSize, const PixelRect& area) {
    const PixelRect within = area.intersection(base_.bounds());
    if (within.width <= 0 || within.height <= 0) return std::nullopt;
    if (extent_ == Extent::wholeCanvas) {
        std::optional<ImageBuffer> whole = pixelated(blockSize);
        if (!whole) return std::nullopt;
        return EffectImage{std::move(*whole), base_.bounds()};
    }
    return EffectImage{PixelKernels::pixelate(base_, blockSize, run_, within), within};
}

std::optional<EffectImage> MosaicEngine::blurred(double radius, const PixelRect& area) {
    const PixelRect within = area.intersection(base_.bounds());
    if (within.width <= 0 || within.height <= 0) return std::nullopt;
    if (extent_ == Extent::wholeCanvas) {
        std::optional<ImageBuffer> whole = blurred(radius);
        if (!whole) return std::nullopt;
        return EffectImage{std::move(*whole), base_.bounds()};
    }
    return EffectImage{PixelKernels::blurArea(base_, std::max(radius, 0.0), within, run_), within};
}

std::optional<ImageBuffer> MosaicEngine::blurred(double radius) {
    const double r = std::max(radius, 0.0);
    if (auto found = blurCache_.find(r); found != blurCache_.end()) return found->second;
    if (base_.isEmpty()) return std::nullopt;
    ImageBuffer image = PixelKernels::blur(base_, r, run_);
    store(blurCache_, r, image);
    return image;
}

} // namespace tosvar
