// Mosaic, blur and magnifier regions, and the spotlights' veil: the elements
// that show the base image (or hide it) through a region rather than paint
// over it. Image pixels, y down, as in ElementDrawing.cpp.
#include "ElementDrawing.h"

#include "ElementRotation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tosvar::ElementDrawing {

namespace {

using Case = AnnotationKind::Case;

// The element's rotation about its centre, when its kind turns and a turn is set.
std::optional<AffineTransform> regionRotation(const AnnotationFonts& fonts, const AnnotationElement& element) {
    const std::optional<double> rotation = element.style.rotation;
    if (!ElementRotation::supportsRotation(element.kind.kindCase()) || !rotation || *rotation == 0) return std::nullopt;
    const Point c = ElementRotation::center(fonts.regular, element);
    return AffineTransform::translation(-c.x, -c.y)
        .concatenating(AffineTransform::rotation(*rotation * std::numbers::pi / 180))
        .concatenating(AffineTransform::translation(c.x, c.y));
}

CanvasPath rotated(CanvasPath path, const AnnotationFonts& fonts, const AnnotationElement& element) {
    if (const std::optional<AffineTransform> turn = regionRotation(fonts, element)) return path.transformed(*turn);
    return path;
}

// The hole of a spotlight, or the clip of a rect region: corners rounded by
// the style's radius (at most half the smaller side), turned.
CanvasPath roundedRegion(const Rect& rect, const AnnotationFonts& fonts, const AnnotationElement& element) {
    const Rect r = rect.standardized();
    const double radius = std::min(element.style.cornerRadius, std::min(r.width(), r.height()) / 2);
    CanvasPath path;
    if (radius > 0) path.addRoundedRect(r, radius);
    else path.addRect(r);
    return rotated(std::move(path), fonts, element);
}

// What a region reveals its effect through: the inside of a path, or the band
// a brushed path's stroke covers.
struct RegionClip {
    CanvasPath path;
    std::optional<StrokeStyle> stroke;

    // The image pixels the clip can reach.
    PixelRect area() const {
        const Rect bounds = path.controlBounds();
        if (bounds.isNull()) return {};
        const double grow = (stroke ? stroke->width / 2 : 0) + 1;
        const Rect reach = bounds.insetBy(-grow, -grow).integral();
        // Coordinates are sane by now; the clamp only keeps the ints in range.
        auto edge = [](double v) { return static_cast<int>(std::clamp(v, -1.0, 1e8)); };
        const int x0 = edge(reach.minX()), y0 = edge(reach.minY());
        return {x0, y0, edge(reach.maxX()) - x0, edge(reach.maxY()) - y0};
    }

    void apply(DrawingCanvas& canvas) const {
        if (stroke) canvas.clipToStroke(path, *stroke);
        else canvas.clip(path);
    }
};

RegionClip regionClip(const AnnotationFonts& fonts, const AnnotationElement& element) {
    const AnnotationStyle& style = element.style;
    if (const std::vector<Point>* points = element.geometry.asPath(); points && points->size() >= 2) {
        std::vector<Point> world;
        for (const Point& p : *points) world.push_back(ElementRotation::toWorld(fonts.regular, p, element));
        CanvasPath path;
        path.addPolyline(world);
        return {std::move(path), StrokeStyle{std::max({style.lineWidth, style.mosaicBlockSize, 24.0}), LineCap::round, LineJoin::round, {}, 0}};
    }
    if (const Rect* rect = element.geometry.asRect()) return {roundedRegion(*rect, fonts, element), std::nullopt};
    CanvasPath box;
    box.addRect(element.geometry.boundingBox());
    return {rotated(std::move(box), fonts, element), std::nullopt};
}

double borderWidth(const AnnotationStyle& style) { return style.outlineWidth.value_or(style.lineWidth); }

// The region's shadow: its outline, grown by half the border when a border is
// drawn, filled black under a soft shadow; the region then covers the fill.
void drawRegionShadow(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element) {
    const AnnotationStyle& style = element.style;
    if (!style.shadow) return;
    const std::optional<CanvasPath> outline =
        regionOutlinePath(element, fonts, style.textOutline ? borderWidth(style) / 2 : 0);
    if (!outline) return;
    canvas.save();
    const ShadowMetrics metrics = shadowMetrics(style, 5);
    canvas.setShadow(CanvasShadow{metrics.offset, metrics.blur, {0, 0, 0, 0.5}});
    canvas.fill(*outline, RGBAColor::Palette::black);
    canvas.restore();
}

void drawRegionBorder(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element) {
    const AnnotationStyle& style = element.style;
    if (!style.textOutline) return;
    const std::optional<CanvasPath> border = regionOutlinePath(element, fonts, 0);
    if (!border) return;
    canvas.save();
    canvas.stroke(*border, style.strokeColor, {borderWidth(style), LineCap::butt, LineJoin::miter, {}, 0});
    canvas.restore();
}

} // namespace

