#include "QtPainterCanvas.h"

#include "GaussianBlur.h"
#include "QtTextMeasurer.h"

#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace {

// A shadow's blur names its spread; the Gaussian's deviation is half of it.
constexpr double sigmaPerBlur = 0.5;
// Dash patterns with more dashes than this along one path are drawn solid:
// a few thousand already read as a line, and millions would stall the stroker.
constexpr double maximumDashes = 100000;

QColor toQt(const RGBAColor& c) {
    return QColor::fromRgbF(static_cast<float>(std::clamp(c.red, 0.0, 1.0)), static_cast<float>(std::clamp(c.green, 0.0, 1.0)),
                            static_cast<float>(std::clamp(c.blue, 0.0, 1.0)), static_cast<float>(std::clamp(c.alpha, 0.0, 1.0)));
}

QTransform toQt(const AffineTransform& t) { return QTransform(t.a, t.b, t.c, t.d, t.tx, t.ty); }

QPainter::CompositionMode toQt(BlendMode mode) {
    switch (mode) {
    case BlendMode::multiply: return QPainter::CompositionMode_Multiply;
    case BlendMode::clear: return QPainter::CompositionMode_Clear;
    case BlendMode::normal: break;
    }
    return QPainter::CompositionMode_SourceOver;
}

double pathLength(const QPainterPath& path) { return path.isEmpty() ? 0 : path.length(); }

QPen pen(const QColor& color, const StrokeStyle& stroke, const QPainterPath& path) {
    QPen pen(color);
    pen.setWidthF(std::max(stroke.width, 0.0));
    pen.setCapStyle(stroke.cap == LineCap::round ? Qt::RoundCap : Qt::FlatCap);
    pen.setJoinStyle(stroke.join == LineJoin::round ? Qt::RoundJoin : Qt::MiterJoin);
    if (!stroke.dashes.empty() && stroke.width > 0) {
        // Qt counts dashes in line widths and draws caps onto them; our
        // lengths are pixels, measured as the platform's dashes are.
        double period = 0;
        QList<qreal> pattern;
        for (double d : stroke.dashes) {
            pattern.push_back(std::max(d, 0.0) / stroke.width);
            period += std::max(d, 0.0);
        }
        if (pattern.size() % 2 == 1) pattern.append(pattern); // an odd list repeats with dash and gap swapped
        if (period > 0 && pathLength(path) / period < maximumDashes) {
            pen.setDashPattern(pattern);
            pen.setDashOffset(stroke.dashPhase / stroke.width);
        }
    }
    return pen;
}

// The part of the device plane whose drawing can show: the canvas itself, and
// around it whatever can be carried onto the canvas by `shadow` and by the
// shadows of the layers being gathered.
template <typename Layers>
QRectF reachingCanvas(const QRectF& canvas, const std::optional<CanvasShadow>& shadow, const Layers& layers) {
    double dx = 0, dy = 0;
    auto add = [&](const std::optional<CanvasShadow>& s) {
        if (!s || s->color.alpha <= 0) return;
        const double pad = std::ceil(3 * std::max(s->blur, 0.0) * sigmaPerBlur) + 1;
        dx += pad + std::abs(s->offset.width);
        dy += pad + std::abs(s->offset.height);
    };
    add(shadow);
    for (const auto& layer : layers) add(layer.begun.shadow);
    return canvas.adjusted(-dx, -dy, dx, dy);
}

// The clip bounds before any clip: the whole plane, since what lies past the
// canvas can still cast a shadow onto it.
const QRectF everywhere(-1e9, -1e9, 2e9, 2e9);

// How far a stroke can reach beyond its path's control points.
double strokeReach(const StrokeStyle& stroke) {
    // Miter joins are limited to twice the width by Qt's default miter limit.
    return stroke.width * (stroke.join == LineJoin::miter ? 2.0 : 0.5) + 1;
}

} // namespace

