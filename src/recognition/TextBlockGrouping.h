#pragma once

#include "Size.h"
#include "TextBlock.h"

#include <utility>

namespace tosvar {

// Recognised lines grouped into paragraph-sized blocks in reading order, with
// list markers and indent levels. Pure functions of lines, size and tolerances.
namespace TextBlockGrouping {

struct Tolerances {
    double verticalGapRatio = 0.6;
    double verticalOverlapRatio = 0.35;
    std::pair<double, double> lineHeightRatioRange{0.7, 1.4};
    double leftEdgeCharWidths = 1.5;
    double horizontalOverlapRatio = 0.5;
    float minConfidence = 0.3f;
    std::size_t maxBlocks = 64;
    double lineFullRatio = 0.9;
    double raggedRightRatio = 0.5;
    bool listMarkersStartBlocks = true;
    friend bool operator==(const Tolerances&, const Tolerances&) = default;
};

std::vector<TextBlock> group(const std::vector<RecognizedLine>& lines, const Size& imageSize,
                             const Tolerances& tolerances = {});

// A unit box (origin bottom left) in pixels (origin top left).
Rect pixelBox(const Rect& normalizedBox, const Size& imageSize);

// Lines joined into one text: a blank between words, none around CJK, and a
// line-end hyphen before a lowercase letter taken out.
std::string join(const std::vector<std::string>& lines);

bool isCJK(char32_t c);
// At least half of the letters are CJK.
bool isPredominantlyCJK(std::string_view text);

// A contiguous group split at paragraph ends; each run is a list of indices
// into `lineTexts`/`boxes`.
std::vector<std::vector<std::size_t>> hardBreakRuns(const std::vector<Rect>& boxes, const std::vector<std::string>& lineTexts,
                                                    const Tolerances& tolerances);

} // namespace TextBlockGrouping

} // namespace tosvar
