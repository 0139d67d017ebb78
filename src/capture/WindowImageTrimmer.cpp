#include "WindowImageTrimmer.h"

#include <algorithm>

namespace tosvar::WindowImageTrimmer {

namespace {

// Alpha of the pixel at (x, y), through the image's channel layout.
struct AlphaReader {
    const ImageBuffer& image;
    int alphaOffset = channelOffsets(image.order()).a;
    bool isContent(int x, int y) const { return image.row(y)[4 * x + alphaOffset] > marginAlpha; }
    bool rowHasContent(int y) const {
        for (int x = 0; x < image.width(); ++x)
            if (isContent(x, y)) return true;
        return false;
    }
    bool columnHasContent(int x) const {
        for (int y = 0; y < image.height(); ++y)
            if (isContent(x, y)) return true;
        return false;
    }
};

// The first index from the outside, walking `steps` inwards, whose line holds
// content; none within the depth.
template <typename HasContent>
std::optional<int> firstContent(int start, int step, int size, HasContent hasContent) {
    const int depth = std::min(maxDepth, size);
    for (int i = 0; i < depth; ++i) {
        const int index = start + step * i;
        if (hasContent(index)) return index;
    }
    return std::nullopt;
}

} // namespace

std::optional<TrimmedWindowImage> trimmedToOpaqueContent(const ImageBuffer& image) {
    const int width = image.width();
    const int height = image.height();
    if (width < 1 || height < 1) return std::nullopt;
    const AlphaReader alpha{image};
    auto row = [&](int y) { return alpha.rowHasContent(y); };
    auto column = [&](int x) { return alpha.columnHasContent(x); };

    const std::optional<int> top = firstContent(0, 1, height, row);
    if (!top) return std::nullopt;
    const std::optional<int> bottom = firstContent(height - 1, -1, height, row);
    if (!bottom) return std::nullopt;
    const std::optional<int> left = firstContent(0, 1, width, column);
    if (!left) return std::nullopt;
    const std::optional<int> right = firstContent(width - 1, -1, width, column);
    if (!right) return std::nullopt;
    if (*right < *left || *bottom < *top) return std::nullopt;

    const PixelRect box{*left, *top, *right - *left + 1, *bottom - *top + 1};
    if (box.width == width && box.height == height) return std::nullopt;
    return TrimmedWindowImage{image.cropped(box), box};
}

std::map<std::uint32_t, TrimmedWindowImage> trims(const std::map<std::uint32_t, ImageBuffer>& images) {
    std::map<std::uint32_t, TrimmedWindowImage> trimmed;
    for (const auto& [id, image] : images)
        if (auto result = trimmedToOpaqueContent(image)) trimmed.emplace(id, std::move(*result));
    return trimmed;
}

} // namespace tosvar::WindowImageTrimmer
