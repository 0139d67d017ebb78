#pragma once

#include "ImageBuffer.h"

#include <array>
#include <cstdint>
#include <random>

namespace tosvar::ScrollCorpus {

struct Color {
    std::uint8_t r = 0, g = 0, b = 0;
    friend bool operator==(const Color&, const Color&) = default;
};

// Colour of a mix: `t` of `b` over `a`.
Color mix(Color a, Color b, double t);

// A deterministic hash of a few integers, for noise that a seed reproduces.
std::uint32_t hash(std::uint32_t a, std::uint32_t b = 0, std::uint32_t c = 0, std::uint32_t d = 0);

// An alphabet of glyph-like shapes on a 5 x 9 grid (two rows of ascender,
// five of x-height, two of descender), built from strokes so a line of them
// has the rhythm of text. The same seed always gives the same alphabet.
class GlyphFont {
public:
    static constexpr int columns = 5;
    static constexpr int rows = 9;
    static constexpr int count = 56;

    explicit GlyphFont(std::uint32_t seed);
    bool bit(int glyph, int column, int row) const { return (bits_[glyph][row] >> column) & 1u; }

private:
    std::array<std::array<std::uint8_t, rows>, count> bits_{};
};

// Opaque drawing on an rgba image. Edges are anti-aliased by the share of
// each pixel they cover.
class Painter {
public:
    explicit Painter(MutableImage& image) : image_(image) {}

    int width() const { return image_.width(); }
    int height() const { return image_.height(); }
    // Nothing outside `clip` is touched (the whole image unless set).
    void setClip(const PixelRect& clip) { clip_ = clip.intersection({0, 0, image_.width(), image_.height()}); }

    void fillRect(double x0, double y0, double x1, double y1, Color color, double alpha = 1.0);
    void fillRoundedRect(int x0, int y0, int x1, int y1, int radius, Color color);
    void fillCircle(double cx, double cy, double radius, Color color);
    void verticalGradient(int x0, int y0, int x1, int y1, Color top, Color bottom);
    void horizontalGradient(int x0, int y0, int x1, int y1, Color left, Color right);
    // A smooth random colour field with fine grain, like a photo.
    void photo(int x0, int y0, int x1, int y1, std::uint32_t seed);

    // One glyph with its top-left at (x, y): each grid cell is `cellWidth`
    // wide and `cellHeight` tall. Bold widens every stroke by half a cell.
    // Fractional cells give the soft stroke edges of smoothed screen text.
    void glyph(const GlyphFont& font, int index, double x, double y, double cellWidth, double cellHeight, Color color,
               bool bold);

    void blend(int x, int y, Color color, double alpha);

private:
    MutableImage& image_;
    PixelRect clip_ = {0, 0, image_.width(), image_.height()};
};

} // namespace tosvar::ScrollCorpus
