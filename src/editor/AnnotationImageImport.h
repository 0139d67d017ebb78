#pragma once

#include "AnnotationElement.h"
#include "AnnotationImage.h"
#include "Expected.h"
#include "ImageBuffer.h"
#include "PngDecoder.h"
#include "Rect.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

// Pictures pasted or dropped into a document: how large they may be stored,
// where they land, and the element that holds them.
namespace tosvar::AnnotationImageImport {

// Turns encoded bytes into pixels (the first frame, for formats with several).
using Decoder = std::function<Expected<ImageBuffer>(std::span<const std::uint8_t>)>;

// The longest side, in pixels, a picture is stored at on a canvas of `canvas`
// pixels: twice the canvas's longer side, from 256 to 4096.
double maxPixel(Size canvas);

// The picture as an `AnnotationImage` with a new id and its pixel size. One
// whose longer side is within `maxPixel` keeps its bytes as they are; a
// larger one is reduced by area averaging until its longer side is `maxPixel`
// (whole pixels) and stored as PNG. Bytes that `decode` rejects give an error.
Expected<AnnotationImage> payload(std::span<const std::uint8_t> encoded, double maxPixel,
                                  const Decoder& decode = PngDecoder::decode);

// Where a picture of `pixelSize` lands on a canvas of `canvasSize`, with
// `pointsPerPixel` canvas units per picture pixel: at most half the canvas in
// each direction and never enlarged, at least 1 by 1, centred on `anchor` (the
// canvas's centre without one) and moved as far as needed to stay inside the
// canvas. Any size or scale that is not positive gives the zero rectangle.
Rect placement(Size pixelSize, Size canvasSize, std::optional<Point> anchor, double pointsPerPixel);

// A new `image` element showing `image` in `rect`, in the default style.
AnnotationElement element(const AnnotationImage& image, const Rect& rect);

} // namespace tosvar::AnnotationImageImport
