#pragma once

#include "Rect.h"
#include "TextMeasuring.h"

#include <string>
#include <string_view>
#include <vector>

// How a translation is set into the box of the text it replaces: the font
// size and box that hold it, and its wrapped lines. Lines wrap at spaces, and
// anywhere around CJK characters; a word wider than the line is broken
// between characters. Lines are spaced by 0.18 of the font size plus any
// extra spacing. Measured in the annotation face, so the answers are the same
// on every machine. Lengths are image pixels, y down.
namespace tosvar::TranslatedTextLayout {

inline constexpr double paddingRatio = 0.25;
inline constexpr double verticalPaddingRatio = 0.08;
inline constexpr double lineGapRatio = 0.18;
inline constexpr double maxExtraLineSpacingRatio = 0.8;
inline constexpr double minimumShrink = 0.55;
inline constexpr double minimumFontSize = 8;

struct Fit {
    double fontSize = 0;
    Rect box;
    bool overflows = false;
    friend bool operator==(const Fit&, const Fit&) = default;
};

// How far a box may extend.
struct Space {
    double minTop = 0;
    double maxBottom = 0;
    double minLeft = 0;
    double maxRight = 0;

    // The rectangle's own edges: the box cannot grow.
    static Space none(const Rect& rect);
    // The same, with the bottom allowed down to `maxBottom`.
    static Space below(const Rect& rect, double maxBottom);
};

struct Line {
    std::string text;
    double baseline = 0; // from the top of the text
    double width = 0;
};

struct Lines {
    std::vector<Line> lines;
    double height = 0;
};

// The size to start from for text whose lines were `lineHeight` tall: 0.82 of
// it for CJK text, 0.78 otherwise, at least 8.
double startingFontSize(double lineHeight, bool isCJK);

// Shrinks the text in half steps, trying each width of `widthOptions` at each
// size, then moves the box up at the floor (0.55 of the start, at least 8),
// and only then reports an overflow with the box holding all the free space.
Fit fit(const TextMeasuring& measure, std::string_view text, const Rect& rect, double startingFontSize, const Space& space);

// The height the text needs in a box `width` wide (less the side padding),
// rounded up, plus the vertical padding.
double requiredHeight(const TextMeasuring& measure, std::string_view text, double width, double fontSize);
int lineCount(const TextMeasuring& measure, std::string_view text, double width, double fontSize);
// The spacing that spreads a short text's lines over a box `height` tall, at
// most 0.8 of the font size; 0 for one line or text that fills the box.
double extraLineSpacing(const TextMeasuring& measure, std::string_view text, double width, double fontSize, double height);
// The box's width, then the widths reaching `maxRight` and spanning from
// `minLeft` to `maxRight`, each kept only when wider by more than 0.5.
std::vector<double> widthOptions(const Rect& box, const Space& space);

// The text wrapped to lines of at most `wrapWidth`, with their baselines.
Lines layOut(const TextMeasuring& measure, std::string_view text, double fontSize, double wrapWidth, double extraLineSpacing);

} // namespace tosvar::TranslatedTextLayout
