#pragma once

#include "Rect.h"

#include <optional>
#include <string>
#include <vector>

namespace tosvar {

// One line as a recogniser reads it: its text, its box in unit coordinates of
// the image (origin bottom left) and the confidence of its reading, 0...1.
struct RecognizedLine {
    std::string text;
    Rect normalizedBox;
    float confidence = 0;
    friend bool operator==(const RecognizedLine&, const RecognizedLine&) = default;
};

// A paragraph-sized run of lines, in image pixels (origin top left).
struct TextBlock {
    std::vector<RecognizedLine> lines;
    std::string text;        // joined lines, list marker included
    Rect pixelBox;           // union of the line boxes
    double lineHeight = 0;   // median line height in pixels
    float confidence = 0;    // the lowest of the lines
    std::optional<std::string> marker; // "1.", "•", ...
    int indentLevel = 0;     // 0...6
    friend bool operator==(const TextBlock&, const TextBlock&) = default;

    // What goes to translation: the body behind the marker, when the text
    // still splits into that marker; else the text.
    std::string translatableText() const;
};

} // namespace tosvar
