#pragma once

#include "ImageBuffer.h"
#include "TextBlock.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tosvar {

// What reading an image's text came to: the lines joined by "\n" (empty when
// nothing was found), or a failure of the reader itself.
struct OCROutcome {
    bool failed = false;
    std::string text;
    static OCROutcome recognized(std::string text) { return {false, std::move(text)}; }
    static OCROutcome failure() { return {true, {}}; }
    friend bool operator==(const OCROutcome&, const OCROutcome&) = default;
};

// Reads lines of text off images. Both calls block for a good fraction of
// a second: run them off the main thread.
class TextRecognizing {
public:
    virtual ~TextRecognizing() = default;
    // Encoded image bytes (PNG) in, all lines joined by "\n" out.
    virtual OCROutcome recognizeText(const std::vector<std::uint8_t>& encodedImage) = 0;
    // Lines with unit boxes (origin bottom left) and 0...1 confidences; none on failure.
    virtual std::vector<RecognizedLine> recognizeLines(const ImageBuffer& image) = 0;
};

struct RecognizedQRCode {
    std::string payload;
    Rect normalizedBox; // unit space, origin bottom left, like a recognised line
    friend bool operator==(const RecognizedQRCode&, const RecognizedQRCode&) = default;
};

// Finds QR codes in images; none on failure. Safe from any thread.
class QRCodeReading {
public:
    virtual ~QRCodeReading() = default;
    virtual std::vector<RecognizedQRCode> qrCodes(const ImageBuffer& image) = 0;
};

} // namespace tosvar
