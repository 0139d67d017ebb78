#pragma once

#include <string_view>

namespace tosvar {

// Vertical metrics of the text face at one size, in image pixels.
struct FontLineMetrics {
    double ascent = 0;
    double descent = 0;
    double leading = 0;

    double lineHeight() const { return ascent + descent + leading; }

    friend bool operator==(const FontLineMetrics&, const FontLineMetrics&) = default;
};

// Measures single lines of annotation text in the one face that text is
// drawn in. Sizes are the font size in pixels; the answers are in pixels too.
class TextMeasuring {
public:
    virtual ~TextMeasuring() = default;

    virtual FontLineMetrics metrics(double fontSize) const = 0;
    // The typographic width of one line (no line feeds): the sum of its
    // advances, kerning included.
    virtual double lineWidth(std::string_view line, double fontSize) const = 0;
};

} // namespace tosvar
