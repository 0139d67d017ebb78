#pragma once

#include "ImageBuffer.h"

#include <map>
#include <optional>

namespace tosvar {

// The whole-canvas pixelated and blurred versions of one base image, which
// mosaic and blur regions reveal through a clip. Each is made once per block
// size or radius; a cache that would pass six entries starts over. Not
// thread-safe: one engine per drawing thread.
class MosaicEngine {
public:
    static constexpr std::size_t maxCachedBeforeReset = 5;

    explicit MosaicEngine(ImageBuffer base) : base_(base.converted(PixelOrder::rgba)) {}

    const ImageBuffer& base() const { return base_; }

    // Blocks of the average colour, on a grid anchored at the image's centre.
    // Block sizes below 1 count as 1.
    std::optional<ImageBuffer> pixelated(double blockSize);
    // A Gaussian blur with the edges extended, so borders stay dense. Radii
    // below 0 count as 0.
    std::optional<ImageBuffer> blurred(double radius);

    std::size_t cachedPixelations() const { return pixelCache_.size(); }
    std::size_t cachedBlurs() const { return blurCache_.size(); }

private:
    static void store(std::map<double, ImageBuffer>& cache, double key, const ImageBuffer& image);

    ImageBuffer base_;
    std::map<double, ImageBuffer> pixelCache_;
    std::map<double, ImageBuffer> blurCache_;
};

} // namespace tosvar
