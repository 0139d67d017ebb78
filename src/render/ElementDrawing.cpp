#include "ElementDrawing.h"

#include "AnnotationImageDecodeCache.h"
#include "ElementRotation.h"
#include "LeaderSupport.h"
#include "SegmentCurve.h"
#include "StepBadgeLabel.h"
#include "TranslatedTextLayout.h"
#include "WatermarkLayout.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string_view>

// Everything here works in image pixels with y down, where the platform the
// rules were first written for draws with y up. Each rule is turned over once:
// a flipped point is the stored point, a rotation by -a in y-up space is a
// clockwise turn by +a here, and an offset's height changes sign.
namespace tosvar::ElementDrawing {

namespace {

using Case = AnnotationKind::Case;

// Coordinates beyond this are no drawing anyone made; they would only stall
// the rasteriser.
constexpr double coordinateLimit = 1e7;

double radians(double degrees) { return degrees * std::numbers::pi / 180; }

double length(Point p) { return std::hypot(p.x, p.y); }

Point lerp(Point a, Point b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

// The turn of an element's body about its rotation centre, clockwise on screen.
AffineTransform rotationAbout(Point centre, double degrees) {
    return AffineTransform::translation(-centre.x, -centre.y)
        .concatenating(AffineTransform::rotation(radians(degrees)))
        .concatenating(AffineTransform::translation(centre.x, centre.y));
}

void applyBodyRotation(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element) {
    const double degrees = ElementRotation::degrees(element);
    if (degrees == 0) return;
    canvas.concatenate(rotationAbout(ElementRotation::center(fonts.regular, element), degrees));
}

// The contrast extra of lines and arrows.
double contrastExtra(const AnnotationStyle& style) {
    return style.outlineWidth ? std::max(*style.outlineWidth, 0.5) : std::max(style.lineWidth / 4, 2.0);
}

std::vector<double> lineDash(const AnnotationElement& element) {
    if (!element.style.dashed) return {};
    const double d = element.style.dashLength.value_or(element.defaultDashLength());
    return {d, std::max(0.6 * d, 2.0) * element.dashGapScale()};
}

StrokeStyle roundStroke(double width, std::vector<double> dashes = {}) {
    return {width, LineCap::round, LineJoin::round, std::move(dashes), 0};
}

void setShadow(DrawingCanvas& canvas, const AnnotationStyle& style, double defaultBlur, RGBAColor color) {
    const ShadowMetrics metrics = shadowMetrics(style, defaultBlur);
    canvas.setShadow(CanvasShadow{metrics.offset, metrics.blur, color});
}

// Cumulative lengths along a polyline, starting at 0.
std::vector<double> cumulativeLengths(const std::vector<Point>& points) {
    std::vector<double> out(points.size(), 0.0);
    for (std::size_t i = 1; i < points.size(); ++i) out[i] = out[i - 1] + length(points[i] - points[i - 1]);
    return out;
}

// The unit normal at spine point i, (-dy, dx) of the central difference.
Point spineNormal(const std::vector<Point>& spine, std::size_t i, double minimumLength) {
    const Point d = spine[std::min(i + 1, spine.size() - 1)] - spine[i == 0 ? 0 : i - 1];
    const double len = std::max(length(d), minimumLength);
    return {-d.y / len, d.x / len};
}

// Round cap at the tail: an arc about `centre` of `radius` from the right
// offset (`centre - normal * radius`) round the back to the left one.
void roundTail(CanvasPath& path, Point centre, Point normal, Point direction, double radius) {
    const double from = std::atan2(-normal.y, -normal.x);
    const double back = std::atan2(-direction.y, -direction.x);
    const double sign = std::cos(from + std::numbers::pi / 2 - back) > 0 ? 1.0 : -1.0;
    path.addArc(centre, radius, from, from + sign * std::numbers::pi);
}

// ---- Lines and arrows ----

void strokeLine(DrawingCanvas& canvas, const AnnotationElement& element, const Geometry::Segment& segment) {
    const AnnotationStyle& style = element.style;
    CanvasPath path;
    if (SegmentCurve::midPoints(style)) {
        path.addPolyline(SegmentCurve::spine(segment.from, segment.to, style, 24));
    } else if (style.curvature == 0) {
        path.moveTo(segment.from);
        path.lineTo(segment.to);
    } else {
        path.moveTo(segment.from);
        path.quadTo(SegmentCurve::control(segment.from, segment.to, style.curvature), segment.to);
    }
    const std::vector<double> dashes = lineDash(element);
    if (style.outline) {
        canvas.stroke(path, outlineColor(style.strokeColor), roundStroke(style.lineWidth + 2 * contrastExtra(style), dashes));
    }
    canvas.stroke(path, style.strokeColor, roundStroke(style.lineWidth, dashes));
}

void drawArrow(DrawingCanvas& canvas, const AnnotationElement& element, const Geometry::Segment& segment) {
    const AnnotationStyle& style = element.style;
    const bool override = SegmentCurve::midPoints(style) != nullptr;
    const Point control = SegmentCurve::control(segment.from, segment.to, style.curvature);
    const std::vector<Point> spine = override ? SegmentCurve::spine(segment.from, segment.to, style, 24)
                                              : SegmentCurve::samples(segment.from, control, segment.to, 64);
    const std::vector<double> along = cumulativeLengths(spine);
    const double total = along.back();
    if (total <= 3) return;

    const double w = std::max(style.lineWidth, 1.0);
    const double naturalHead = std::max(4.2 * w, 12.0);
    const double head = std::min(naturalHead, 0.45 * total);
    const double scaledWidth = w * head / naturalHead;
    const double tailHalf = std::max(0.3 * scaledWidth, 0.75);
    const double shaftHalf = std::max(0.75 * scaledWidth, 1.5);
    const double headHalf = head / 2;

    const double baseAt = total - head;
    std::size_t piece = 0;
    while (piece + 2 < spine.size() && along[piece + 1] < baseAt) ++piece;
    const double pieceLength = std::max(along[piece + 1] - along[piece], 0.001);
    const Point base = lerp(spine[piece], spine[piece + 1], std::clamp((baseAt - along[piece]) / pieceLength, 0.0, 1.0));
    const Point tip = spine.back();
    const Point axis = tip - base;
    const double axisLength = std::max(length(axis), 0.001);
    const Point n{-axis.y / axisLength, axis.x / axisLength};
    const double extra = contrastExtra(style);
    const RGBAColor contrast = outlineColor(style.strokeColor);

    if (!style.dashed) {
        std::vector<Point> left, right;
        for (std::size_t i = 0; i < spine.size() && along[i] < baseAt; ++i) {
            const Point normal = spineNormal(spine, i, 1e-9);
            const double half = tailHalf + (shaftHalf - tailHalf) * along[i] / std::max(baseAt, 1.0);
            left.push_back(spine[i] + normal * half);
            right.push_back(spine[i] - normal * half);
        }
        left.push_back(base + n * shaftHalf);
        right.push_back(base - n * shaftHalf);
        CanvasPath body;
        body.addPolyline(left);
        body.lineTo(base + n * headHalf);
        body.lineTo(tip);
        body.lineTo(base - n * headHalf);
        for (auto p = right.rbegin(); p != right.rend(); ++p) body.lineTo(*p);
        const Point first = spine.size() > 1 ? spine[1] - spine[0] : Point{1, 0};
        roundTail(body, spine[0], spineNormal(spine, 0, 1e-9), first, tailHalf);
        body.close();
        if (style.outline) canvas.stroke(body, contrast, {2 * extra, LineCap::round, LineJoin::round, {}, 0});
        canvas.fill(body, style.strokeColor);
        return;
    }

    CanvasPath shaft;
    if (override) {
        std::vector<Point> points(spine.begin(), spine.begin() + static_cast<std::ptrdiff_t>(piece) + 1);
        points.push_back(base);
        shaft.addPolyline(points);
    } else {
        shaft.moveTo(segment.from);
        shaft.quadTo(lerp(segment.from, control, baseAt / total), base);
    }
    CanvasPath headPath;
    headPath.addPolygon(std::vector<Point>{base + n * headHalf, tip, base - n * headHalf});
    const std::vector<double> dashes = lineDash(element);
    if (style.outline) {
        canvas.stroke(shaft, contrast, roundStroke(scaledWidth + 2 * extra, dashes));
        canvas.stroke(headPath, contrast, roundStroke(2 * extra));
    }
    canvas.stroke(shaft, style.strokeColor, roundStroke(scaledWidth, dashes));
    canvas.fill(headPath, style.strokeColor);
}

// ---- Strokes of points ----

void drawFreehand(DrawingCanvas& canvas, const AnnotationElement& element, const std::vector<Point>& points) {
    CanvasPath path;
    path.addPolyline(SegmentCurve::splineSamples(points, 8));
    if (points.size() == 1) path.lineTo(points[0]); // a click leaves a dot
    canvas.stroke(path, element.style.strokeColor, roundStroke(element.style.lineWidth, lineDash(element)));
}

void drawHighlighter(DrawingCanvas& canvas, const AnnotationElement& element, const std::vector<Point>& points) {
    CanvasPath path;
    path.addPolyline(points);
    if (points.size() == 1) path.lineTo(points[0]);
    canvas.setBlendMode(BlendMode::multiply);
    canvas.setAlpha(element.style.opacity * 0.4);
    canvas.stroke(path, element.style.strokeColor, roundStroke(std::max(element.style.lineWidth, 1.0) * 3));
}

void drawShape(DrawingCanvas& canvas, const AnnotationElement& element, const Rect& rect) {
    const AnnotationStyle& style = element.style;
    CanvasPath path;
    if (element.kind.is(Case::ellipse)) {
        path.addEllipse(rect);
    } else if (style.cornerRadius > 0) {
        path.addRoundedRect(rect, style.cornerRadius);
    } else {
        path.addRect(rect);
    }
    if (style.fillColor) canvas.fill(path, *style.fillColor);
    canvas.stroke(path, style.strokeColor, {style.lineWidth, LineCap::butt, LineJoin::miter, lineDash(element), 0});
}

// ---- Leaders of texts and badges ----

struct LeaderPath {
    Point start;
    Point tip;
    std::optional<Point> control;
    std::optional<std::vector<Point>> spine;
};

LeaderPath leaderPath(const AnnotationStyle& style, Point start, Point tip) {
    LeaderPath path{start, tip, std::nullopt, std::nullopt};
    if (const std::vector<Point>* mids = SegmentCurve::midPoints(style)) {
        std::vector<Point> through{start};
        through.insert(through.end(), mids->begin(), mids->end());
        through.push_back(tip);
        path.spine = SegmentCurve::splineSamples(through, 12);
    } else if (style.curvature != 0) {
        path.control = SegmentCurve::control(start, tip, style.curvature);
    }
    return path;
}

// A dashed leader: dashed shaft up to the head, solid head.
void drawDashedLeader(DrawingCanvas& canvas, const AnnotationStyle& style, const LeaderShape& shape, double width) {
    const double d = std::max(style.dashLength.value_or(36), 4.0);
    const std::vector<double> dashes{d, 0.9 * d};
    std::vector<Point> points(shape.spine.begin(), shape.spine.begin() + static_cast<std::ptrdiff_t>(shape.baseIndex) + 1);
    points.push_back(shape.base);
    CanvasPath shaft;
    shaft.addPolyline(points);
    CanvasPath head;
    head.addPolygon(std::vector<Point>{shape.base + shape.headNormal * shape.headHalf, shape.tip,
                                       shape.base - shape.headNormal * shape.headHalf});
    if (style.textOutline) {
        const double e = std::max(width / 4, 2.0);
        const RGBAColor contrast = outlineColor(style.strokeColor);
        canvas.stroke(shaft, contrast, roundStroke(width + 2 * e, dashes));
        canvas.stroke(head, contrast, roundStroke(2 * e));
    }
    canvas.stroke(shaft, style.strokeColor, roundStroke(width, dashes));
    canvas.fill(head, style.strokeColor);
}

std::optional<LeaderShape> shapeOf(const LeaderPath& path, double width) {
    return leaderShape(path.start, path.tip, path.control, path.spine, width);
}

void drawTextLeader(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element) {
    const AnnotationStyle& style = element.style;
    if (!style.leaderTip) return;
    const std::optional<Point> start = LeaderSupport::leaderStart(fonts.regular, element);
    if (!start) return;
    const double width = style.leaderWidth.value_or(8);
    const std::optional<LeaderShape> shape = shapeOf(leaderPath(style, *start, *style.leaderTip), width);
    if (!shape) return;
    if (style.dashed) return drawDashedLeader(canvas, style, *shape, width);
    const CanvasPath arrow = leaderArrowPath(*shape);
    if (style.textOutline) {
        const double e = style.outlineWidth ? *style.outlineWidth
                         : style.leaderWidth ? std::max(0.3 * *style.leaderWidth, 2.0)
                                             : 2.4;
        canvas.stroke(arrow, outlineColor(style.strokeColor), roundStroke(2 * e));
    }
    canvas.fill(arrow, style.strokeColor);
}

// ---- Text ----

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text.find('\n', start);
        lines.push_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    return lines;
}

void drawText(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element, bool hideGlyphs) {
    drawTextLeader(canvas, fonts, element);
    const std::string& text = element.kind.textPayload();
    if (hideGlyphs || text.empty()) return;
    const AnnotationStyle& style = element.style;
    const Point origin = element.geometry.asPoint() ? *element.geometry.asPoint() : element.geometry.boundingBox().center();
    const FontLineMetrics metrics = fonts.regular.metrics(style.fontSize);
    const double step = 1.25 * metrics.lineHeight();
    canvas.save();
    applyBodyRotation(canvas, fonts, element);
    const std::vector<std::string_view> lines = splitLines(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty()) continue;
        const Point baseline{origin.x, origin.y + metrics.ascent + static_cast<double>(i) * step};
        if (style.textOutline) {
            canvas.drawTextLine(lines[i], FontFace::regular, style.fontSize, baseline, outlineColor(style.strokeColor),
                                style.outlineWidth.value_or(6));
        }
        canvas.drawTextLine(lines[i], FontFace::regular, style.fontSize, baseline, style.strokeColor);
    }
    canvas.restore();
}

// ---- Step badges ----

void drawStepBadge(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element, bool hideNumber) {
    const AnnotationStyle& style = element.style;
    const Point centre = element.geometry.asPoint() ? *element.geometry.asPoint() : element.geometry.boundingBox().center();
    const double r = LeaderSupport::badgeRadius(style);
    CanvasPath disc;
    disc.addEllipse({centre.x - r, centre.y - r, 2 * r, 2 * r});

    std::optional<LeaderShape> leader;
    if (style.leaderTip && length(*style.leaderTip - centre) > 1) {
        Point start = LeaderSupport::leaderStart(fonts.regular, element).value_or(centre);
        const double tuck = style.leaderWidth ? std::max(*style.leaderWidth, 1.0) : 8.0;
        const double distance = length(start - centre);
        if (distance > 0) start = start + (centre - start) * (std::min(tuck, distance) / distance);
        leader = shapeOf(leaderPath(style, start, *style.leaderTip), style.leaderWidth.value_or(8));
    }
    const bool dashedLeader = leader && style.dashed;
    if (dashedLeader) drawDashedLeader(canvas, style, *leader, style.leaderWidth.value_or(8));
    const std::optional<CanvasPath> solidLeader = leader && !style.dashed ? std::optional(leaderArrowPath(*leader)) : std::nullopt;

    if (style.textOutline) {
        const double e = style.outlineWidth.value_or(std::max(r / 10, 2.0));
        const RGBAColor contrast = outlineColor(style.strokeColor);
        if (solidLeader) {
            canvas.stroke(*solidLeader, contrast, roundStroke(2 * e));
            canvas.stroke(disc, contrast, roundStroke(2 * e));
            canvas.fill(*solidLeader, style.strokeColor);
            canvas.fill(disc, style.strokeColor);
        } else {
            canvas.fill(disc, style.strokeColor);
            canvas.stroke(disc, contrast, roundStroke(e));
        }
    } else {
        if (solidLeader) canvas.fill(*solidLeader, style.strokeColor);
        canvas.fill(disc, style.strokeColor);
    }

    const std::string& label = element.kind.textPayload();
    if (hideNumber || label.empty()) return;
    const double size = StepBadgeLabel::fittedFontSize(fonts.bold, label, r);
    const RGBAColor ink = luminance(style.strokeColor) > 0.6 ? RGBAColor::Palette::black : RGBAColor::Palette::white;
    const FontLineMetrics metrics = fonts.bold.metrics(size);
    const double l = metrics.lineHeight();
    const std::vector<std::string_view> lines = splitLines(label);
    const double n = static_cast<double>(lines.size());
    canvas.save();
    applyBodyRotation(canvas, fonts, element);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double width = fonts.bold.lineWidth(lines[i], size);
        canvas.drawTextLine(lines[i], FontFace::bold, size,
                            {centre.x - width / 2, centre.y - l * n / 2 + metrics.ascent + static_cast<double>(i) * l}, ink);
    }
    canvas.restore();
}

