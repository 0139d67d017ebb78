#include "ScrollFullGray.h"

#include "ScrollBand.h"
#include "ScrollGray.h"
#include "ScrollKernels.h"

#include <algorithm>

namespace tosvar {

namespace {

int sampledRows(int y0, int y1, int rowStep) { return (y1 - y0 + rowStep - 1) / rowStep; }

} // namespace

std::optional<ScrollFullGray> ScrollFullGray::fromImage(const ImageBuffer& image, int trailingInset) {
    std::optional<ScrollGray::Plane> plane =
        ScrollGray::convert(image, ScrollGray::sourceWidth(image.width(), trailingInset), trailingInset);
    if (!plane) return std::nullopt;
    return ScrollFullGray{plane->width, plane->height, std::move(plane->bytes)};
}

std::vector<double> ScrollFullGray::edgeRates(int y0, int y1, int blocks, int tol, int rowStep) const {
    const ScrollBlockSplit split = ScrollBlockSplit::of(width, blocks);
    std::vector<double> rates(static_cast<std::size_t>(split.count), 0.0);
    rowStep = std::max(rowStep, 1);
    y0 = std::max(y0, 0);
    y1 = std::min(y1, height);
    if (y1 <= y0) return rates;
    std::vector<long long> counts(rates.size(), 0);
    for (int y = y0; y < y1; y += rowStep) {
        const std::uint8_t* r = row(y);
        for (int b = 0; b < split.count; ++b) {
            const int x0 = b * split.width;
            const int x1 = std::min(x0 + split.width + 1, width); // the last pair reaches one column over
            counts[b] += ScrollKernels::edgeCount(r + x0, x1 - x0, tol);
        }
    }
    const double cells = double(split.width) * sampledRows(y0, y1, rowStep);
    for (std::size_t b = 0; b < rates.size(); ++b) rates[b] = counts[b] / cells;
    return rates;
}

std::vector<double> ScrollFullGray::mismatchRates(const ScrollFullGray& shifted, int delta, int y0, int y1,
                                                  int blocks, int tol, int rowStep) const {
    const ScrollBlockSplit split = ScrollBlockSplit::of(width, blocks);
    std::vector<double> rates(static_cast<std::size_t>(split.count), 0.0);
    rowStep = std::max(rowStep, 1);
    y0 = std::max(y0, 0);
    y1 = std::min(y1, height);
    if (y1 <= y0 || shifted.width != width) return rates;
    std::vector<long long> counts(rates.size(), 0);
    for (int y = y0; y < y1; y += rowStep) {
        if (y + delta < 0 || y + delta >= shifted.height) continue;
        const std::uint8_t* mine = row(y);
        const std::uint8_t* theirs = shifted.row(y + delta);
        for (int b = 0; b < split.count; ++b) {
            const int x0 = b * split.width;
            counts[b] += ScrollKernels::mismatchCount(mine + x0, theirs + x0, split.width, tol);
        }
    }
    const double cells = double(split.width) * sampledRows(y0, y1, rowStep);
    for (std::size_t b = 0; b < rates.size(); ++b) rates[b] = counts[b] / cells;
    return rates;
}

std::shared_ptr<const ScrollFullGray> ScrollFullGrayCache::gray(const ImageBuffer& image, int trailingInset) {
    {
        std::lock_guard guard(lock_);
        for (const Entry& entry : entries_)
            if (entry.identity == image.identity() && entry.trailingInset == trailingInset) return entry.gray;
    }
    std::optional<ScrollFullGray> made = ScrollFullGray::fromImage(image, trailingInset);
    if (!made) return nullptr;
    auto gray = std::make_shared<const ScrollFullGray>(std::move(*made));
    std::lock_guard guard(lock_);
    entries_.push_back({image.identity(), trailingInset, gray});
    if (entries_.size() > capacity) entries_.erase(entries_.begin());
    return gray;
}

} // namespace tosvar
