#pragma once

#include "ImageBuffer.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tosvar {

// A frame in 8-bit gray at full horizontal resolution, where small text
// differs by whole pixels.
struct ScrollFullGray {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes; // row by row

    // Same inset rule and conversion as ScrollPatch, with every source column.
    static std::optional<ScrollFullGray> fromImage(const ImageBuffer& image, int trailingInset);

    const std::uint8_t* row(int y) const {
        return bytes.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }

    // Per column block (`max(width / blocks, 1)` wide, `width / blockWidth`
    // blocks), over rows y0, y0 + rowStep, ... below y1: the share of
    // neighbour pairs in a row that differ by more than `tol`.
    std::vector<double> edgeRates(int y0, int y1, int blocks, int tol, int rowStep) const;
    // The same blocks and rows: the share of cells with
    // |shifted[y + delta][x] - self[y][x]| above `tol`. Rows whose partner
    // lies outside `shifted` count as matching.
    std::vector<double> mismatchRates(const ScrollFullGray& shifted, int delta, int y0, int y1, int blocks, int tol,
                                      int rowStep) const;
};

// The grays of the last two frames, so consecutive arbitrations convert each
// frame once. Shared by every copy of a stitcher; any thread may ask. The
// lock guards only the entry list: a conversion runs outside it, so two
// threads may build the same gray and the second stores a duplicate.
class ScrollFullGrayCache {
public:
    // The gray of `image` (looked up by its identity); null when the image
    // cannot be converted, and then nothing is stored.
    std::shared_ptr<const ScrollFullGray> gray(const ImageBuffer& image, int trailingInset);

private:
    struct Entry {
        std::uint64_t identity = 0;
        int trailingInset = 0;
        std::shared_ptr<const ScrollFullGray> gray;
    };
    static constexpr std::size_t capacity = 2;

    std::mutex lock_;
    std::vector<Entry> entries_; // oldest first
};

} // namespace tosvar
