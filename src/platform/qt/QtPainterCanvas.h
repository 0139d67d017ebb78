#pragma once

#include "DrawingCanvas.h"

#include <QPainter>
#include <QPainterPath>
#include <QTransform>

#include <functional>
#include <optional>
#include <vector>

namespace tosvar {

class QtTextMeasurer;

// A `DrawingCanvas` over a QPainter whose device is `size` pixels, origin
// top-left. It starts with the painter's transform and clip. QPainter lacks three things the canvas promises, emulated here:
// - Layers: what is drawn inside a layer is recorded, not painted. At its end
//   the recorded operations are replayed into a transparent image just large
//   enough to hold them, and that image is composited as one picture with the
//   alpha, blend mode, clip and shadow in force when the layer began.
// - Shadows: an operation drawn while a shadow is set is rendered alone into
//   such an image; its alpha, blurred by a Gaussian of half the shadow's blur,
//   tinted and offset, is painted first, then the picture itself.
// - Clipping to a stroke: the stroke's outline from QPainterPathStroker.
// Our own state stack (transform, clips in device space, alpha, shadow, blend
// mode) is applied to the painter before each operation, since recorded
// operations replay long after the state that drew them was restored.
// Belongs to the thread that draws with it.
class QtPainterCanvas : public DrawingCanvas {
public:
    // `fonts` measures and outlines text, indexed by `FontFace`.
    QtPainterCanvas(QPainter& painter, QSize size, std::function<const QtTextMeasurer&(FontFace)> fonts);
    ~QtPainterCanvas() override;

    Size size() const override;
    void save() override;
    void restore() override;
    void concatenate(const AffineTransform& transform) override;
    void setAlpha(double alpha) override;
    void setShadow(std::optional<CanvasShadow> shadow) override;
    void setBlendMode(BlendMode mode) override;
    void beginLayer() override;
    void endLayer() override;
    void clip(const CanvasPath& path, FillRule rule) override;
    void clipToStroke(const CanvasPath& path, const StrokeStyle& stroke) override;
    void fill(const CanvasPath& path, const RGBAColor& color, FillRule rule) override;
    void stroke(const CanvasPath& path, const RGBAColor& color, const StrokeStyle& stroke) override;
    void drawImage(const ImageBuffer& image, const Rect& destination, ImageSampling sampling) override;
    void drawTextLine(std::string_view text, FontFace face, double fontSize, Point baseline, const RGBAColor& color,
                      std::optional<double> strokeWidth) override;

    static QPainterPath toQt(const CanvasPath& path, FillRule rule = FillRule::nonZero);

private:
    struct State {
        QTransform transform;
        std::vector<QPainterPath> clips; // in device pixels, intersected in order
        QRectF clipBounds;               // the box the clips leave, device pixels
        double alpha = 1;
        std::optional<CanvasShadow> shadow;
        BlendMode blend = BlendMode::normal;
    };
    // One drawing call with the state it was made in; `bounds` is the device
    // box it can touch, already narrowed by the clip.
    struct Operation {
        State state;
        QRectF bounds;
        std::function<void(QPainter&)> paint;
    };
    struct Layer {
        State begun;
        std::vector<Operation> operations;
        QRectF bounds;
    };

    void submit(State state, QRectF bounds, std::function<void(QPainter&)> paint);
    void deliver(Operation operation);
    static void apply(QPainter& painter, const State& state, QPointF origin);
    // The operations painted into an image of `bounds`, and where it goes.
    static QImage picture(const std::vector<Operation>& operations, const QRect& bounds);
    // The picture at `bounds.topLeft()` under its shadow, as one operation of `state`.
    Operation composite(State state, QImage image, QRect bounds) const;
    QRectF deviceBounds(const QPainterPath& devicePath, double strokeWidth) const;

    QPainter& painter_;
    QRectF deviceRect_;
    std::function<const QtTextMeasurer&(FontFace)> fonts_;
    State state_;
    std::vector<State> saved_;
    std::vector<Layer> layers_;
};

// A `QtPainterCanvas` over an image of its own (ARGB32, premultiplied: bgra
// in memory on this platform's byte order).
class QtImageCanvas final : public ImageCanvas {
public:
    QtImageCanvas(QImage image, std::function<const QtTextMeasurer&(FontFace)> fonts);

    Size size() const override { return canvas_->size(); }
    void save() override { canvas_->save(); }
    void restore() override { canvas_->restore(); }
    void concatenate(const AffineTransform& t) override { canvas_->concatenate(t); }
    void setAlpha(double alpha) override { canvas_->setAlpha(alpha); }
    void setShadow(std::optional<CanvasShadow> shadow) override { canvas_->setShadow(shadow); }
    void setBlendMode(BlendMode mode) override { canvas_->setBlendMode(mode); }
    void beginLayer() override { canvas_->beginLayer(); }
    void endLayer() override { canvas_->endLayer(); }
    void clip(const CanvasPath& path, FillRule rule) override { canvas_->clip(path, rule); }
    void clipToStroke(const CanvasPath& path, const StrokeStyle& s) override { canvas_->clipToStroke(path, s); }
    void fill(const CanvasPath& path, const RGBAColor& color, FillRule rule) override { canvas_->fill(path, color, rule); }
    void stroke(const CanvasPath& path, const RGBAColor& color, const StrokeStyle& s) override { canvas_->stroke(path, color, s); }
    void drawImage(const ImageBuffer& image, const Rect& destination, ImageSampling sampling) override {
        canvas_->drawImage(image, destination, sampling);
    }
    void drawTextLine(std::string_view text, FontFace face, double fontSize, Point baseline, const RGBAColor& color,
                      std::optional<double> strokeWidth) override {
        canvas_->drawTextLine(text, face, fontSize, baseline, color, strokeWidth);
    }
    ImageBuffer finish() override;

private:
    std::shared_ptr<QImage> image_;
    std::unique_ptr<QPainter> painter_;
    std::unique_ptr<QtPainterCanvas> canvas_;
};

// A QImage over the pixels of `image` (no copy; the buffer must outlive it).
QImage qtImageView(const ImageBuffer& image);
// A copy of a QImage's pixels, premultiplied: rgba when the image is, else bgra.
ImageBuffer imageFromQt(const QImage& image);

} // namespace tosvar
