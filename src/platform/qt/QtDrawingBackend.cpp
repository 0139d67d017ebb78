#include "QtDrawingBackend.h"

#include "Log.h"
#include "QtPainterCanvas.h"
#include "QtTextMeasurer.h"

#include <QImage>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>

namespace tosvar {

namespace {

// The face of `face` for this thread; a face whose file cannot be read is
// logged once and measures and draws nothing.
const QtTextMeasurer& threadFace(FontFace face) {
    thread_local std::optional<QtTextMeasurer> faces[2];
    std::optional<QtTextMeasurer>& slot = faces[face == FontFace::bold ? 1 : 0];
    if (!slot) {
        const char* file = face == FontFace::bold ? QtTextMeasurer::boldFontFile : QtTextMeasurer::defaultFontFile;
        Expected<QtTextMeasurer> loaded = QtTextMeasurer::load(file);
        if (loaded) {
            slot.emplace(std::move(*loaded));
        } else {
            static std::once_flag reported[2];
            std::call_once(reported[face == FontFace::bold ? 1 : 0],
                           [&] { logLine("[Drawing] annotation text cannot be drawn: " + loaded.error().message); });
            slot.emplace(QtTextMeasurer::empty());
        }
    }
    return *slot;
}

std::unique_ptr<ImageCanvas> canvasOver(QImage image) {
    if (image.isNull()) return nullptr;
    return std::make_unique<QtImageCanvas>(std::move(image), threadFace);
}

} // namespace

const QtDrawingBackend& QtDrawingBackend::shared() {
    static const QtDrawingBackend backend;
    return backend;
}

std::unique_ptr<ImageCanvas> QtDrawingBackend::makeCanvas(int width, int height) const {
    if (width <= 0 || height <= 0) return nullptr;
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return nullptr;
    image.fill(Qt::transparent);
    return canvasOver(std::move(image));
}

std::unique_ptr<ImageCanvas> QtDrawingBackend::makeCanvas(const ImageBuffer& background) const {
    if (background.isEmpty()) return nullptr;
    QImage image(background.width(), background.height(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return nullptr;
    const ImageBuffer pixels = background.converted(PixelOrder::bgra);
    const std::size_t rowBytes = 4 * static_cast<std::size_t>(pixels.width());
    for (int y = 0; y < pixels.height(); ++y) std::memcpy(image.scanLine(y), pixels.row(y), rowBytes);
    return canvasOver(std::move(image));
}

const TextMeasuring& QtDrawingBackend::measuring(FontFace face) const { return threadFace(face); }

const QtTextMeasurer& QtDrawingBackend::face(FontFace face) const { return threadFace(face); }

} // namespace tosvar