QPainterPath QtPainterCanvas::toQt(const CanvasPath& path, FillRule rule) {
    QPainterPath out;
    out.setFillRule(rule == FillRule::evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    const auto points = path.points();
    std::size_t i = 0;
    for (CanvasPath::Verb verb : path.verbs()) {
        switch (verb) {
        case CanvasPath::Verb::move: out.moveTo(points[i].x, points[i].y); i += 1; break;
        case CanvasPath::Verb::line: out.lineTo(points[i].x, points[i].y); i += 1; break;
        case CanvasPath::Verb::quad:
            out.quadTo(points[i].x, points[i].y, points[i + 1].x, points[i + 1].y);
            i += 2;
            break;
        case CanvasPath::Verb::cubic:
            out.cubicTo(points[i].x, points[i].y, points[i + 1].x, points[i + 1].y, points[i + 2].x, points[i + 2].y);
            i += 3;
            break;
        case CanvasPath::Verb::close: out.closeSubpath(); break;
        }
    }
    return out;
}

QtPainterCanvas::QtPainterCanvas(QPainter& painter, QSize size, std::function<const QtTextMeasurer&(FontFace)> fonts)
    : painter_(painter), deviceRect_(QPointF(0, 0), QSizeF(size)), fonts_(std::move(fonts)) {
    state_.clipBounds = everywhere;
    // Drawing starts in the painter's own coordinates and within its clip, as
    // a view that scales and clips before handing its painter over expects.
    state_.transform = painter_.transform();
    if (painter_.hasClipping()) {
        QPainterPath clip = painter_.transform().map(painter_.clipPath());
        state_.clipBounds = clip.controlPointRect();
        state_.clips.push_back(std::move(clip));
    }
    painter_.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
}

QtPainterCanvas::~QtPainterCanvas() {
    while (!layers_.empty()) endLayer();
}

Size QtPainterCanvas::size() const { return {deviceRect_.width(), deviceRect_.height()}; }

void QtPainterCanvas::save() { saved_.push_back(state_); }

void QtPainterCanvas::restore() {
    if (saved_.empty()) return;
    state_ = std::move(saved_.back());
    saved_.pop_back();
}

void QtPainterCanvas::concatenate(const AffineTransform& transform) { state_.transform = tosvar::toQt(transform) * state_.transform; }

void QtPainterCanvas::setAlpha(double alpha) { state_.alpha = std::clamp(alpha, 0.0, 1.0); }

void QtPainterCanvas::setShadow(std::optional<CanvasShadow> shadow) { state_.shadow = shadow; }

void QtPainterCanvas::setBlendMode(BlendMode mode) { state_.blend = mode; }

void QtPainterCanvas::beginLayer() {
    layers_.push_back({state_, {}, {}});
    state_.alpha = 1;
    state_.shadow.reset();
    state_.blend = BlendMode::normal;
}

void QtPainterCanvas::endLayer() {
    if (layers_.empty()) return;
    Layer layer = std::move(layers_.back());
    layers_.pop_back();
    // What was set inside the layer ends with it, as the platform does.
    state_.alpha = layer.begun.alpha;
    state_.shadow = layer.begun.shadow;
    state_.blend = layer.begun.blend;
    const QRect bounds = layer.bounds.intersected(reachingCanvas(deviceRect_, layer.begun.shadow, layers_)).toAlignedRect();
    if (bounds.isEmpty()) return;
    QImage image = picture(layer.operations, bounds);
    deliver(composite(layer.begun, std::move(image), bounds));
}

void QtPainterCanvas::clip(const CanvasPath& path, FillRule rule) {
    QPainterPath device = state_.transform.map(toQt(path, rule));
    state_.clipBounds = state_.clipBounds.intersected(device.controlPointRect());
    state_.clips.push_back(std::move(device));
}

void QtPainterCanvas::clipToStroke(const CanvasPath& path, const StrokeStyle& stroke) {
    QPainterPathStroker stroker;
    stroker.setWidth(std::max(stroke.width, 0.0));
    stroker.setCapStyle(stroke.cap == LineCap::round ? Qt::RoundCap : Qt::FlatCap);
    stroker.setJoinStyle(stroke.join == LineJoin::round ? Qt::RoundJoin : Qt::MiterJoin);
    QPainterPath outline = stroker.createStroke(toQt(path));
    outline.setFillRule(Qt::WindingFill);
    QPainterPath device = state_.transform.map(outline);
    state_.clipBounds = state_.clipBounds.intersected(device.controlPointRect());
    state_.clips.push_back(std::move(device));
}

QRectF QtPainterCanvas::deviceBounds(const QPainterPath& devicePath, double reach) const {
    const double scale = std::sqrt(std::abs(state_.transform.determinant()));
    const double grow = reach * std::max(scale, 1e-6) + 1;
    return devicePath.controlPointRect().adjusted(-grow, -grow, grow, grow);
}

void QtPainterCanvas::fill(const CanvasPath& path, const RGBAColor& color, FillRule rule) {
    QPainterPath shape = toQt(path, rule);
    const QRectF bounds = deviceBounds(state_.transform.map(shape), 0);
    const QColor fillColor = tosvar::toQt(color);
    submit(state_, bounds, [shape = std::move(shape), fillColor](QPainter& p) { p.fillPath(shape, fillColor); });
}

void QtPainterCanvas::stroke(const CanvasPath& path, const RGBAColor& color, const StrokeStyle& style) {
    if (style.width <= 0) return;
    QPainterPath shape = toQt(path);
    const QRectF bounds = deviceBounds(state_.transform.map(shape), strokeReach(style));
    QPen strokePen = pen(tosvar::toQt(color), style, shape);
    submit(state_, bounds, [shape = std::move(shape), strokePen](QPainter& p) { p.strokePath(shape, strokePen); });
}

void QtPainterCanvas::drawImage(const ImageBuffer& image, const Rect& destination, ImageSampling sampling) {
    if (image.isEmpty()) return;
    const Rect target = destination.standardized();
    if (target.isEmpty()) return;
    const QRectF rect(target.minX(), target.minY(), target.width(), target.height());
    const QRectF bounds = state_.transform.mapRect(rect).adjusted(-1, -1, 1, 1);
    const bool smooth = sampling == ImageSampling::smooth;
    submit(state_, bounds, [image, rect, smooth](QPainter& p) {
        p.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
        const QImage view = qtImageView(image);
        // Only the part of the picture the clip can show is drawn, so a
        // full-canvas effect revealed through a small region costs that region.
        QRectF visible = p.transform().inverted().mapRect(QRectF(0, 0, p.device()->width(), p.device()->height()));
        if (p.hasClipping()) visible = visible.intersected(p.clipBoundingRect());
        visible = visible.intersected(rect);
        if (visible.isEmpty()) return;
        const double sx = image.width() / rect.width(), sy = image.height() / rect.height();
        QRectF source((visible.left() - rect.left()) * sx, (visible.top() - rect.top()) * sy, visible.width() * sx, visible.height() * sy);
        if (!smooth) {
            // Whole source pixels, so nearest sampling lands where it would for the whole picture.
            const QRectF aligned = QRectF(source.toAlignedRect()).intersected(QRectF(0, 0, image.width(), image.height()));
            source = aligned;
        }
        const QRectF placed(source.left() / sx + rect.left(), source.top() / sy + rect.top(), source.width() / sx, source.height() / sy);
        p.drawImage(placed, view, source);
    });
}

void QtPainterCanvas::drawTextLine(std::string_view text, FontFace face, double fontSize, Point baseline,
                                   const RGBAColor& color, std::optional<double> strokeWidth) {
    if (text.empty() || !(fontSize > 0)) return;
    QPainterPath glyphs = fonts_(face).outline(text, fontSize).translated(baseline.x, baseline.y);
    const QColor textColor = tosvar::toQt(color);
    if (strokeWidth) {
        if (*strokeWidth <= 0) return;
        StrokeStyle style{*strokeWidth, LineCap::round, LineJoin::round, {}, 0};
        const QRectF bounds = deviceBounds(state_.transform.map(glyphs), strokeReach(style));
        QPen strokePen = pen(textColor, style, glyphs);
        submit(state_, bounds, [glyphs = std::move(glyphs), strokePen](QPainter& p) { p.strokePath(glyphs, strokePen); });
        return;
    }
    const QRectF bounds = deviceBounds(state_.transform.map(glyphs), 0);
    submit(state_, bounds, [glyphs = std::move(glyphs), textColor](QPainter& p) { p.fillPath(glyphs, textColor); });
}

void QtPainterCanvas::submit(State state, QRectF bounds, std::function<void(QPainter&)> paint) {
    if (state.alpha <= 0) return;
    if (state.shadow && state.shadow->color.alpha > 0) {
        // Drawn alone and unclipped into a picture so its shadow can be made
        // from it. The clip then applies to the picture and its shadow alike:
        // what the clip hides still casts a shadow, as a spotlight's hole
        // filled under a clip to everything but the hole does around itself.
        // Shapes past the canvas edge cast their shadow onto it too.
        const QRect area = bounds.intersected(reachingCanvas(deviceRect_, state.shadow, layers_)).toAlignedRect();
        if (area.isEmpty()) return;
        State inner = state;
        inner.alpha = 1;
        inner.blend = BlendMode::normal;
        inner.shadow.reset();
        inner.clips.clear();
        inner.clipBounds = everywhere;
        QImage image = picture({Operation{inner, area, std::move(paint)}}, area);
        deliver(composite(std::move(state), std::move(image), area));
        return;
    }
    bounds = bounds.intersected(state.clipBounds).intersected(reachingCanvas(deviceRect_, std::nullopt, layers_));
    if (bounds.isEmpty()) return;
    deliver({std::move(state), bounds, std::move(paint)});
}

void QtPainterCanvas::deliver(Operation operation) {
    if (!layers_.empty()) {
        Layer& layer = layers_.back();
        layer.bounds = layer.bounds.united(operation.bounds);
        layer.operations.push_back(std::move(operation));
        return;
    }
    painter_.save();
    apply(painter_, operation.state, QPointF(0, 0));
    operation.paint(painter_);
    painter_.restore();
}

void QtPainterCanvas::apply(QPainter& painter, const State& state, QPointF origin) {
    const QTransform shift = QTransform::fromTranslate(-origin.x(), -origin.y());
    painter.setTransform(shift);
    painter.setClipping(false);
    for (const QPainterPath& clip : state.clips) painter.setClipPath(clip, painter.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
    painter.setTransform(state.transform * shift);
    painter.setOpacity(state.alpha);
    painter.setCompositionMode(tosvar::toQt(state.blend));
}

QImage QtPainterCanvas::picture(const std::vector<Operation>& operations, const QRect& bounds) {
    QImage image(bounds.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    for (const Operation& operation : operations) {
        painter.save();
        apply(painter, operation.state, bounds.topLeft());
        operation.paint(painter);
        painter.restore();
    }
    return image;
}

QtPainterCanvas::Operation QtPainterCanvas::composite(State state, QImage image, QRect bounds) const {
    std::optional<CanvasShadow> shadow = std::move(state.shadow);
    state.shadow.reset();
    state.transform = QTransform();
    QImage shadowImage;
    QPoint shadowAt;
    QRectF reach = bounds;
    if (shadow && shadow->color.alpha > 0) {
        const double sigma = std::max(shadow->blur, 0.0) * sigmaPerBlur;
        const int pad = static_cast<int>(std::ceil(3 * sigma));
        const int w = image.width() + 2 * pad, h = image.height() + 2 * pad;
        std::vector<float> alpha(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 0.0f);
        for (int y = 0; y < image.height(); ++y) {
            const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            float* out = alpha.data() + static_cast<std::size_t>(y + pad) * static_cast<std::size_t>(w) + pad;
            for (int x = 0; x < image.width(); ++x) out[x] = static_cast<float>(qAlpha(row[x])) / 255.0f;
        }
        GaussianBlur::blur(alpha, w, h, 1, sigma, GaussianBlur::Edges::transparent);
        shadowImage = QImage(w, h, QImage::Format_ARGB32_Premultiplied);
        const RGBAColor c = shadow->color;
        for (int y = 0; y < h; ++y) {
            auto* row = reinterpret_cast<QRgb*>(shadowImage.scanLine(y));
            const float* in = alpha.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(w);
            for (int x = 0; x < w; ++x) {
                const double a = std::clamp(static_cast<double>(in[x]), 0.0, 1.0) * c.alpha;
                row[x] = qRgba(static_cast<int>(std::lround(c.red * a * 255)), static_cast<int>(std::lround(c.green * a * 255)),
                               static_cast<int>(std::lround(c.blue * a * 255)), static_cast<int>(std::lround(a * 255)));
            }
        }
        shadowAt = bounds.topLeft() - QPoint(pad, pad) +
                   QPoint(static_cast<int>(std::lround(shadow->offset.width)), static_cast<int>(std::lround(shadow->offset.height)));
        reach = reach.united(QRectF(shadowAt, shadowImage.size()));
    }
    const QPoint at = bounds.topLeft();
    return {std::move(state), reach, [image = std::move(image), shadowImage = std::move(shadowImage), shadowAt, at](QPainter& p) {
                if (!shadowImage.isNull()) p.drawImage(shadowAt, shadowImage);
                p.drawImage(at, image);
            }};
}

QImage qtImageView(const ImageBuffer& image) {
    QImage::Format format = QImage::Format_RGBA8888_Premultiplied;
    switch (image.order()) {
    case PixelOrder::rgba: format = QImage::Format_RGBA8888_Premultiplied; break;
    // Qt names formats by 32-bit word, so its ARGB32 is bgra in our little-endian memory.
    case PixelOrder::bgra: format = QImage::Format_ARGB32_Premultiplied; break;
    case PixelOrder::argb:
    case PixelOrder::abgr: return qtImageView(image.converted(PixelOrder::rgba)).copy();
    }
    return QImage(image.data(), image.width(), image.height(), static_cast<qsizetype>(image.stride()), format);
}

ImageBuffer imageFromQt(const QImage& image) {
    const bool rgba = image.format() == QImage::Format_RGBA8888_Premultiplied;
    const QImage pixels = rgba ? image : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    MutableImage copy(pixels.width(), pixels.height(), rgba ? PixelOrder::rgba : PixelOrder::bgra, PixelMemoryFill::uninitialized);
    for (int y = 0; y < pixels.height(); ++y) std::memcpy(copy.row(y), pixels.constScanLine(y), 4 * static_cast<std::size_t>(pixels.width()));
    return std::move(copy).freeze();
}

QtImageCanvas::QtImageCanvas(QImage image, std::function<const QtTextMeasurer&(FontFace)> fonts)
    : image_(std::make_shared<QImage>(std::move(image))),
      painter_(std::make_unique<QPainter>(image_.get())),
      canvas_(std::make_unique<QtPainterCanvas>(*painter_, image_->size(), std::move(fonts))) {}

ImageBuffer QtImageCanvas::finish() {
    canvas_.reset();
    painter_.reset();
    std::shared_ptr<QImage> image = image_;
    return ImageBuffer::adopt(image->constBits(), image->width(), image->height(), static_cast<std::size_t>(image->bytesPerLine()),
                              PixelOrder::bgra, std::shared_ptr<const void>(image, image.get()));
}

} // namespace tosvar
