#include "AnnotationRenderer.h"

#include "AnnotationFonts.h"
#include "ElementDrawing.h"
#include "PngEncoder.h"

#include <algorithm>

namespace tosvar {

std::vector<SkippedElement> AnnotationRenderer::drawElements(const AnnotationDocument& document, DrawingCanvas& canvas,
                                                            MosaicEngine* mosaic, const AnnotationDrawOptions& options) const {
    const AnnotationFonts fonts = AnnotationFonts::of(backend_);
    const Size canvasSize = document.pixelSize();
    std::vector<SkippedElement> skipped;
    bool spotlightsDrawn = false;
    for (std::size_t i = 0; i < document.elements.size(); ++i) {
        const AnnotationElement& element = document.elements[i];
        if (element.kind.is(AnnotationKind::Case::spotlight)) {
            if (spotlightsDrawn) continue;
            spotlightsDrawn = true;
            std::vector<const AnnotationElement*> spotlights;
            for (const AnnotationElement& other : document.elements)
                if (other.kind.is(AnnotationKind::Case::spotlight)) spotlights.push_back(&other);
            ElementDrawing::drawSpotlights(spotlights, canvas, fonts, canvasSize);
            continue;
        }
        const bool hidden = options.hideContentFor && *options.hideContentFor == element.id;
        const ElementDrawing::Options drawing{options.hideWatermarkCenterTile, hidden, hidden};
        if (std::optional<std::string> problem = ElementDrawing::draw(element, canvas, fonts, canvasSize, mosaic, drawing)) {
            skipped.push_back({i, element.id, std::move(*problem)});
        }
    }
    return skipped;
}

std::vector<SkippedElement> AnnotationRenderer::draw(const AnnotationDocument& document, DrawingCanvas& canvas, MosaicEngine* mosaic,
                                                    const AnnotationDrawOptions& options) const {
    const Size size = document.pixelSize();
    canvas.drawImage(document.base(), {0, 0, size.width, size.height}, ImageSampling::nearest);
    return drawElements(document, canvas, mosaic, options);
}

std::optional<ImageBuffer> AnnotationRenderer::render(const AnnotationDocument& document, std::vector<SkippedElement>* skipped) const {
    const ImageBuffer& base = document.base();
    if (base.isEmpty()) return std::nullopt;
    // The canvas starts as a copy of the base, which is what drawing the base
    // over a transparent canvas would give, without blending every pixel.
    std::unique_ptr<ImageCanvas> canvas = backend_.makeCanvas(base);
    if (!canvas) return std::nullopt;
    MosaicEngine mosaic(base, run_, MosaicEngine::Extent::requestedAreas);
    std::vector<SkippedElement> problems = drawElements(document, *canvas, &mosaic);
    if (skipped) *skipped = std::move(problems);
    ImageBuffer image = canvas->finish();
    if (document.cropRect) {
        const Rect crop = document.cropRect->standardized().integral().intersection(document.imageBounds());
        if (!crop.isNull() && !crop.isEmpty()) {
            const PixelRect pixels{static_cast<int>(crop.minX()), static_cast<int>(crop.minY()), static_cast<int>(crop.width()),
                                   static_cast<int>(crop.height())};
            ImageBuffer cropped = image.cropped(pixels);
            if (!cropped.isEmpty()) return cropped;
        }
    }
    return image;
}

std::optional<std::vector<std::uint8_t>> AnnotationRenderer::renderPNG(const AnnotationDocument& document) const {
    const std::optional<ImageBuffer> image = render(document);
    if (!image) return std::nullopt;
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(*image);
    if (!png) return std::nullopt;
    return std::move(*png);
}

std::optional<std::vector<std::uint8_t>> AnnotationRenderer::roundedPNG(const ImageBuffer& image, double cornerRadius) const {
    if (image.isEmpty()) return std::nullopt;
    std::optional<ImageBuffer> out = image;
    if (cornerRadius > 0.5) {
        std::unique_ptr<ImageCanvas> canvas = backend_.makeCanvas(image.width(), image.height());
        if (!canvas) return std::nullopt;
        const Rect bounds{0, 0, static_cast<double>(image.width()), static_cast<double>(image.height())};
        CanvasPath corners;
        corners.addRoundedRect(bounds, std::min(cornerRadius, std::min(bounds.width(), bounds.height()) / 2));
        canvas->clip(corners);
        canvas->drawImage(image, bounds, ImageSampling::nearest);
        out = canvas->finish();
    }
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(*out);
    if (!png) return std::nullopt;
    return std::move(*png);
}

} // namespace tosvar
