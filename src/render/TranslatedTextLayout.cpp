#include "TranslatedTextLayout.h"

#include "TextBlockGrouping.h"
#include "UnicodeText.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace tosvar::TranslatedTextLayout {

namespace {

// A piece a line may end after: a word, or one CJK character, with the blanks
// that follow it.
struct Piece {
    std::u32string word;
    std::u32string blanks;
};

std::vector<Piece> pieces(std::u32string_view paragraph) {
    std::vector<Piece> out;
    std::size_t i = 0;
    while (i < paragraph.size()) {
        Piece piece;
        if (TextBlockGrouping::isCJK(paragraph[i])) {
            piece.word = paragraph[i++];
        } else {
            while (i < paragraph.size() && paragraph[i] != U' ' && paragraph[i] != U'\t' && !TextBlockGrouping::isCJK(paragraph[i])) piece.word += paragraph[i++];
        }
        while (i < paragraph.size() && (paragraph[i] == U' ' || paragraph[i] == U'\t')) piece.blanks += paragraph[i++];
        out.push_back(std::move(piece));
    }
    return out;
}

// Widths of pieces of text at one size, each measured once.
class Widths {
public:
    Widths(const TextMeasuring& measure, double fontSize) : measure_(measure), fontSize_(fontSize) {}
    double operator()(const std::u32string& text) {
        auto [entry, inserted] = cache_.try_emplace(text, 0.0);
        if (inserted) entry->second = measure_.lineWidth(UnicodeText::encode(text), fontSize_);
        return entry->second;
    }

private:
    const TextMeasuring& measure_;
    double fontSize_;
    std::unordered_map<std::u32string, double> cache_;
};

struct WrappedLine {
    std::u32string text;
    double width = 0;
};

// Greedy wrapping: as many pieces as fit, their trailing blanks not counted.
std::vector<WrappedLine> wrap(const TextMeasuring& measure, std::string_view text, double fontSize, double width) {
    Widths widthOf(measure, fontSize);
    std::vector<WrappedLine> lines;
    const std::u32string all = UnicodeText::decode(text);
    std::size_t start = 0;
    while (true) {
        const std::size_t end = all.find(U'\n', start);
        const std::u32string_view paragraph = std::u32string_view(all).substr(start, end == std::u32string::npos ? std::u32string::npos : end - start);
        WrappedLine line;
        std::u32string pendingBlanks;
        auto startWith = [&](const std::u32string& word) {
            if (widthOf(word) <= width) {
                line = {word, widthOf(word)};
                return;
            }
            // A word wider than a whole line is broken between characters.
            for (char32_t c : word) {
                const std::u32string next = line.text + c;
                if (!line.text.empty() && widthOf(next) > width) {
                    lines.push_back(std::move(line));
                    line = {std::u32string(1, c), widthOf(std::u32string(1, c))};
                } else {
                    line = {next, widthOf(next)};
                }
            }
        };
        for (const Piece& piece : pieces(paragraph)) {
            if (line.text.empty()) {
                startWith(piece.word);
            } else if (const std::u32string candidate = line.text + pendingBlanks + piece.word; widthOf(candidate) <= width) {
                line = {candidate, widthOf(candidate)};
            } else {
                lines.push_back(std::move(line));
                line = {};
                startWith(piece.word);
            }
            pendingBlanks = piece.blanks;
        }
        lines.push_back(std::move(line));
        if (end == std::u32string::npos) break;
        start = end + 1;
        if (start == all.size()) break; // a final line feed opens no line
    }
    return lines;
}

double wrapWidth(double width, double fontSize) { return std::max(width - 2 * paddingRatio * fontSize, 1.0); }

double textHeight(const TextMeasuring& measure, std::size_t lineCount, double fontSize, double spacing) {
    if (lineCount == 0) return 0;
    const double n = static_cast<double>(lineCount);
    return n * measure.metrics(fontSize).lineHeight() + (n - 1) * spacing;
}

} // namespace

Space Space::none(const Rect& rect) {
    const Rect r = rect.standardized();
    return {r.minY(), r.maxY(), r.minX(), r.maxX()};
}

