#pragma once

#include "ImageBuffer.h"
#include "ScrollBand.h"

#include <optional>
#include <vector>

namespace tosvar {

// A frame as a gray matrix of floats (0-255), the working form of matching.
// Rows are never resampled, only columns, so row `y` is the frame's row `y`.
struct ScrollPatch {
    int width = 0;
    int height = 0;
    std::vector<float> pixels; // width * height, row by row

    // Gray of the frame without its `trailingInset` rightmost columns (see
    // ScrollGray::sourceWidth), reduced to at most `maxColumns` columns.
    // Nothing when no gray can be made.
    static std::optional<ScrollPatch> fromImage(const ImageBuffer& image, int maxColumns, int trailingInset);

    const float* row(int y) const { return pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
    float at(int x, int y) const { return row(y)[x]; }

    // Block means over `rowScale` rows and `colScale` columns; the last row
    // block takes the rows that are left. Scales of at most 1 give a copy.
    ScrollPatch coarsened(int rowScale, int colScale) const;

    // Per row, the mean over the columns of |row[y + 1] - row[y]|; the last
    // row repeats the one before it. This is the "texture" every gate reads.
    std::vector<float> rowTexture() const;

    // Mean over the columns of |self[y][x] - other[otherY][x]|. Infinite
    // when either row lies outside its patch.
    double rowMAD(int y, const ScrollPatch& other, int otherY) const;
    // Of the pixels that changed in place (|self[y] - other[y]| above the
    // threshold), how far they are from the shifted row: their summed
    // |self[y] - other[otherY]| over the full width.
    double changedRowMAD(int y, const ScrollPatch& other, int otherY, double inPlaceThreshold) const;
    // Mean over the rows of the range of |self[y][x] - other[y][otherX]|; 0
    // for an empty range.
    double columnMAD(int x, const ScrollPatch& other, int otherX, ScrollBand rowRange) const;
    // Mean of |self[y + 1][x] - self[y][x]| over the row pairs of the range;
    // 0 with fewer than one pair.
    double columnTexture(int x, ScrollBand rowRange) const;

    bool containsRow(int y) const { return y >= 0 && y < height; }
    bool containsRows(ScrollBand band) const { return band.start >= 0 && band.end() <= height; }

    friend bool operator==(const ScrollPatch&, const ScrollPatch&) = default;
};

} // namespace tosvar
