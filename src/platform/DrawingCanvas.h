#pragma once

#include "AffineTransform.h"
#include "CanvasPath.h"
#include "ImageBuffer.h"
#include "Point.h"
#include "RGBAColor.h"
#include "Rect.h"
#include "Size.h"
#include "TextMeasuring.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tosvar {

enum class LineCap { butt, round };
enum class LineJoin { miter, round };
enum class FillRule { nonZero, evenOdd };
// How new pixels combine with what is there: over it, multiplied into it, or
// erasing it by their coverage.
enum class BlendMode { normal, multiply, clear };
// The faces annotation text is set in: "Helvetica" and "Helvetica-Bold".
enum class FontFace { regular, bold };
enum class ImageSampling { nearest, smooth };

struct StrokeStyle {
    double width = 1;
    LineCap cap = LineCap::butt;
    LineJoin join = LineJoin::miter;
    // Alternating dash and gap lengths; empty draws a solid line.
    std::vector<double> dashes;
    double dashPhase = 0;
};

// A soft shadow under what is drawn next: `offset` in canvas pixels (y
// down), `blur` as the shadow's spread in pixels (a Gaussian of half that
// standard deviation).
struct CanvasShadow {
    Size offset;
    double blur = 0;
    RGBAColor color{0, 0, 0, 0.5};
};

// A 2D drawing surface in image pixels, origin top-left, y down. The state
// (transform, clip, alpha, shadow, blend mode) is kept on a stack by `save`
// and `restore`. Alpha multiplies everything drawn; a shadow falls under each
// thing drawn while it is set. A layer gathers everything drawn until its end
// and then composites it as one picture, with the alpha, shadow and blend mode
// in force when it began (inside it they start over as opaque, shadowless and
// normal).
class DrawingCanvas {
public:
    virtual ~DrawingCanvas() = default;

    virtual Size size() const = 0;

    virtual void save() = 0;
    virtual void restore() = 0;
    // Applies `transform` before the current one (like translating or rotating
    // the coordinate system).
    virtual void concatenate(const AffineTransform& transform) = 0;
    virtual void setAlpha(double alpha) = 0;
    virtual void setShadow(std::optional<CanvasShadow> shadow) = 0;
    virtual void setBlendMode(BlendMode mode) = 0;

    virtual void beginLayer() = 0;
    virtual void endLayer() = 0;

    // Narrows the clip to the inside of `path`.
    virtual void clip(const CanvasPath& path, FillRule rule = FillRule::nonZero) = 0;
    // Narrows the clip to the area that stroking `path` would cover.
    virtual void clipToStroke(const CanvasPath& path, const StrokeStyle& stroke) = 0;

    virtual void fill(const CanvasPath& path, const RGBAColor& color, FillRule rule = FillRule::nonZero) = 0;
    virtual void stroke(const CanvasPath& path, const RGBAColor& color, const StrokeStyle& stroke) = 0;
    // Draws the picture stretched into `destination`.
    virtual void drawImage(const ImageBuffer& image, const Rect& destination, ImageSampling sampling) = 0;
    // One line of text with its baseline's start at `baseline`: filled, or,
    // with `strokeWidth`, its glyph outlines stroked with round joins.
    virtual void drawTextLine(std::string_view text, FontFace face, double fontSize, Point baseline,
                              const RGBAColor& color, std::optional<double> strokeWidth = std::nullopt) = 0;
};

// A canvas over a new transparent image of its own.
class ImageCanvas : public DrawingCanvas {
public:
    // Ends drawing and hands over the pixels, premultiplied. Nothing may be
    // drawn afterwards.
    virtual ImageBuffer finish() = 0;
};

// What drawing needs from the platform: canvases over new images, and the
// measures of the faces their text is set in. Any thread may use it.
class DrawingBackend {
public:
    virtual ~DrawingBackend() = default;

    // None when no image of that size can be made.
    virtual std::unique_ptr<ImageCanvas> makeCanvas(int width, int height) const = 0;
    // A canvas that starts as a copy of `background`.
    virtual std::unique_ptr<ImageCanvas> makeCanvas(const ImageBuffer& background) const = 0;
    // The measures of `face` for the calling thread.
    virtual const TextMeasuring& measuring(FontFace face) const = 0;
};

} // namespace tosvar
