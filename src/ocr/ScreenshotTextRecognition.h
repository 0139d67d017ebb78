#pragma once

#include "ImageBuffer.h"
#include "TextRecognizing.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Reading a captured region as plain text: its lines recognised, grouped into
// blocks in reading order and rendered with their paragraphs, indents and
// list markers, followed by what its QR codes say. Blocks for a good part of
// a second: run it off the main thread.
namespace tosvar::ScreenshotTextRecognition {

// `image`, taken at `scale` pixels per point, as the recogniser reads it:
// screen text at one pixel per point is smaller than recognisers read well,
// so it is enlarged half again (a quarter loses lines and bullets of 14-pixel
// text; twice costs time and reads no better); a denser display's text is
// read as it is.
ImageBuffer enlarged(const ImageBuffer& image, double scale);

// The recognised text of `image`, taken at `scale` pixels per point; empty
// when there is none.
std::string transcript(TextRecognizing& recognizer, const ImageBuffer& image, double scale);

// The transcript, trimmed, followed by each QR payload that is not empty,
// not a repeat, and not already part of the transcript; one per line.
std::string mergedText(std::string_view transcript, const std::vector<std::string>& qrPayloads);

// `image` with each code's area filled with the ground around it.
ImageBuffer withoutCodes(const ImageBuffer& image, const std::vector<RecognizedQRCode>& codes);

// The transcript of the image outside its QR codes, merged with their
// payloads; none when both are empty.
std::optional<std::string> capturePlainText(TextRecognizing& recognizer, QRCodeReading& codes, const ImageBuffer& image, double scale);

} // namespace tosvar::ScreenshotTextRecognition
