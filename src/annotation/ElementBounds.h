#pragma once

#include "AnnotationElement.h"
#include "Rect.h"
#include "Size.h"
#include "TextMeasuring.h"

#include <string_view>

// How much room an element takes, in image pixels (y down).
namespace tosvar::ElementBounds {

// The box of `text` set in the annotation face at `fontSize`: the widest line
// (at least 0.6 * fontSize wide) by n lines with a gap of
// `ElementDrawing::textLineGapRatio` line heights between them. Blank lines
// measure as a single space; empty text is one blank line.
Size textSize(const TextMeasuring& measure, std::string_view text, double fontSize);

// The box for selection chrome and marquee tests, before rotation: a text's
// body with a 6 pixel margin, a badge's disc, either with its leader's tip
// (and control point when bent), a segment with its mid points or control
// point; the geometry's bounding box for everything else.
Rect visualBox(const TextMeasuring& measure, const AnnotationElement& element);

} // namespace tosvar::ElementBounds
