#include "TextBlockRuns.h"

#include "ListMarker.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace TextBlockRuns {

std::vector<std::vector<std::size_t>> group(const std::vector<TextBlock>& blocks, const Tolerances& t) {
    std::vector<std::vector<std::size_t>> runs;
    if (blocks.empty()) return runs;
    runs.push_back({0});
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        const Rect a = blocks[i - 1].pixelBox.standardized();
        const Rect b = blocks[i].pixelBox.standardized();
        const double h = std::min(blocks[i - 1].lineHeight, blocks[i].lineHeight);
        const double larger = std::max(blocks[i - 1].lineHeight, blocks[i].lineHeight);
        const double overlap = std::min(a.maxX(), b.maxX()) - std::max(a.minX(), b.minX());
        const double gap = b.minY() - a.maxY();
        const bool joins = h > 0 && overlap >= t.columnOverlapRatio * std::min(a.width(), b.width()) && gap >= -0.5 * h &&
                           gap <= t.verticalGapRatio * h && larger / h <= t.lineHeightRatio &&
                           std::abs(b.minX() - a.minX()) <= t.leftEdgeRatio * h;
        if (joins) {
            runs.back().push_back(i);
        } else {
            runs.push_back({i});
        }
    }
    return runs;
}

Rect box(const std::vector<std::size_t>& indices, const std::vector<TextBlock>& blocks) {
    Rect result = Rect::null();
    for (std::size_t index : indices) result = result.unionWith(blocks[index].pixelBox.standardized());
    return result;
}

} // namespace TextBlockRuns

namespace TextBlockLayoutText {

std::string render(const std::vector<TextBlock>& blocks) { return render(blocks, {}); }

std::string render(const std::vector<TextBlock>& blocks, const std::vector<std::string>& translations) {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const TextBlock& block = blocks[i];
        if (i > 0) {
            const TextBlock& previous = blocks[i - 1];
            const double gap = block.pixelBox.minY() - previous.pixelBox.maxY();
            if (gap > paragraphGapRatio * std::max(std::min(block.lineHeight, previous.lineHeight), 1.0)) lines.emplace_back();
        }
        const std::string body = i < translations.size() ? translations[i] : block.translatableText();
        std::string line;
        for (int level = 0; level < block.indentLevel; ++level) line += indentUnit;
        line += block.marker ? ListMarker::prefix(*block.marker, body) : body;
        lines.push_back(line);
    }
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) text += (i ? "\n" : "") + lines[i];
    return text;
}

} // namespace TextBlockLayoutText

} // namespace tosvar