Space Space::below(const Rect& rect, double maxBottom) {
    Space space = none(rect);
    space.maxBottom = std::max(space.maxBottom, maxBottom);
    return space;
}

double startingFontSize(double lineHeight, bool cjk) { return std::max(lineHeight * (cjk ? 0.82 : 0.78), 8.0); }

double requiredHeight(const TextMeasuring& measure, std::string_view text, double width, double fontSize) {
    const std::size_t lines = text.empty() ? 0 : wrap(measure, text, fontSize, wrapWidth(width, fontSize)).size();
    return std::ceil(textHeight(measure, lines, fontSize, lineGapRatio * fontSize) - 1e-9) + 2 * verticalPaddingRatio * fontSize;
}

int lineCount(const TextMeasuring& measure, std::string_view text, double width, double fontSize) {
    if (text.empty()) return 0;
    return static_cast<int>(wrap(measure, text, fontSize, wrapWidth(width, fontSize)).size());
}

double extraLineSpacing(const TextMeasuring& measure, std::string_view text, double width, double fontSize, double height) {
    const double required = requiredHeight(measure, text, width, fontSize);
    if (required + 1 >= height) return 0;
    const int lines = lineCount(measure, text, width, fontSize);
    if (lines <= 1) return 0;
    return std::min((height - required) / (lines - 1), maxExtraLineSpacingRatio * fontSize);
}

std::vector<double> widthOptions(const Rect& box, const Space& space) {
    const Rect r = box.standardized();
    std::vector<double> widths{r.width()};
    if (space.maxRight - r.minX() > widths.back() + 0.5) widths.push_back(space.maxRight - r.minX());
    if (space.maxRight - space.minLeft > widths.back() + 0.5) widths.push_back(space.maxRight - space.minLeft);
    return widths;
}

Fit fit(const TextMeasuring& measure, std::string_view text, const Rect& rect, double start, const Space& space) {
    const Rect r = rect.standardized();
    if (text.empty() || r.width() <= 0) return {start, r, false};
    const double top = std::min(r.minY(), space.minTop);
    const double bottom = std::max(r.maxY(), space.maxBottom);
    const double left = std::min(r.minX(), space.minLeft);
    const double right = std::max(r.maxX(), space.maxRight);
    const double floor = std::max(minimumShrink * start, minimumFontSize);
    const std::vector<double> widths = widthOptions(r, {top, bottom, left, right});
    auto xFor = [&](double width) { return width + r.minX() <= right + 0.5 ? r.minX() : std::max(left, right - width); };

    for (int step = 0; start - 0.5 * step >= floor; ++step) {
        const double f = start - 0.5 * step;
        for (double width : widths) {
            const double height = std::max(r.height(), requiredHeight(measure, text, width, f));
            if (r.minY() + height <= bottom + 0.5) return {f, {xFor(width), r.minY(), width, height}, false};
        }
    }
    for (double width : widths) {
        const double height = std::max(r.height(), requiredHeight(measure, text, width, floor));
        if (bottom - height >= top - 0.5) return {floor, {xFor(width), std::min(r.minY(), bottom - height), width, height}, false};
    }
    const double width = widths.back();
    return {floor, {xFor(width), r.minY(), width, std::max(r.height(), bottom - r.minY())}, true};
}

Lines layOut(const TextMeasuring& measure, std::string_view text, double fontSize, double width, double extra) {
    Lines out;
    if (text.empty()) return out;
    const FontLineMetrics metrics = measure.metrics(fontSize);
    const double spacing = lineGapRatio * fontSize + std::max(extra, 0.0);
    std::vector<WrappedLine> lines = wrap(measure, text, fontSize, std::max(width, 1.0));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        out.lines.push_back({UnicodeText::encode(lines[i].text),
                             metrics.ascent + static_cast<double>(i) * (metrics.lineHeight() + spacing), lines[i].width});
    }
    out.height = textHeight(measure, lines.size(), fontSize, spacing);
    return out;
}

} // namespace tosvar::TranslatedTextLayout
