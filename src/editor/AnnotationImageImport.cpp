#include "AnnotationImageImport.h"

#include "ImageDownscale.h"
#include "PngEncoder.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tosvar::AnnotationImageImport {

double maxPixel(Size canvas) { return std::clamp(2 * std::max(canvas.width, canvas.height), 256.0, 4096.0); }

Expected<AnnotationImage> payload(std::span<const std::uint8_t> encoded, double maxPixel, const Decoder& decode) {
    Expected<ImageBuffer> decoded = decode(encoded);
    if (!decoded) return Error{"The pasted or dropped data is not an image: " + decoded.error().message};
    const ImageBuffer& image = *decoded;
    if (image.isEmpty()) return Error{"The pasted or dropped data is not an image: it has no pixels"};

    const int longest = std::max(image.width(), image.height());
    if (longest <= maxPixel) {
        return AnnotationImage{Uuid::random(), SharedBytes(std::vector<std::uint8_t>(encoded.begin(), encoded.end())),
                               static_cast<double>(image.width()), static_cast<double>(image.height())};
    }

    const double target = std::max(1.0, std::floor(maxPixel));
    const double scale = target / longest;
    const auto side = [&](int length) { return std::max(1, static_cast<int>(std::lround(length * scale))); };
    const ImageBuffer reduced = ImageDownscale::areaAverage(image, side(image.width()), side(image.height()));
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(reduced);
    if (!png) return Error{"The picture could not be stored: " + png.error().message};
    return AnnotationImage{Uuid::random(), SharedBytes(std::move(png).value()), static_cast<double>(reduced.width()),
                           static_cast<double>(reduced.height())};
}

Rect placement(Size pixelSize, Size canvasSize, std::optional<Point> anchor, double pointsPerPixel) {
    // Written so that NaN fails each test as well.
    if (!(pixelSize.width > 0 && pixelSize.height > 0 && canvasSize.width > 0 && canvasSize.height > 0 &&
          pointsPerPixel > 0))
        return Rect(0, 0, 0, 0);
    const double width = pixelSize.width * pointsPerPixel;
    const double height = pixelSize.height * pointsPerPixel;
    const double scale = std::min({1.0, canvasSize.width / 2 / width, canvasSize.height / 2 / height});
    const Size size{std::max(width * scale, 1.0), std::max(height * scale, 1.0)};
    const Point center = anchor.value_or(Point{canvasSize.width / 2, canvasSize.height / 2});
    // On a canvas narrower than one unit the picture cannot fit; it starts at the edge.
    const double x = std::max(0.0, std::min(center.x - size.width / 2, canvasSize.width - size.width));
    const double y = std::max(0.0, std::min(center.y - size.height / 2, canvasSize.height - size.height));
    return Rect({x, y}, size);
}

AnnotationElement element(const AnnotationImage& image, const Rect& rect) {
    return {Uuid::random(), AnnotationKind::image(image), Geometry::rect(rect), AnnotationStyle{}};
}

} // namespace tosvar::AnnotationImageImport