std::optional<CanvasPath> regionOutlinePath(const AnnotationElement& element, const AnnotationFonts& fonts, double expandedBy) {
    const Rect* rect = element.geometry.asRect();
    if (!rect) return std::nullopt;
    const double e = expandedBy;
    const Rect grown = rect->standardized().insetBy(-e, -e);
    const double halfSide = std::min(grown.width(), grown.height()) / 2;
    const double r = std::min(element.style.cornerRadius, halfSide - e);
    CanvasPath path;
    if (r > 0) path.addRoundedRect(grown, std::min(e + r, halfSide));
    else path.addRect(grown);
    return rotated(std::move(path), fonts, element);
}

std::optional<std::string> drawRegionEffect(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element,
                                            Size canvasSize, MosaicEngine* mosaic) {
    if (!mosaic) return std::nullopt;
    const AnnotationStyle& style = element.style;
    const Rect whole{0, 0, canvasSize.width, canvasSize.height};
    if (element.kind.is(Case::magnifier)) {
        const Rect* rect = element.geometry.asRect();
        if (!rect) return "its geometry is not a rectangle";
        drawRegionShadow(canvas, fonts, element);
        canvas.save();
        regionClip(fonts, element).apply(canvas);
        const double zoom = std::max(style.magnifierZoom.value_or(4), 1.0);
        const Point m = rect->standardized().center();
        const Size offset = style.magnifierOffset.value_or(Size{});
        canvas.concatenate(AffineTransform::translation(-(m.x + offset.width), -(m.y + offset.height))
                               .concatenating(AffineTransform::scale(zoom, zoom))
                               .concatenating(AffineTransform::translation(m.x, m.y)));
        canvas.drawImage(mosaic->base(), whole, ImageSampling::smooth);
        canvas.restore();
        drawRegionBorder(canvas, fonts, element);
        return std::nullopt;
    }
    const RegionClip clip = regionClip(fonts, element);
    const PixelRect area = clip.area();
    const std::optional<EffectImage> effect =
        element.kind.is(Case::mosaic) ? mosaic->pixelated(style.mosaicBlockSize, area) : mosaic->blurred(style.blurRadius, area);
    if (!effect) return std::nullopt;
    drawRegionShadow(canvas, fonts, element);
    canvas.save();
    clip.apply(canvas);
    const PixelRect& at = effect->placement;
    canvas.drawImage(effect->image, {static_cast<double>(at.x), static_cast<double>(at.y), static_cast<double>(at.width),
                                     static_cast<double>(at.height)}, ImageSampling::nearest);
    canvas.restore();
    drawRegionBorder(canvas, fonts, element);
    return std::nullopt;
}

void drawSpotlights(std::span<const AnnotationElement* const> spotlights, DrawingCanvas& canvas, const AnnotationFonts& fonts,
                    Size canvasSize) {
    if (spotlights.empty()) return;
    const RGBAColor veil = spotlights.front()->style.fillColor.value_or(RGBAColor{0, 0, 0, 0.5});
    CanvasPath everything;
    everything.addRect({0, 0, canvasSize.width, canvasSize.height});

    canvas.save();
    canvas.beginLayer();
    canvas.fill(everything, veil);
    canvas.setBlendMode(BlendMode::clear);
    for (const AnnotationElement* spotlight : spotlights)
        if (const Rect* rect = spotlight->geometry.asRect()) canvas.fill(roundedRegion(*rect, fonts, *spotlight), RGBAColor::Palette::black);
    canvas.endLayer();
    canvas.restore();

    for (const AnnotationElement* spotlight : spotlights) {
        const Rect* rect = spotlight->geometry.asRect();
        if (!rect) continue;
        const AnnotationStyle& style = spotlight->style;
        const CanvasPath hole = roundedRegion(*rect, fonts, *spotlight);
        if (style.shadow) {
            canvas.save();
            // The canvas and the hole as one even-odd path: everything but the hole.
            CanvasPath outside = everything;
            outside.append(hole);
            canvas.clip(outside, FillRule::evenOdd);
            const ShadowMetrics metrics = shadowMetrics(style, 5);
            canvas.setShadow(CanvasShadow{metrics.offset, metrics.blur, {0, 0, 0, 0.5}});
            canvas.fill(hole, RGBAColor::Palette::black);
            canvas.restore();
        }
        if (style.textOutline) {
            canvas.save();
            canvas.stroke(hole, style.strokeColor, {borderWidth(style), LineCap::butt, LineJoin::miter, {}, 0});
            canvas.restore();
        }
    }
}

} // namespace tosvar::ElementDrawing
