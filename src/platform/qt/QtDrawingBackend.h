#pragma once

#include "DrawingCanvas.h"

namespace tosvar {

class QtTextMeasurer;

// Drawing on Qt: `QtImageCanvas`es over new images, and text in Liberation
// Sans and Liberation Sans Bold read from their files (one copy of each face
// per thread, as QRawFont wants). Needs a QGuiApplication.
class QtDrawingBackend final : public DrawingBackend {
public:
    static const QtDrawingBackend& shared();

    std::unique_ptr<ImageCanvas> makeCanvas(int width, int height) const override;
    std::unique_ptr<ImageCanvas> makeCanvas(const ImageBuffer& background) const override;
    const TextMeasuring& measuring(FontFace face) const override;
    const QtTextMeasurer& face(FontFace face) const;
};

} // namespace tosvar
