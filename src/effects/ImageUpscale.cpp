#include "ImageUpscale.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tosvar::ImageUpscale {

namespace {

// Where each of `outputSize` indices samples the source, as the lower
// neighbour and the weight of the upper one in 1/256ths.
struct Tap {
    int lower;
    int upper;
    int weight;
};

std::vector<Tap> taps(int sourceSize, int outputSize) {
    std::vector<Tap> result(static_cast<std::size_t>(outputSize));
    const double step = static_cast<double>(sourceSize) / outputSize;
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double at = (static_cast<double>(i) + 0.5) * step - 0.5;
        const int lower = std::clamp(static_cast<int>(std::floor(at)), 0, sourceSize - 1);
        const int upper = std::min(lower + 1, sourceSize - 1);
        const int weight = at <= 0 ? 0 : static_cast<int>((at - std::floor(at)) * 256 + 0.5);
        result[i] = {lower, upper, std::min(weight, 256)};
    }
    return result;
}

} // namespace

ImageBuffer bilinear(const ImageBuffer& image, int width, int height) {
    if (image.isEmpty() || width < image.width() || height < image.height() || (width == image.width() && height == image.height()))
        return image;
    const std::vector<Tap> columns = taps(image.width(), width);
    const std::vector<Tap> rows = taps(image.height(), height);
    MutableImage out(width, height, image.order(), PixelMemoryFill::uninitialized);
    // One source row pair is blended across once per output row.
    std::vector<int> blended(static_cast<std::size_t>(image.width()) * 4);
    for (int y = 0; y < height; ++y) {
        const Tap& r = rows[y];
        const std::uint8_t* top = image.row(r.lower);
        const std::uint8_t* bottom = image.row(r.upper);
        for (int i = 0; i < image.width() * 4; ++i) blended[i] = top[i] * (256 - r.weight) + bottom[i] * r.weight;
        std::uint8_t* target = out.row(y);
        for (int x = 0; x < width; ++x) {
            const Tap& c = columns[x];
            const int* left = &blended[static_cast<std::size_t>(c.lower) * 4];
            const int* right = &blended[static_cast<std::size_t>(c.upper) * 4];
            for (int k = 0; k < 4; ++k)
                target[4 * x + k] = static_cast<std::uint8_t>((left[k] * (256 - c.weight) + right[k] * c.weight + (1 << 15)) >> 16);
        }
    }
    return std::move(out).freeze();
}

} // namespace tosvar::ImageUpscale