// ---- Watermark ----

void drawWatermark(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element, Size canvasSize,
                   bool hideCenterTile) {
    const std::string& text = element.kind.textPayload();
    if (text.empty()) return;
    const AnnotationStyle& style = element.style;
    std::vector<Point> tiles = WatermarkLayout::tileCenters(fonts.regular, text, style.fontSize, style.watermarkAngle,
                                                            style.watermarkSpacing, style.watermarkOffset, canvasSize);
    if (hideCenterTile) {
        const Point centre{canvasSize.width / 2 + style.watermarkOffset.width, canvasSize.height / 2 + style.watermarkOffset.height};
        std::erase_if(tiles, [&](Point p) { return length(p - centre) <= 0.5; });
    }
    std::vector<std::string_view> lines = splitLines(text);
    for (std::string_view& line : lines)
        if (line.empty()) line = " ";
    const FontLineMetrics metrics = fonts.regular.metrics(style.fontSize);
    const double l = metrics.lineHeight();
    const double n = static_cast<double>(std::max<std::size_t>(lines.size(), 1));
    std::vector<double> widths;
    for (std::string_view line : lines) widths.push_back(fonts.regular.lineWidth(line, style.fontSize));
    const double outline = style.textOutline ? style.outlineWidth.value_or(std::max(style.fontSize / 12, 1.5)) : 0;
    const RGBAColor contrast = outlineColor(style.strokeColor);
    // Only tiles whose text can reach the canvas are drawn.
    const double reach = std::hypot(*std::max_element(widths.begin(), widths.end()), l * n) / 2 + outline;
    for (const Point& tile : tiles) {
        if (tile.x < -reach || tile.y < -reach || tile.x > canvasSize.width + reach || tile.y > canvasSize.height + reach) continue;
        canvas.save();
        canvas.concatenate(AffineTransform::rotation(radians(style.watermarkAngle)).concatenating(AffineTransform::translation(tile.x, tile.y)));
        auto baseline = [&](std::size_t i) { return Point{-widths[i] / 2, -l * n / 2 + metrics.ascent + static_cast<double>(i) * l}; };
        if (style.textOutline)
            for (std::size_t i = 0; i < lines.size(); ++i)
                canvas.drawTextLine(lines[i], FontFace::regular, style.fontSize, baseline(i), contrast, outline);
        for (std::size_t i = 0; i < lines.size(); ++i)
            canvas.drawTextLine(lines[i], FontFace::regular, style.fontSize, baseline(i), style.strokeColor);
        canvas.restore();
    }
}

