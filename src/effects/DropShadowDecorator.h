#pragma once

#include "ImageBuffer.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// The soft window-style shadow around a finished screenshot, and the test
// whether an image already has one (so a sticker is not shadowed twice).
namespace DropShadowDecorator {

struct Layer {
    double blurRadius = 0;
    double offsetY = 0; // points downwards
    double opacity = 0;
};

struct Insets {
    double top = 0, left = 0, bottom = 0, right = 0;
    friend bool operator==(const Insets&, const Insets&) = default;
};

struct Style {
    std::vector<Layer> layers;
    // The room the shadow needs around the image, in points.
    Insets insets() const;
    // A wide soft layer and a tight one under it.
    static Style screenshot() { return {{{16, 6, 0.22}, {2, 1, 0.18}}}; }
};

// The image on a transparent canvas grown by the insets (times the scale,
// at least 1, rounded up), with each layer's shadow under a copy of the image
// painted exactly. None for an empty image. RGBA, premultiplied.
std::optional<ImageBuffer> decorate(const ImageBuffer& image, double scale, const Style& style);
// Decode, decorate, encode; none when any step fails.
std::optional<std::vector<std::uint8_t>> decoratePNG(const std::vector<std::uint8_t>& png, double scale, const Style& style);

// Whether the image has transparent corners and a soft alpha ramp on at
// least two of three sides. An image without alpha, or under 24 pixels a
// side, has none.
bool looksDecorated(const ImageBuffer& image, bool hasAlphaChannel = true);

} // namespace DropShadowDecorator

} // namespace tosvar
