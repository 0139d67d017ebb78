#pragma once

#include "ImageBuffer.h"
#include "Rect.h"

#include <optional>
#include <vector>

namespace tosvar {

// Several window images made into one, for a selection of more than one
// window. Pixels are never resampled: every layer stays pixel-exact.
namespace WindowComposite {

struct Layer {
    ImageBuffer image;
    Rect frame; // points, y up, in the coordinates of `rect` below
};

// The union of the rectangles; the null rectangle for none.
Rect unionOf(const std::vector<Rect>& rectangles);

// The layers drawn in order (later ones over earlier ones) onto a transparent
// image of `rect` at `scale` pixels per point (below 1 counts as 1), each at
// its rounded offset in its own pixel size. None without layers or when the
// image would be empty. Safe off the main thread.
std::optional<ImageBuffer> render(const std::vector<Layer>& layers, const Rect& rect, double scale);

} // namespace WindowComposite

} // namespace tosvar