// ---- Pictures and translated blocks ----

std::optional<std::string> drawPicture(DrawingCanvas& canvas, const AnnotationElement& element, const Rect& rect) {
    const AnnotationImage* picture = element.kind.imagePayload();
    if (!picture) return std::nullopt;
    const std::optional<ImageBuffer> pixels = AnnotationImageDecodeCache::shared().image(*picture);
    if (!pixels) return "the picture's bytes are not an image this program reads";
    canvas.save();
    canvas.setAlpha(element.style.opacity);
    canvas.drawImage(*pixels, rect.standardized(), ImageSampling::smooth);
    canvas.restore();
    return std::nullopt;
}

void drawTranslatedBlock(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element, const Rect& rect,
                         bool hideGlyphs) {
    const TranslatedBlock* block = element.kind.blockPayload();
    const Rect box = rect.standardized();
    if (!block || !(box.width() > 0) || !(box.height() > 0)) return;
    const AnnotationStyle& style = element.style;
    canvas.save();
    applyBodyRotation(canvas, fonts, element);
    const double f = std::max(style.fontSize, 1.0);
    const double pad = TranslatedTextLayout::verticalPaddingRatio * f;
    if (style.fillColor) {
        const Rect backdrop = box.insetBy(-std::max(pad, 1.0), -std::max(pad, 1.0));
        CanvasPath path;
        path.addRoundedRect(backdrop, std::min(0.15 * f, std::min(backdrop.width(), backdrop.height()) / 2));
        canvas.fill(path, *style.fillColor);
    }
    const std::string& text = block->displayedText();
    const Rect inner = box.insetBy(TranslatedTextLayout::paddingRatio * f, pad);
    if (hideGlyphs || text.empty() || !(inner.width() > 0) || !(inner.height() > 0)) {
        canvas.restore();
        return;
    }
    CanvasPath clip;
    clip.addRect(box);
    canvas.clip(clip);
    const double extra = TranslatedTextLayout::extraLineSpacing(fonts.regular, text, box.width(), f, box.height());
    const TranslatedTextLayout::Lines lines = TranslatedTextLayout::layOut(fonts.regular, text, f, inner.width(), extra);
    for (const TranslatedTextLayout::Line& line : lines.lines) {
        canvas.drawTextLine(line.text, FontFace::regular, f, {inner.minX(), inner.minY() + line.baseline}, style.strokeColor);
    }
    canvas.restore();
}

