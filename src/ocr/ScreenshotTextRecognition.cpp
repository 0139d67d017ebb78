#include "ScreenshotTextRecognition.h"

#include "ImageUpscale.h"
#include "TextBlockGrouping.h"
#include "TextBlockRuns.h"
#include "UnicodeText.h"

#include <algorithm>
#include <cmath>

namespace tosvar::ScreenshotTextRecognition {

ImageBuffer enlarged(const ImageBuffer& image, double scale) {
    const double factor = scale < 1.5 ? 1.5 : 1;
    return ImageUpscale::bilinear(image, static_cast<int>(std::lround(image.width() * factor)),
                                  static_cast<int>(std::lround(image.height() * factor)));
}

std::string transcript(TextRecognizing& recognizer, const ImageBuffer& image, double scale) {
    if (image.isEmpty()) return {};
    // Line boxes come in unit coordinates, so the blocks are the same at any size.
    const std::vector<RecognizedLine> lines = recognizer.recognizeLines(enlarged(image, scale));
    const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    return TextBlockLayoutText::render(TextBlockGrouping::group(lines, size));
}

std::string mergedText(std::string_view transcript, const std::vector<std::string>& qrPayloads) {
    const std::string text = UnicodeText::trimmed(transcript);
    std::vector<std::string> entries;
    if (!text.empty()) entries.push_back(text);
    for (const std::string& raw : qrPayloads) {
        const std::string payload = UnicodeText::trimmed(raw);
        if (payload.empty() || std::find(entries.begin(), entries.end(), payload) != entries.end()) continue;
        if (text.find(payload) != std::string::npos) continue;
        entries.push_back(payload);
    }
    std::string merged;
    for (const std::string& entry : entries) merged += (merged.empty() ? "" : "\n") + entry;
    return merged;
}

ImageBuffer withoutCodes(const ImageBuffer& image, const std::vector<RecognizedQRCode>& codes) {
    if (codes.empty()) return image;
    MutableImage copy(image.width(), image.height(), image.order(), PixelMemoryFill::uninitialized);
    for (int y = 0; y < image.height(); ++y) std::copy_n(image.row(y), 4 * static_cast<std::size_t>(image.width()), copy.row(y));
    const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    for (const RecognizedQRCode& code : codes) {
        const Rect box = TextBlockGrouping::pixelBox(code.normalizedBox, size).insetBy(-2, -2).integral();
        const int x0 = std::max(0, static_cast<int>(box.minX())), y0 = std::max(0, static_cast<int>(box.minY()));
        const int x1 = std::min(image.width(), static_cast<int>(box.maxX())), y1 = std::min(image.height(), static_cast<int>(box.maxY()));
        if (x0 >= x1 || y0 >= y1) continue;
        // The ground just outside the code, so no edge is left behind to read.
        const Rgba8 ground = image.pixel(std::max(0, x0 - 1), std::max(0, y0 - 1));
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x) copy.setPixel(x, y, ground);
    }
    return std::move(copy).freeze();
}

std::optional<std::string> capturePlainText(TextRecognizing& recognizer, QRCodeReading& codes, const ImageBuffer& image, double scale) {
    const std::vector<RecognizedQRCode> found = codes.qrCodes(image);
    std::vector<std::string> payloads;
    for (const RecognizedQRCode& code : found) payloads.push_back(code.payload);
    // A code's modules are no text: they are left out of the reading.
    std::string text = mergedText(transcript(recognizer, withoutCodes(image, found), scale), payloads);
    if (text.empty()) return std::nullopt;
    return text;
}

} // namespace tosvar::ScreenshotTextRecognition
