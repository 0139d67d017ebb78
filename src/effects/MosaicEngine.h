#pragma once

#include "ImageBuffer.h"
#include "ParallelRunner.h"

#include <map>
#include <optional>

namespace tosvar {

// An effect bitmap and the part of the canvas it covers.
struct EffectImage {
    ImageBuffer image;
    PixelRect placement;
};

// The whole-canvas pixelated and blurred versions of one base image, which
// mosaic and blur regions reveal through a clip. Each is made once per block
// size or radius; a cache that would pass six entries starts over, so an
// editor dragging a region only clips the same bitmap again. An engine made
// for one flattening instead computes just the areas asked for, since a few
// small regions should not pay for a blur of a whole 5K screen. The results
// keep the base's byte order. Not thread-safe: one engine per drawing thread;
// the kernels themselves spread over `run`.
class MosaicEngine {
public:
    static constexpr std::size_t maxCachedBeforeReset = 5;

    enum class Extent { wholeCanvas, requestedAreas };

    explicit MosaicEngine(ImageBuffer base, ParallelRunner run = runSerially, Extent extent = Extent::wholeCanvas)
        : base_(std::move(base)), run_(std::move(run)), extent_(extent) {}

    const ImageBuffer& base() const { return base_; }

    // Blocks of the average colour, on a grid anchored at the image's centre.
    // Block sizes below 1 count as 1.
    std::optional<ImageBuffer> pixelated(double blockSize);
    // A Gaussian blur of standard deviation `radius` with the edges extended,
    // so borders stay dense. Radii below 0 count as 0.
    std::optional<ImageBuffer> blurred(double radius);

    // The effect over at least `area` of the canvas: the whole cached bitmap,
    // or, for an engine of requested areas, that area alone (clipped to the
    // image). None for an area outside the image.
    std::optional<EffectImage> pixelated(double blockSize, const PixelRect& area);
    std::optional<EffectImage> blurred(double radius, const PixelRect& area);

    std::size_t cachedPixelations() const { return pixelCache_.size(); }
    std::size_t cachedBlurs() const { return blurCache_.size(); }

private:
    static void store(std::map<double, ImageBuffer>& cache, double key, const ImageBuffer& image);

    ImageBuffer base_;
    ParallelRunner run_;
    Extent extent_;
    std::map<double, ImageBuffer> pixelCache_;
    std::map<double, ImageBuffer> blurCache_;
};

// The kernels behind the engine, on premultiplied 4-channel pixels of any byte
// order (every channel is treated alike).
namespace PixelKernels {

// Each block of the grid anchored at the image's centre filled with its mean,
// rounded; only the blocks that meet `area` (the whole image by default) are
// computed, and the result covers `area` clipped to the image.
ImageBuffer pixelate(const ImageBuffer& image, double blockSize, const ParallelRunner& run = runSerially,
                     std::optional<PixelRect> area = std::nullopt);

// A Gaussian blur of deviation `sigma` over edge-extended pixels. Large
// deviations are blurred on a copy reduced by a power of two (by block means)
// and brought back by bilinear interpolation, which together add about a
// quarter of the square of the factor to the variance; the blur of the reduced
// copy makes up the rest. The result stays within a few levels of a direct
// blur and costs about the same at any sigma.
ImageBuffer blur(const ImageBuffer& image, double sigma, const ParallelRunner& run = runSerially);
// The blur of `area` (clipped to the image), computed from the area and three
// deviations around it, which is all a Gaussian reaches.
ImageBuffer blurArea(const ImageBuffer& image, double sigma, const PixelRect& area, const ParallelRunner& run = runSerially);

// The reduction factor `blur` uses for `sigma`: 1 below 3, then the power of
// two that leaves a deviation of 1.5 to 3 reduced pixels, at most 16.
int reductionFactor(double sigma);

} // namespace PixelKernels

} // namespace tosvar