// ---- Checks ----

bool sensible(double v) { return std::isfinite(v) && std::abs(v) <= coordinateLimit; }
bool sensible(Point p) { return sensible(p.x) && sensible(p.y); }

std::optional<std::string> unusable(const AnnotationElement& element) {
    const Geometry& g = element.geometry;
    bool ok = true;
    if (const auto* s = g.asSegment()) ok = sensible(s->from) && sensible(s->to);
    if (const auto* r = g.asRect()) ok = sensible(r->origin) && sensible(r->size.width) && sensible(r->size.height);
    if (const auto* p = g.asPath()) ok = std::all_of(p->begin(), p->end(), [](Point q) { return sensible(q); });
    if (const auto* p = g.asPoint()) ok = sensible(*p);
    const AnnotationStyle& s = element.style;
    ok = ok && sensible(s.lineWidth) && sensible(s.fontSize) && sensible(s.cornerRadius) && sensible(s.curvature) &&
         sensible(s.mosaicBlockSize) && sensible(s.blurRadius) && std::abs(s.fontSize) < 1e5 && std::abs(s.lineWidth) < 1e5 &&
         (!s.leaderTip || sensible(*s.leaderTip)) && (!s.midPoints || std::all_of(s.midPoints->begin(), s.midPoints->end(), [](Point q) {
                                                       return sensible(q);
                                                   }));
    if (!ok) return "its coordinates or sizes are out of range";
    return std::nullopt;
}

