// Feeds arbitrary text to the lenient element reader and draws whatever it
// reads onto a canvas that checks every number it is given, with the pixel
// effects of a small base image. Drawing must never crash, hang or hand the
// canvas a number that is not finite.
#include "AnnotationJson.h"
#include "DrawingCanvas.h"
#include "ElementDrawing.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

using namespace tosvar;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

void requireFinite(double v) { require(std::isfinite(v)); }
void requireFinite(Point p) {
    requireFinite(p.x);
    requireFinite(p.y);
}
void requireFinite(const CanvasPath& path) {
    for (const Point& p : path.points()) requireFinite(p);
}
void requireFinite(const RGBAColor& c) {
    requireFinite(c.red);
    requireFinite(c.green);
    requireFinite(c.blue);
    requireFinite(c.alpha);
}

// Half an em per character, one em per line, as a stand-in face.
class StandInFace final : public TextMeasuring {
public:
    FontLineMetrics metrics(double fontSize) const override { return {0.75 * fontSize, 0.25 * fontSize, 0}; }
    double lineWidth(std::string_view line, double fontSize) const override { return 0.5 * fontSize * static_cast<double>(line.size()); }
};

class CheckingCanvas final : public DrawingCanvas {
public:
    Size size() const override { return {32, 24}; }
    void save() override { ++depth_; }
    void restore() override {
        require(depth_ > 0);
        --depth_;
    }
    void concatenate(const AffineTransform& t) override {
        for (double v : {t.a, t.b, t.c, t.d, t.tx, t.ty}) requireFinite(v);
    }
    void setAlpha(double alpha) override { requireFinite(alpha); }
    void setShadow(std::optional<CanvasShadow> shadow) override {
        if (!shadow) return;
        requireFinite(shadow->blur);
        requireFinite(Point{shadow->offset.width, shadow->offset.height});
    }
    void setBlendMode(BlendMode) override {}
    void beginLayer() override { ++layers_; }
    void endLayer() override {
        require(layers_ > 0);
        --layers_;
    }
    void clip(const CanvasPath& path, FillRule) override { requireFinite(path); }
    void clipToStroke(const CanvasPath& path, const StrokeStyle& stroke) override {
        requireFinite(path);
        requireFinite(stroke.width);
    }
    void fill(const CanvasPath& path, const RGBAColor& color, FillRule) override {
        requireFinite(path);
        requireFinite(color);
    }
    void stroke(const CanvasPath& path, const RGBAColor& color, const StrokeStyle& stroke) override {
        requireFinite(path);
        requireFinite(color);
        requireFinite(stroke.width);
        for (double d : stroke.dashes) requireFinite(d);
    }
    void drawImage(const ImageBuffer& image, const Rect& destination, ImageSampling) override {
        require(!image.isEmpty());
        requireFinite(destination.origin);
        requireFinite(Point{destination.size.width, destination.size.height});
    }
    void drawTextLine(std::string_view, FontFace, double fontSize, Point baseline, const RGBAColor& color,
                      std::optional<double> strokeWidth) override {
        requireFinite(fontSize);
        requireFinite(baseline);
        requireFinite(color);
        if (strokeWidth) requireFinite(*strokeWidth);
    }

    bool balanced() const { return depth_ == 0 && layers_ == 0; }

private:
    int depth_ = 0;
    int layers_ = 0;
};

ImageBuffer base() {
    MutableImage image(32, 24);
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 32; ++x) image.setPixel(x, y, {static_cast<std::uint8_t>(x * 8), static_cast<std::uint8_t>(y * 10), 99, 255});
    return std::move(image).freeze();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const AnnotationJson::ElementsReading reading = AnnotationJson::decodeElementsLeniently(text);
    if (reading.failure) require(!reading.failure->empty());
    for (const auto& rejected : reading.rejected) require(!rejected.reason.empty());

    static const StandInFace face;
    static const ImageBuffer image = base();
    const AnnotationFonts fonts{face, face};
    MosaicEngine mosaic(image);
    CheckingCanvas canvas;
    for (const AnnotationElement& element : reading.elements) {
        (void)ElementDrawing::draw(element, canvas, fonts, canvas.size(), &mosaic);
        require(canvas.balanced());
    }
    std::vector<const AnnotationElement*> spotlights;
    for (const AnnotationElement& element : reading.elements)
        if (element.kind.is(AnnotationKind::Case::spotlight)) spotlights.push_back(&element);
    ElementDrawing::drawSpotlights(spotlights, canvas, fonts, canvas.size());
    require(canvas.balanced());
    return 0;
}
