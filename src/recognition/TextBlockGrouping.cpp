#include "TextBlockGrouping.h"

#include "ListMarker.h"
#include "UnicodeText.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

std::string TextBlock::translatableText() const {
    if (marker) {
        if (const auto parts = ListMarker::split(text); parts && parts->first == *marker) return parts->second;
    }
    return text;
}

namespace TextBlockGrouping {

namespace {

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double horizontalOverlap(const Rect& a, const Rect& b) { return std::min(a.maxX(), b.maxX()) - std::max(a.minX(), b.minX()); }

// Reading order is no strict weak order (its "same row" test does not
// chain), so it sorts by stable insertion, which needs none.
template <typename T, typename Less>
void insertionSort(std::vector<T>& items, Less less) {
    for (std::size_t i = 1; i < items.size(); ++i) {
        T item = std::move(items[i]);
        std::size_t j = i;
        for (; j > 0 && less(item, items[j - 1]); --j) items[j] = std::move(items[j - 1]);
        items[j] = std::move(item);
    }
}

// Reading order: a clearly higher box first, else the one further left.
bool readsBefore(const Rect& a, const Rect& b, double heightA, double heightB) {
    if (std::abs(a.minY() - b.minY()) > std::min(heightA, heightB) / 2) return a.minY() < b.minY();
    return a.minX() < b.minX();
}

struct PlacedLine {
    RecognizedLine line;
    Rect box;
};

struct Group {
    std::vector<PlacedLine> members;
    Rect box;
    double medianHeight() const {
        std::vector<double> heights;
        for (const PlacedLine& member : members) heights.push_back(member.box.height());
        return median(heights);
    }
};

// Whether `line` may join `group`, and at which gap.
std::optional<double> fit(const Group& group, const Rect& line, const Tolerances& t) {
    const double m = group.medianHeight();
    const double gap = line.minY() - group.box.maxY();
    if (!(gap < m * t.verticalGapRatio && gap > -m * t.verticalOverlapRatio)) return std::nullopt;
    const double r = line.height() / (m <= 0.001 ? 0.001 : m);
    if (r < t.lineHeightRatioRange.first || r > t.lineHeightRatioRange.second) return std::nullopt;
    const double charWidth = 0.7 * m;
    if (std::abs(line.minX() - group.box.minX()) <= charWidth * t.leftEdgeCharWidths) return gap;
    const double narrower = std::min(line.width(), group.box.width());
    if (narrower > 0 && horizontalOverlap(line, group.box) / narrower >= t.horizontalOverlapRatio) return gap;
    return std::nullopt;
}

TextBlock makeBlock(const std::vector<PlacedLine>& members, const Tolerances& t) {
    TextBlock block;
    block.pixelBox = Rect::null();
    std::vector<std::string> texts;
    std::vector<double> heights;
    block.confidence = members.empty() ? 0 : 1;
    for (const PlacedLine& member : members) {
        block.lines.push_back(member.line);
        block.pixelBox = block.pixelBox.unionWith(member.box);
        texts.push_back(member.line.text);
        heights.push_back(member.box.height());
        block.confidence = std::min(block.confidence, member.line.confidence);
    }
    block.text = join(texts);
    block.lineHeight = median(heights);
    if (t.listMarkersStartBlocks)
        if (const auto parts = ListMarker::split(block.text)) block.marker = parts->first;
    return block;
}

void sortInReadingOrder(std::vector<TextBlock>& blocks) {
    insertionSort(blocks, [](const TextBlock& a, const TextBlock& b) {
        const double h = std::min(a.lineHeight, b.lineHeight);
        return readsBefore(a.pixelBox, b.pixelBox, h, h);
    });
}

} // namespace

Rect pixelBox(const Rect& box, const Size& size) {
    return Rect(size.width * box.minX(), size.height * (1 - box.maxY()), size.width * box.width(), size.height * box.height())
        .standardized();
}

bool isCJK(char32_t c) {
    return (c >= 0x3040 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x4E00 && c <= 0x9FFF) ||
           (c >= 0xAC00 && c <= 0xD7AF) || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFF00 && c <= 0xFFEF) ||
           (c >= 0x3000 && c <= 0x303F) || (c >= 0x20000 && c <= 0x2FA1F);
}

bool isPredominantlyCJK(std::string_view text) {
    std::size_t letters = 0, cjk = 0;
    for (char32_t c : UnicodeText::decode(text)) {
        const bool isCjk = isCJK(c);
        if (isCjk || UnicodeText::isLetter(c)) ++letters;
        if (isCjk) ++cjk;
    }
    return letters >= 1 && letters <= 2 * cjk;
}