std::optional<std::string> wrongGeometry(std::string_view wanted) { return "its geometry is not a " + std::string(wanted); }

} // namespace

double luminance(const RGBAColor& c) { return 0.299 * c.red + 0.587 * c.green + 0.114 * c.blue; }

RGBAColor outlineColor(const RGBAColor& color) {
    return luminance(color) > 0.6 ? RGBAColor{0, 0, 0, 0.85} : RGBAColor{1, 1, 1, 0.9};
}

ShadowMetrics shadowMetrics(const AnnotationStyle& style, double defaultBlur) {
    const double blur = style.shadowRadius.value_or(defaultBlur);
    if (style.shadowOffset) return {{style.shadowOffset->width, -style.shadowOffset->height}, blur};
    return {{0, blur / 2}, blur};
}

bool needsGroupCompositing(const AnnotationElement& element) {
    const AnnotationStyle& style = element.style;
    switch (element.kind.kindCase()) {
    case Case::text:
    case Case::stepBadge: return style.textOutline || style.leaderTip.has_value();
    case Case::watermark: return style.textOutline;
    case Case::arrow:
    case Case::line: return style.outline;
    case Case::rectangle:
    case Case::ellipse:
    case Case::translatedText: return style.fillColor.has_value();
    default: return false;
    }
}

