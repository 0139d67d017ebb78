#include "ScrollPatch.h"

#include "ScrollGray.h"
#include "ScrollKernels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tosvar {

std::optional<ScrollPatch> ScrollPatch::fromImage(const ImageBuffer& image, int maxColumns, int trailingInset) {
    std::optional<ScrollGray::Plane> plane = ScrollGray::convert(image, maxColumns, trailingInset);
    if (!plane) return std::nullopt;
    ScrollPatch patch{plane->width, plane->height, std::vector<float>(plane->bytes.size())};
    ScrollKernels::widen(plane->bytes.data(), patch.pixels.data(), static_cast<int>(plane->bytes.size()));
    return patch;
}

ScrollPatch ScrollPatch::coarsened(int rowScale, int colScale) const {
    if (rowScale <= 1 && colScale <= 1) return *this;
    rowScale = std::max(rowScale, 1);
    colScale = std::max(colScale, 1);
    ScrollPatch out;
    out.height = std::max(height / rowScale, 1);
    out.width = std::max(width / colScale, 1);
    out.pixels.assign(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height), 0.0f);
    if (width < 1 || height < 1) return out;
    std::vector<double> sums(static_cast<std::size_t>(out.width));
    for (int oy = 0; oy < out.height; ++oy) {
        const int y0 = oy * rowScale;
        const int y1 = oy == out.height - 1 ? height : std::min(height, y0 + rowScale);
        std::fill(sums.begin(), sums.end(), 0.0);
        for (int y = y0; y < y1; ++y) {
            const float* r = row(y);
            for (int ox = 0; ox < out.width; ++ox)
                for (int x = ox * colScale; x < std::min(width, (ox + 1) * colScale); ++x) sums[ox] += r[x];
        }
        float* o = out.pixels.data() + static_cast<std::size_t>(oy) * static_cast<std::size_t>(out.width);
        for (int ox = 0; ox < out.width; ++ox) {
            const int columns = std::min(width, (ox + 1) * colScale) - ox * colScale;
            o[ox] = static_cast<float>(sums[ox] / ((y1 - y0) * columns));
        }
    }
    return out;
}

std::vector<float> ScrollPatch::rowTexture() const {
    std::vector<float> texture(static_cast<std::size_t>(std::max(height, 0)), 0.0f);
    if (height < 2 || width < 1) return texture;
    for (int y = 0; y + 1 < height; ++y)
        texture[y] = static_cast<float>(ScrollKernels::absDiffSum(row(y + 1), row(y), width) / width);
    texture[height - 1] = texture[height - 2];
    return texture;
}

double ScrollPatch::rowMAD(int y, const ScrollPatch& other, int otherY) const {
    const int columns = std::min(width, other.width);
    if (!containsRow(y) || !other.containsRow(otherY)) return std::numeric_limits<double>::infinity();
    if (columns < 1) return 0;
    return ScrollKernels::absDiffSum(row(y), other.row(otherY), columns) / columns;
}

double ScrollPatch::changedRowMAD(int y, const ScrollPatch& other, int otherY, double inPlaceThreshold) const {
    const int columns = std::min(width, other.width);
    if (!containsRow(y) || !other.containsRow(y) || !other.containsRow(otherY)) return std::numeric_limits<double>::infinity();
    if (columns < 1) return 0;
    return ScrollKernels::changedAbsDiffSum(row(y), other.row(otherY), other.row(y), columns,
                                            static_cast<float>(inPlaceThreshold)) /
           width;
}

double ScrollPatch::columnMAD(int x, const ScrollPatch& other, int otherX, ScrollBand rowRange) const {
    if (rowRange.height <= 0) return 0;
    if (x < 0 || x >= width || otherX < 0 || otherX >= other.width || !containsRows(rowRange) ||
        !other.containsRows(rowRange))
        return std::numeric_limits<double>::infinity();
    double sum = 0;
    for (int y = rowRange.start; y < rowRange.end(); ++y) sum += std::fabs(at(x, y) - other.at(otherX, y));
    return sum / rowRange.height;
}

double ScrollPatch::columnTexture(int x, ScrollBand rowRange) const {
    const int pairs = rowRange.height - 1;
    if (pairs < 1 || x < 0 || x >= width || !containsRows(rowRange)) return 0;
    double sum = 0;
    for (int y = rowRange.start; y + 1 < rowRange.end(); ++y) sum += std::fabs(at(x, y + 1) - at(x, y));
    return sum / pairs;
}

} // namespace tosvar