std::string join(const std::vector<std::string>& lines) {
    std::u32string result;
    for (const std::string& raw : lines) {
        const std::u32string line = UnicodeText::trimmed(UnicodeText::decode(raw));
        if (line.empty()) continue;
        if (result.empty()) {
            result = line;
            continue;
        }
        const char32_t last = result.back();
        const char32_t first = line.front();
        if (last == U'-' && UnicodeText::isLowercaseLetter(first) && !isCJK(first)) {
            result.pop_back();
            result += line;
        } else if (isCJK(last) || isCJK(first)) {
            result += line;
        } else {
            result += U' ';
            result += line;
        }
    }
    return UnicodeText::encode(result);
}

std::vector<std::vector<std::size_t>> hardBreakRuns(const std::vector<Rect>& boxes, const std::vector<std::string>& texts,
                                                    const Tolerances& t) {
    std::vector<std::vector<std::size_t>> runs;
    const std::size_t count = boxes.size();
    if (count == 0) return runs;
    double left = boxes[0].minX(), right = boxes[0].maxX();
    for (const Rect& box : boxes) {
        left = std::min(left, box.minX());
        right = std::max(right, box.maxX());
    }
    const double blockWidth = right - left;
    if (!(blockWidth > 0) || count == 1) {
        std::vector<std::size_t> all(count);
        for (std::size_t i = 0; i < count; ++i) all[i] = i;
        runs.push_back(all);
        return runs;
    }
    const double span = std::max(blockWidth, 1.0);
    auto fullness = [&](std::size_t i) { return (boxes[i].maxX() - left) / span; };
    std::size_t shortInterior = 0;
    for (std::size_t i = 0; i + 1 < count; ++i) shortInterior += fullness(i) < t.lineFullRatio;
    const bool shortLinesBreak = static_cast<double>(shortInterior) / static_cast<double>(count - 1) >= t.raggedRightRatio;
    auto hasMarker = [&](std::size_t i) { return t.listMarkersStartBlocks && ListMarker::startsListItem(texts[i]); };

    std::vector<std::size_t> run;
    for (std::size_t i = 0; i < count; ++i) {
        if (!run.empty() && hasMarker(i)) runs.push_back(std::exchange(run, {}));
        run.push_back(i);
        if (i + 1 < count && shortLinesBreak && fullness(i) < t.lineFullRatio && !hasMarker(i + 1))
            runs.push_back(std::exchange(run, {}));
    }
    if (!run.empty()) runs.push_back(run);
    return runs;
}

std::vector<TextBlock> group(const std::vector<RecognizedLine>& lines, const Size& imageSize, const Tolerances& t) {
    if (!(imageSize.width > 0) || !(imageSize.height > 0)) return {};
    std::vector<PlacedLine> placed;
    for (const RecognizedLine& line : lines) {
        if (line.confidence < t.minConfidence || UnicodeText::trimmed(line.text).empty()) continue;
        const Rect box = pixelBox(line.normalizedBox, imageSize);
        if (box.width() <= 0 || box.height() <= 0) continue;
        placed.push_back({line, box});
    }
    insertionSort(placed, [](const PlacedLine& a, const PlacedLine& b) {
        return readsBefore(a.box, b.box, a.box.height(), b.box.height());
    });

    std::vector<Group> groups;
    for (const PlacedLine& line : placed) {
        Group* best = nullptr;
        double bestGap = 0;
        for (Group& candidate : groups) {
            const std::optional<double> gap = fit(candidate, line.box, t);
            if (gap && (!best || *gap < bestGap)) {
                best = &candidate;
                bestGap = *gap;
            }
        }
        if (best) {
            best->members.push_back(line);
            best->box = best->box.unionWith(line.box);
        } else {
            groups.push_back({{line}, line.box});
        }
    }

    std::vector<TextBlock> blocks;
    for (const Group& g : groups) {
        std::vector<Rect> boxes;
        std::vector<std::string> texts;
        for (const PlacedLine& member : g.members) {
            boxes.push_back(member.box);
            texts.push_back(member.line.text);
        }
        for (const auto& run : hardBreakRuns(boxes, texts, t)) {
            std::vector<PlacedLine> members;
            for (std::size_t index : run) members.push_back(g.members[index]);
            blocks.push_back(makeBlock(members, t));
        }
    }
    sortInReadingOrder(blocks);
    if (blocks.size() > t.maxBlocks) {
        std::stable_sort(blocks.begin(), blocks.end(), [](const TextBlock& a, const TextBlock& b) {
            return a.pixelBox.width() * a.pixelBox.height() > b.pixelBox.width() * b.pixelBox.height();
        });
        blocks.resize(t.maxBlocks);
        sortInReadingOrder(blocks);
    }
    if (!blocks.empty()) {
        double leftmost = blocks.front().pixelBox.minX();
        for (const TextBlock& block : blocks) leftmost = std::min(leftmost, block.pixelBox.minX());
        for (TextBlock& block : blocks)
            block.indentLevel = std::clamp(
                static_cast<int>(std::lround((block.pixelBox.minX() - leftmost) / std::max(0.6 * block.lineHeight, 1.0))), 0, 6);
    }
    return blocks;
}

} // namespace TextBlockGrouping

} // namespace tosvar