std::optional<LeaderShape> leaderShape(Point from, Point to, std::optional<Point> control,
                                       std::optional<std::vector<Point>> spineOverride, double lineWidth) {
    std::vector<Point> spine = spineOverride ? std::move(*spineOverride)
                               : control     ? SegmentCurve::samples(from, *control, to, 48)
                                             : std::vector<Point>{from, to};
    if (spine.size() < 2) return std::nullopt;
    const double shaftHalf = std::max(lineWidth / 2, 1.5);
    const std::vector<double> along = cumulativeLengths(spine);
    const double total = along.back();
    if (total <= 1) return std::nullopt;
    const double head = std::min(std::max(2.4 * lineWidth, 9.0), 0.6 * total);
    const double headHalf = std::max(0.62 * head, shaftHalf + 2);
    const double baseAt = total - head;
    std::size_t baseIndex = 0;
    for (std::size_t i = 0; i < spine.size(); ++i)
        if (along[i] < baseAt) baseIndex = i;
    baseIndex = std::min(baseIndex, spine.size() - 2);
    const double pieceLength = std::max(along[baseIndex + 1] - along[baseIndex], 0.0001);
    const Point base = lerp(spine[baseIndex], spine[baseIndex + 1], std::clamp((baseAt - along[baseIndex]) / pieceLength, 0.0, 1.0));
    const Point tip = spine.back();
    const Point axis = tip - base;
    const double axisLength = std::max(length(axis), 0.0001);
    return LeaderShape{std::move(spine), baseIndex, base, {-axis.y / axisLength, axis.x / axisLength}, tip, shaftHalf, headHalf};
}

