#pragma once

#include "TextBlock.h"

namespace tosvar {

// Neighbouring blocks of one column, taken together as one layout unit.
namespace TextBlockRuns {

struct Tolerances {
    double verticalGapRatio = 0.9;
    double columnOverlapRatio = 0.6;
    double lineHeightRatio = 1.35;
    double leftEdgeRatio = 0.75;
    friend bool operator==(const Tolerances&, const Tolerances&) = default;
};

// Runs of block indices, ascending; every block in exactly one run.
std::vector<std::vector<std::size_t>> group(const std::vector<TextBlock>& blocks, const Tolerances& tolerances = {});
// The union of the blocks' boxes; the null rectangle for none.
Rect box(const std::vector<std::size_t>& indices, const std::vector<TextBlock>& blocks);

} // namespace TextBlockRuns

// Blocks back to plain text, keeping paragraphs, indents and list markers.
namespace TextBlockLayoutText {

inline constexpr double paragraphGapRatio = 1.35;
inline constexpr const char* indentUnit = "  ";

std::string render(const std::vector<TextBlock>& blocks);
// With `translations[i]` as the body of block i where there is one.
std::string render(const std::vector<TextBlock>& blocks, const std::vector<std::string>& translations);

} // namespace TextBlockLayoutText

} // namespace tosvar