CanvasPath leaderArrowPath(const LeaderShape& shape) {
    std::vector<Point> left, right;
    for (std::size_t i = 0; i <= shape.baseIndex; ++i) {
        const Point normal = spineNormal(shape.spine, i, 0.0001);
        left.push_back(shape.spine[i] + normal * shape.shaftHalf);
        right.push_back(shape.spine[i] - normal * shape.shaftHalf);
    }
    left.push_back(shape.base + shape.headNormal * shape.shaftHalf);
    right.push_back(shape.base - shape.headNormal * shape.shaftHalf);
    CanvasPath path;
    path.addPolyline(left);
    path.lineTo(shape.base + shape.headNormal * shape.headHalf);
    path.lineTo(shape.tip);
    path.lineTo(shape.base - shape.headNormal * shape.headHalf);
    for (auto p = right.rbegin(); p != right.rend(); ++p) path.lineTo(*p);
    path.close();
    return path;
}

// Region effects and spotlights live in RegionDrawing.cpp.
std::optional<std::string> drawRegionEffect(DrawingCanvas& canvas, const AnnotationFonts& fonts, const AnnotationElement& element,
                                            Size canvasSize, MosaicEngine* mosaic);

std::optional<std::string> draw(const AnnotationElement& element, DrawingCanvas& canvas, const AnnotationFonts& fonts,
                                Size canvasSize, MosaicEngine* mosaic, const Options& options) {
    const Case kind = element.kind.kindCase();
    if (kind == Case::spotlight) return std::nullopt;
    if (const TranslatedBlock* block = element.kind.blockPayload(); block && block->isHidden) return std::nullopt;
    if (std::optional<std::string> problem = unusable(element)) return problem;
    const AnnotationStyle& style = element.style;
    const Geometry& geometry = element.geometry;

    canvas.save();
    canvas.setAlpha(style.opacity);
    if (style.shadow && !element.kind.isRegionEffect()) setShadow(canvas, style, 4, {0, 0, 0, 0.5});
    if (ElementRotation::degrees(element) != 0 &&
        (kind == Case::rectangle || kind == Case::ellipse || kind == Case::freehand || kind == Case::image)) {
        applyBodyRotation(canvas, fonts, element);
    }
    const bool group = needsGroupCompositing(element) && (style.opacity < 1 || style.shadow);
    if (group) canvas.beginLayer();

    std::optional<std::string> problem;
    switch (kind) {
    case Case::rectangle:
    case Case::ellipse:
        if (const Rect* r = geometry.asRect()) drawShape(canvas, element, r->standardized());
        else problem = wrongGeometry("rectangle");
        break;
    case Case::line:
        if (const auto* s = geometry.asSegment()) strokeLine(canvas, element, *s);
        else problem = wrongGeometry("segment");
        break;
    case Case::arrow:
        if (const auto* s = geometry.asSegment()) drawArrow(canvas, element, *s);
        else problem = wrongGeometry("segment");
        break;
    case Case::freehand:
    case Case::highlighter: {
        const std::vector<Point>* path = geometry.asPath();
        if (!path) problem = wrongGeometry("path");
        else if (path->empty()) break;
        else if (kind == Case::freehand) drawFreehand(canvas, element, *path);
        else drawHighlighter(canvas, element, *path);
        break;
    }
    case Case::text: drawText(canvas, fonts, element, options.hideTextGlyphs); break;
    case Case::stepBadge: drawStepBadge(canvas, fonts, element, options.hideStepBadgeNumber); break;
    case Case::watermark: drawWatermark(canvas, fonts, element, canvasSize, options.hideWatermarkCenterTile); break;
    case Case::image:
        if (const Rect* r = geometry.asRect()) problem = drawPicture(canvas, element, *r);
        else problem = wrongGeometry("rectangle");
        break;
    case Case::translatedText:
        if (const Rect* r = geometry.asRect()) drawTranslatedBlock(canvas, fonts, element, *r, options.hideTextGlyphs);
        else problem = wrongGeometry("rectangle");
        break;
    case Case::mosaic:
    case Case::blur:
    case Case::magnifier: problem = drawRegionEffect(canvas, fonts, element, canvasSize, mosaic); break;
    case Case::spotlight: break;
    }

    if (group) canvas.endLayer();
    canvas.restore();
    return problem;
}

} // namespace tosvar::ElementDrawing
